#include "can-service-sim/panel/RequestGuard.h"

#include <strings.h>

#include "can-service-sim/panel/IpAddress.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

bool sameName(const std::string& a, const std::string& b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

/// The name or address of "NAME:PORT", "[ADDRESS]:PORT" or either without a port.
std::string hostName(const std::string& host) {
    if (!host.empty() && host[0] == '[') {
        return host.substr(1, host.find(']') - 1);
    }
    return host.substr(0, host.rfind(':'));
}

}  // namespace

std::string refusal(const RequestOrigin& request, const std::string& ownHostName) {
    const std::string name = hostName(request.host);
    const bool own = isAddress(name) || sameName(name, "localhost") || sameName(name, ownHostName);
    if (name.empty() || !own) {
        return "the host " + tools::quoted(name) + " is none of this machine's; use an IP address or localhost";
    }
    if (!request.origin.empty() && !sameName(request.origin, "http://" + request.host)) {
        return "a page of " + tools::quoted(request.origin) + " asks; only the panel's own page may";
    }
    const std::string& site = request.fetchSite;
    if (!site.empty() && site != "same-origin" && site != "none") {
        return "a page of another site asks; only the panel's own page may";
    }
    return "";
}

}  // namespace qvn::tools

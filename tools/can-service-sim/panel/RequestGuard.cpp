#include "can-service-sim/panel/RequestGuard.h"

#include <arpa/inet.h>
#include <strings.h>

#include <cstring>

#include "desk/Text.h"

namespace qvn::tools {
namespace {

bool parses(int family, const std::string& text) {
    unsigned char address[sizeof(in6_addr)];
    return inet_pton(family, text.c_str(), address) == 1;
}

bool sameName(const std::string& a, const std::string& b) {
    return strcasecmp(a.c_str(), b.c_str()) == 0;
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
        return "the host " + quoted(name) + " is none of this machine's; use an IP address or localhost";
    }
    if (!request.origin.empty() && !sameName(request.origin, "http://" + request.host)) {
        return "a page of " + quoted(request.origin) + " asks; only the panel's own page may";
    }
    const std::string& site = request.fetchSite;
    if (!site.empty() && site != "same-origin" && site != "none") {
        return "a page of another site asks; only the panel's own page may";
    }
    return "";
}

bool isAddress(const std::string& text) {
    return parses(AF_INET, text) || parses(AF_INET6, text);
}

bool isLoopback(const std::string& address) {
    return address == "::1" || (parses(AF_INET, address) && address.rfind("127.", 0) == 0);
}

std::string urlHost(const std::string& address) {
    return address.find(':') == std::string::npos ? address : "[" + address + "]";
}

}  // namespace qvn::tools

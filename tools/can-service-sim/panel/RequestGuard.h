#pragma once

#include <string>

namespace qvn::tools {

/// What a request says of where it comes from; empty where it does not.
struct RequestOrigin {
    std::string host;       ///< the header Host
    std::string origin;     ///< the header Origin
    std::string fetchSite;  ///< the header Sec-Fetch-Site; left empty where a person opens a page, by a link perhaps
};

/// Why a request is refused; empty when it is not. Pages of other sites must neither send anything here nor read
/// anything:
///  - the host must be an IP address, localhost or this machine's own name, since any other name may be one that was
///    made to point here (DNS rebinding);
///  - a browser that tells from which page a request comes must tell the panel's own.
/// The port does not count: the panel may be reached through a tunnel.
std::string refusal(const RequestOrigin& request, const std::string& ownHostName);

}  // namespace qvn::tools

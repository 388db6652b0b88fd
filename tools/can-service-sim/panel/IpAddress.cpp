#include "can-service-sim/panel/IpAddress.h"

#include <arpa/inet.h>

#include <cstring>

namespace qvn::tools {
namespace {

/// Characters behind a zero are no part of what inet_pton() sees.
bool parses(int family, const std::string& text, void* address) {
    return text.find('\0') == std::string::npos && inet_pton(family, text.c_str(), address) == 1;
}

}  // namespace

bool isAddress(const std::string& text) {
    in6_addr address{};
    return parses(AF_INET, text, &address) || parses(AF_INET6, text, &address);
}

bool isLoopback(const std::string& address) {
    in_addr four{};
    in6_addr six{};
    return (parses(AF_INET, address, &four) && ntohl(four.s_addr) >> 24U == 127U) ||
           (parses(AF_INET6, address, &six) && std::memcmp(&six, &in6addr_loopback, sizeof six) == 0);
}

std::string urlHost(const std::string& address) {
    return address.find(':') == std::string::npos ? address : "[" + address + "]";
}

}  // namespace qvn::tools

#include "can-service-sim/panel/PanelOptions.h"

#include <algorithm>
#include <cctype>

#include "can-service-sim/panel/IpAddress.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

constexpr int kPort = 8480;
constexpr int kLargestPort = 65535;

std::string checkPort(const std::string& text) {
    const bool digits =
        text.size() <= 5 && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
    if (text.empty() || (digits && std::stoi(text) <= kLargestPort)) {
        return "";
    }
    return tools::quoted(text) + " is not a port; expected a number from 0 to " + std::to_string(kLargestPort) +
           ", where 0 takes a free one" + (text == "-" ? ", or '-' before --panel" : "");
}

std::string checkAddress(const std::string& text) {
    return isAddress(text) ? "" : tools::quoted(text) + " is no IP address; expected one such as 127.0.0.1 or ::1";
}

}  // namespace

void PanelOptions::declare(CommandLine& line) {
    mOption =
        line.option("--panel [PORT]", mPort, "Show the vehicle in the browser; port 8480 by default").check(checkPort);
    line.option("--panel-address IP", mAddress,
                "Where the panel listens, if others are to reach it; it has no password")
        .check(checkAddress)
        .needs("--panel");
}

int PanelOptions::port() const {
    return mPort.empty() ? kPort : std::stoi(mPort);
}

}  // namespace qvn::tools

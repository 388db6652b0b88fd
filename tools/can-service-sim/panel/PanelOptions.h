#pragma once

#include <string>

#include "desk/CommandLine.h"

namespace qvn::tools {

/// What the command line says of the panel.
class PanelOptions {
public:
    void declare(CommandLine& line);

    bool given() const { return mOption.given(); }
    /// An IP address.
    const std::string& address() const { return mAddress; }
    int port() const;

private:
    std::string mAddress = "127.0.0.1";
    std::string mPort;
    CommandLine::Option mOption;
};

}  // namespace qvn::tools

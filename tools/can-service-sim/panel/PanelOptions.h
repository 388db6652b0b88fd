#pragma once

#include <string>

#include "desk/CommandLine.h"

namespace qvn::tools {

/// What the command line says of the panel.
class PanelOptions {
public:
    void declare(CommandLine& line);

    bool given() const { return option_.given(); }
    /// An IP address.
    const std::string& address() const { return address_; }
    int port() const;

private:
    std::string address_ = "127.0.0.1";
    std::string port_;
    CommandLine::Option option_;
};

}  // namespace qvn::tools

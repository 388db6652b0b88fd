#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace qvn::tools {

/// What the command line says of the panel.
class PanelOptions {
public:
    void declare(CLI::App& app);

    bool given() const { return given_->count() != 0; }
    /// An IP address.
    const std::string& address() const { return address_; }
    int port() const;

private:
    std::string address_ = "127.0.0.1";
    std::string port_;
    const CLI::Option* given_ = nullptr;
};

}  // namespace qvn::tools

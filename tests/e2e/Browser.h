#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "e2e/Desk.h"

namespace qvn::e2e {

/// A page in a headless Chromium, driven by the browser's own protocol over a pipe.
class Browser {
public:
    static bool isInstalled();

    explicit Browser(const Desk& desk);

    void open(const std::string& url);

    /// The value of a JavaScript expression in the page; a promise is waited for.
    /// @throws std::runtime_error with the text of an exception in the page
    nlohmann::json evaluate(const std::string& expression);
    /// Waits until the expression is true.
    bool waitFor(const std::string& expression);
    void click(const std::string& selector);

    void resize(int width, int height);
    void useDark(bool dark);
    /// Writes what the page looks like, as PNG.
    void screenshot(const std::string& file);

private:
    nlohmann::json call(const std::string& method, nlohmann::json parameters = nlohmann::json::object());

    std::unique_ptr<Process> process_;
    std::string session_;
    std::size_t taken_ = 0;  // bytes of the browser's output
    int calls_ = 0;
};

}  // namespace qvn::e2e

#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "e2e/Desk.h"

namespace qvn::e2e {

/// A headless Chromium with one page at a time, driven by the browser's own protocol over a pipe.
class Browser {
public:
    static bool isInstalled();

    explicit Browser(const Desk& desk);

    /// Opens a new page in place of the one before.
    void open(const std::string& url);

    /// The value of a JavaScript expression in the page; a promise is waited for.
    /// @throws std::runtime_error with the text of an exception in the page
    nlohmann::json evaluate(const std::string& expression);
    /// Waits until the expression is true.
    bool waitFor(const std::string& expression);
    /// Presses the left button in the middle of an element, wherever that is: what lies above it gets the click.
    void click(const std::string& selector);
    /// Presses a key where the focus is, by its name in JavaScript.
    void press(const std::string& key);
    /// Lets an input have a value, as one of many that a slider passes through, or as a text being typed.
    void enter(const std::string& selector, const std::string& value);

    /// What has gone wrong in pages since the last call, a line each: exceptions, errors on the console, requests that
    /// failed.
    std::string takeErrors();

    void resize(int width, int height);
    void useDark(bool dark);
    /// Writes what the page looks like, as PNG.
    void screenshot(const std::string& file);

private:
    nlohmann::json call(const std::string& method, nlohmann::json parameters = nlohmann::json::object());
    void note(const nlohmann::json& event);

    std::unique_ptr<Process> mProcess;
    std::string mTarget;
    std::string mSession;
    std::string mErrors;
    std::size_t mTaken = 0;  // bytes of the browser's output
    int mCalls = 0;
};

}  // namespace qvn::e2e

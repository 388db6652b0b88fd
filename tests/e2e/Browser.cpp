#include "e2e/Browser.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <utility>

namespace qvn::e2e {
namespace {

using nlohmann::json;

// The browser has its protocol on the descriptors 3 and 4; here they are what Process writes to and reads from.
constexpr char kCommand[] =
    "chromium --headless --remote-debugging-pipe --disable-gpu --no-first-run --disable-background-networking "
    "--disable-component-update --disable-sync --disable-quic --no-proxy-server --hide-scrollbars "
    "--force-prefers-reduced-motion --user-data-dir=";
constexpr char kStreams[] = " 3<&0 4>&1 </dev/null >&2";

std::string decodeBase64(const std::string& text) {
    static const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char c : text.substr(0, text.find('='))) {
        bits = (bits << 6U) | static_cast<unsigned>(digits.find(c));
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> static_cast<unsigned>(count)) & 0xFFU);
        }
    }
    return bytes;
}

}  // namespace

bool Browser::isInstalled() {
    return std::system("command -v chromium >/dev/null") == 0;
}

Browser::Browser(const Desk& desk) {
    const std::string sandbox = geteuid() == 0 ? " --no-sandbox" : "";
    mProcess = desk.start(kCommand + desk.directory() + "/browser" + sandbox + kStreams);
}

void Browser::open(const std::string& url) {
    const std::string before = std::exchange(mTarget, "");
    mSession.clear();
    mTarget = call("Target.createTarget", {{"url", "about:blank"}})["targetId"];
    if (!before.empty()) {
        call("Target.closeTarget", {{"targetId", before}});
    }
    mSession = call("Target.attachToTarget", {{"targetId", mTarget}, {"flatten", true}})["sessionId"];
    call("Runtime.enable");
    call("Log.enable");
    resize(1500, 1000);
    call("Page.navigate", {{"url", url}});
}

json Browser::evaluate(const std::string& expression) {
    const json result =
        call("Runtime.evaluate", {{"expression", expression}, {"awaitPromise", true}, {"returnByValue", true}});
    if (result.contains("exceptionDetails")) {
        throw std::runtime_error(expression + ": " + result["exceptionDetails"].dump());
    }
    return result["result"].value("value", json());
}

bool Browser::waitFor(const std::string& expression) {
    const std::string seconds = std::to_string(kDeadlineSeconds - 5);
    return evaluate("new Promise((done) => { const end = Date.now() + " + seconds +
                    " * 1000; const look = () => { let met = false; try { met = Boolean(" + expression +
                    "); } catch { } if (met || Date.now() > end) { done(met); } else { setTimeout(look, 20); } }; "
                    "look(); })") == true;
}

void Browser::click(const std::string& selector) {
    const json place = evaluate("{ const element = document.querySelector(" + json(selector).dump() +
                                "); element.scrollIntoView({block: 'center'}); const box = "
                                "element.getBoundingClientRect(); "
                                "({x: box.x + box.width / 2, y: box.y + box.height / 2}) }");
    for (const char* const type : {"mousePressed", "mouseReleased"}) {
        call("Input.dispatchMouseEvent",
             {{"type", type}, {"x", place["x"]}, {"y", place["y"]}, {"button", "left"}, {"clickCount", 1}});
    }
}

void Browser::press(const std::string& key) {
    json event = {{"type", "keyDown"}, {"key", key}};
    if (key.size() == 1) {
        event["text"] = key;
    }
    call("Input.dispatchKeyEvent", event);
    call("Input.dispatchKeyEvent", {{"type", "keyUp"}, {"key", key}});
}

void Browser::enter(const std::string& selector, const std::string& value) {
    evaluate("{ const input = document.querySelector(" + json(selector).dump() + "); input.value = " +
             json(value).dump() + "; input.dispatchEvent(new Event('input', {bubbles: true})); }");
}

std::string Browser::takeErrors() {
    evaluate("0");  // what it has told before is read with the answer
    return std::exchange(mErrors, "");
}

void Browser::resize(int width, int height) {
    call("Emulation.setDeviceMetricsOverride",
         {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", false}});
}

void Browser::useDark(bool dark) {
    call("Emulation.setEmulatedMedia",
         {{"features", {{{"name", "prefers-color-scheme"}, {"value", dark ? "dark" : "light"}}}}});
}

void Browser::screenshot(const std::string& file) {
    std::ofstream(file, std::ios::binary) << decodeBase64(call("Page.captureScreenshot")["data"]);
}

void Browser::note(const json& event) {
    const std::string method = event.value("method", "");
    const json parameters = event.value("params", json());
    if (method == "Runtime.exceptionThrown") {
        const json& details = parameters["exceptionDetails"];
        mErrors += details.value("exception", details).value("description", details.dump()) + "\n";
    } else if (method == "Log.entryAdded" && parameters["entry"]["level"] == "error") {
        mErrors += parameters["entry"].value("text", "") + " " + parameters["entry"].value("url", "") + "\n";
    } else if (method == "Runtime.consoleAPICalled" && parameters["type"] == "error") {
        mErrors += parameters["args"].dump() + "\n";
    }
}

/// Messages end with a zero.
json Browser::call(const std::string& method, json parameters) {
    json request = {{"id", ++mCalls}, {"method", method}, {"params", std::move(parameters)}};
    if (!mSession.empty()) {
        request["sessionId"] = mSession;
    }
    mProcess->write(request.dump() + '\0');
    std::optional<json> answer;
    mProcess->waitForOutput([&](const std::string& output) {
        for (std::size_t end = 0; !answer && (end = output.find('\0', mTaken)) != std::string::npos;) {
            json message = json::parse(output.begin() + static_cast<std::ptrdiff_t>(mTaken),
                                       output.begin() + static_cast<std::ptrdiff_t>(end));
            mTaken = end + 1;
            if (message.value("id", 0) == mCalls) {
                answer = std::move(message);
            } else if (message.value("sessionId", "") == mSession) {
                note(message);  // pages before are none of the present one's
            }
        }
        return answer.has_value();
    });
    if (!answer || !answer->contains("result")) {
        throw std::runtime_error(method + ": " + (answer ? answer->dump() : "no answer; " + mProcess->errors()));
    }
    return (*answer)["result"];
}

}  // namespace qvn::e2e

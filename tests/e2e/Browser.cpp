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
    process_ = desk.start(kCommand + desk.directory() + "/browser" + sandbox + kStreams);
    const std::string target = call("Target.createTarget", {{"url", "about:blank"}})["targetId"];
    session_ = call("Target.attachToTarget", {{"targetId", target}, {"flatten", true}})["sessionId"];
    resize(1500, 1000);
}

void Browser::open(const std::string& url) {
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
    evaluate("document.querySelector(" + json(selector).dump() +
             ").dispatchEvent(new MouseEvent('click', {bubbles: true}))");
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

/// Messages end with a zero; those of the browser's own accord are passed over.
json Browser::call(const std::string& method, json parameters) {
    json request = {{"id", ++calls_}, {"method", method}, {"params", std::move(parameters)}};
    if (!session_.empty()) {
        request["sessionId"] = session_;
    }
    process_->write(request.dump() + '\0');
    std::optional<json> answer;
    process_->waitForOutput([&](const std::string& output) {
        for (std::size_t end = 0; !answer && (end = output.find('\0', taken_)) != std::string::npos;) {
            json message = json::parse(output.begin() + static_cast<std::ptrdiff_t>(taken_),
                                       output.begin() + static_cast<std::ptrdiff_t>(end));
            taken_ = end + 1;
            if (message.value("id", 0) == calls_) {
                answer = std::move(message);
            }
        }
        return answer.has_value();
    });
    if (!answer || !answer->contains("result")) {
        throw std::runtime_error(method + ": " + (answer ? answer->dump() : "no answer; " + process_->errors()));
    }
    return (*answer)["result"];
}

}  // namespace qvn::e2e

#include "can-service-sim/panel/Panel.h"

#include <algorithm>
#include <future>
#include <utility>

#include "can-service-sim/PlayerLines.h"
#include "can-service-sim/panel/IpAddress.h"

namespace qvn::tools {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBetweenUpdates{100};
constexpr milliseconds kBetweenSamples{1000};
// A page learns from it that the simulator is there, and the server that the page is.
constexpr milliseconds kHeartbeat{1000};

PageStream::Text event(const char* name, const Json& data) {
    return std::make_shared<const std::string>("event: " + std::string(name) + "\ndata: " + jsonText(data) + "\n\n");
}

}  // namespace

Panel::Panel(EventLoop& loop, Player& player, Journal& journal, const std::string& serviceName)
    : loop_(loop),
      player_(player),
      journal_(journal),
      view_(player, serviceName),
      server_({[this](const std::string& line) { return onLine(line); },
               [this](std::shared_ptr<PageStream> page) { loop_.post([this, page = std::move(page)] { open(page); }); },
               [] { Journal::error("the panel can listen no more; the service goes on without it"); }}) {}

Panel::~Panel() {
    journal_.listen({});
}

bool Panel::start(const std::string& address, int port, std::string* error) {
    if (!server_.listen(address, port, error)) {
        return false;
    }
    journal_.listen([this](const auto& entry) { view_.note(entry); });
    const std::string place = urlHost(address) + ":" + std::to_string(server_.port());
    journal_.note("panel at http://" + place + "/");
    if (!isLoopback(address)) {
        Journal::error("the panel at " + place +
                       " has no password: whoever reaches it can turn this vehicle's signals");
    }
    sampleAt(Clock::now());
    return true;
}

/// On a thread of the server.
std::string Panel::onLine(const std::string& line) {
    // The task alone has the promise: a loop that has ended destroys it, and breaks the promise.
    auto told = std::make_shared<std::promise<std::string>>();
    std::future<std::string> answer = told->get_future();
    loop_.post([this, line, told = std::move(told)] {
        try {
            told->set_value(takeLine(player_, line));
        } catch (...) {
            told->set_exception(std::current_exception());
        }
    });
    return answer.get();
}

void Panel::open(const std::shared_ptr<PageStream>& page) {
    page->put(event("vehicle", view_.vehicle()));
    page->put(event("state", view_.everything()));
    pages_.push_back(page);
    if (!std::exchange(updates_, true)) {
        update();
    }
}

void Panel::sampleAt(Clock::time_point time) {
    view_.sample();
    // Seconds that were missed are no samples.
    const Clock::time_point next = std::max(time + kBetweenSamples, Clock::now());
    loop_.at(next, [this, next] { sampleAt(next); });
}

void Panel::update() {
    const auto hasEnded = [](const std::shared_ptr<PageStream>& page) { return page->ended(); };
    pages_.erase(std::remove_if(pages_.begin(), pages_.end(), hasEnded), pages_.end());
    updates_ = !pages_.empty();
    if (!updates_) {
        return;
    }
    const Clock::time_point now = Clock::now();
    const Json changes = view_.changes();
    const bool onlyTheTime = changes.size() == 1;
    if (!onlyTheTime || now - lastTold_ >= kHeartbeat) {
        lastTold_ = now;
        tell(event("state", changes));
    }
    loop_.at(now + kBetweenUpdates, [this] { update(); });
}

void Panel::tell(const PageStream::Text& text) {
    for (const std::shared_ptr<PageStream>& page : pages_) {
        page->put(text);
    }
}

}  // namespace qvn::tools

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
    : mLoop(loop),
      mPlayer(player),
      mJournal(journal),
      mView(player, serviceName),
      mServer({[this](const std::string& line) { return onLine(line); },
               [this](std::shared_ptr<PageStream> page) { mLoop.post([this, page = std::move(page)] { open(page); }); },
               [] { Journal::error("the panel can listen no more; the service goes on without it"); }}) {}

Panel::~Panel() {
    mJournal.listen({});
}

bool Panel::start(const std::string& address, int port, std::string* error) {
    if (!mServer.listen(address, port, error)) {
        return false;
    }
    mJournal.listen([this](const auto& entry) { mView.note(entry); });
    const std::string place = urlHost(address) + ":" + std::to_string(mServer.port());
    mJournal.note("panel at http://" + place + "/");
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
    mLoop.post([this, line, told = std::move(told)] {
        try {
            told->set_value(takeLine(mPlayer, line));
        } catch (...) {
            told->set_exception(std::current_exception());
        }
    });
    return answer.get();
}

void Panel::open(const std::shared_ptr<PageStream>& page) {
    page->put(event("vehicle", mView.vehicle()));
    page->put(event("state", mView.everything()));
    mPages.push_back(page);
    if (!std::exchange(mUpdates, true)) {
        update();
    }
}

void Panel::sampleAt(Clock::time_point time) {
    mView.sample();
    // Seconds that were missed are no samples.
    const Clock::time_point next = std::max(time + kBetweenSamples, Clock::now());
    mLoop.at(next, [this, next] { sampleAt(next); });
}

void Panel::update() {
    const auto hasEnded = [](const std::shared_ptr<PageStream>& page) { return page->ended(); };
    mPages.erase(std::remove_if(mPages.begin(), mPages.end(), hasEnded), mPages.end());
    mUpdates = !mPages.empty();
    if (!mUpdates) {
        return;
    }
    const Clock::time_point now = Clock::now();
    const Json changes = mView.changes();
    const bool onlyTheTime = changes.size() == 1;
    if (!onlyTheTime || now - mLastTold >= kHeartbeat) {
        mLastTold = now;
        tell(event("state", changes));
    }
    mLoop.at(now + kBetweenUpdates, [this] { update(); });
}

void Panel::tell(const PageStream::Text& text) {
    for (const std::shared_ptr<PageStream>& page : mPages) {
        page->put(text);
    }
}

}  // namespace qvn::tools

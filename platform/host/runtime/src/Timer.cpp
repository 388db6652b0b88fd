#include "host/Timer.h"

#include "host/Log.h"

namespace qvn::host {

void Timer::start(std::chrono::milliseconds delay, std::function<void()> action) {
    mTimer = std::make_shared<asio::steady_timer>(mLoop->context(), delay);
    mTimer->async_wait([waiting = std::weak_ptr<asio::steady_timer>(mTimer),
                        action = std::move(action)](const std::error_code& error) {
        if (!error && !waiting.expired()) {
            action();
        }
    });
}

void Retry::later(const std::string& problem, std::function<void()> action) {
    if (problem != mLogged) {
        lgklog_print(kLogError, "%s; trying again", problem.c_str());
        mLogged = problem;
    }
    mTimer.start(kPause, std::move(action));
}

}  // namespace qvn::host

#include "host/Timer.h"

#include <asio/steady_timer.hpp>

#include <utility>

#include "LoopContext.h"
#include "host/Log.h"

namespace qvn::host {

void Timer::start(std::chrono::milliseconds delay, std::function<void()> action) {
    const auto timer = std::make_shared<asio::steady_timer>(mLoop->context().io, delay);
    mTimer = timer;
    timer->async_wait(
        [waiting = std::weak_ptr<void>(mTimer), action = std::move(action)](const std::error_code& error) {
            if (!error && !waiting.expired()) {
                action();
            }
        });
}

void Retry::later(const std::string& problem, std::function<void()> action) {
    if (!problem.empty() && problem != mLogged) {
        lgklog_print(kLogError, "%s; trying again", problem.c_str());
        mLogged = problem;
    }
    mTimer.start(kPause, std::move(action));
}

}  // namespace qvn::host

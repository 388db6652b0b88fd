#include "can-service-sim/Player.h"

#include <algorithm>
#include <utility>

#include "desk/DeskPlatform.h"

namespace qvn::tools {

Player::Player(EventLoop& loop, const Journal& journal, Options options)
    : mLoop(loop),
      mJournal(journal),
      mOptions(std::move(options)),
      mService(mOptions.serviceName, {[this](std::uint32_t code, const std::string& raw) {
                                          mLoop.post([this, code, raw] {
                                              mAnswers.take(code, raw);
                                              runLater();
                                          });
                                      },
                                      [this](std::size_t codes, std::size_t known) {
                                          mLoop.post([this, codes, known] { mJournal.subscribed(codes, known); });
                                      }}),
      mSimulation(&Clock::now, mOptions.speed, *this, mOptions.initialValues, mOptions.decoder),
      mAnswers(mSimulation, mJournal, mOptions.rules) {
    for (const auto& [code, raw] : mSimulation.vehicle().values()) {
        mService.presetSignal(code, raw);
    }
}

bool Player::start(std::vector<TraceEvent> trace) {
    Playback::AtEnd atEnd;
    atEnd.loop = mOptions.loop;
    if (mOptions.exitAtEnd) {
        atEnd.ended = [this] { mLoop.end(); };
    }
    mSimulation.start(std::move(trace), std::move(atEnd), mOptions.startAt);
    mStart = mSimulation.time();
    if (!mFailed && !mService.isUp()) {
        mJournal.service(false);
    }
    runLater();
    return !mFailed;
}

void Player::run() {
    mSimulation.run();
    runLater();
}

void Player::runLater() {
    if (mTimer) {
        mLoop.cancel(*mTimer);
        mTimer.reset();
    }
    if (const std::optional<Clock::time_point> next = mSimulation.next()) {
        // What is due already waits for its turn in the loop.
        mTimer = mLoop.at(std::max(*next, Clock::now()), [this] {
            mTimer.reset();
            run();
        });
    }
}

void Player::schedule(const TraceEvent& event) {
    run();
    if (!event.time) {
        mSimulation.apply(event.action);  // what stands in the next line may ask for its effect
    } else {
        mSimulation.at(mStart + vehicleTime(*event.time),
                       [this, action = event.action] { mSimulation.happen(action); });
    }
    runLater();
}

void Player::endWhenDone() {
    mSimulation.whenDone([this] { mLoop.end(); });
    runLater();
}

void Player::receive(const CanFrame& frame) {
    mSimulation.apply(FrameEvent{frame});
    runLater();
}

void Player::pause() {
    mSimulation.pause();
    runLater();
}

void Player::resume() {
    mSimulation.resume();
    runLater();
}

void Player::setSpeed(double speed) {
    mSimulation.setSpeed(speed);
    runLater();
}

void Player::seek(double position) {
    mSimulation.seek(position);
    runLater();
}

Player::Progress Player::progress() const {
    const Playback& playback = mSimulation.playback();
    return {playback.length(), playback.position(mSimulation.timeNow()), mSimulation.speed(), playback.isPaused()};
}

void Player::onStatus(std::uint32_t message, bool timedOut) {
    mJournal.message(message, timedOut);
    mService.putMessageStatus(message, timedOut);
}

void Player::onReverse(bool engaged) {
    std::string error;
    switch (writeReverseLine(engaged, &error)) {
        case LineWrite::Done:
            if (std::exchange(mReverse, engaged) != engaged) {
                mJournal.reverse(engaged);
            }
            break;
        case LineWrite::RealHardware:
            if (!std::exchange(mToldOfHardware, true)) {
                mJournal.note(error);
            }
            break;
        case LineWrite::Failed:
            fail(error);
            break;
    }
}

void Player::onService(bool up) {
    std::string error;
    if (up && !mService.goUp(&error)) {
        fail(error);
        return;
    }
    if (!up) {
        mService.goDown();
    }
    mJournal.service(up);
}

void Player::fail(const std::string& text) {
    Journal::error(text);
    mFailed = true;
    mLoop.end();
}

}  // namespace qvn::tools

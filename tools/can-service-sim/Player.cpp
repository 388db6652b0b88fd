#include "can-service-sim/Player.h"

#include <algorithm>
#include <utility>

#include "desk/DeskPlatform.h"

namespace qvn::tools {

Player::Player(EventLoop& loop, const Journal& journal, Options options)
    : loop_(loop),
      journal_(journal),
      options_(std::move(options)),
      service_(options_.serviceName, {[this](std::uint32_t code, const std::string& raw) {
                                          loop_.post([this, code, raw] {
                                              answers_.take(code, raw);
                                              runLater();
                                          });
                                      },
                                      [this](std::size_t codes, std::size_t known) {
                                          loop_.post([this, codes, known] { journal_.subscribed(codes, known); });
                                      }}),
      simulation_(&Clock::now, options_.speed, *this, options_.initialValues, options_.decoder),
      answers_(simulation_, journal_, options_.rules) {
    for (const auto& [code, raw] : simulation_.vehicle().values()) {
        service_.presetSignal(code, raw);
    }
}

bool Player::start(std::vector<TraceEvent> trace) {
    Playback::AtEnd atEnd;
    atEnd.loop = options_.loop;
    if (options_.exitAtEnd) {
        atEnd.ended = [this] { loop_.end(); };
    }
    simulation_.start(std::move(trace), std::move(atEnd), options_.startAt);
    start_ = simulation_.time();
    if (!failed_ && !service_.isUp()) {
        journal_.service(false);
    }
    runLater();
    return !failed_;
}

void Player::run() {
    simulation_.run();
    runLater();
}

void Player::runLater() {
    if (timer_) {
        loop_.cancel(*timer_);
        timer_.reset();
    }
    if (const std::optional<Clock::time_point> next = simulation_.next()) {
        // What is due already waits for its turn in the loop.
        timer_ = loop_.at(std::max(*next, Clock::now()), [this] {
            timer_.reset();
            run();
        });
    }
}

void Player::schedule(const TraceEvent& event) {
    run();
    if (!event.time) {
        simulation_.apply(event.action);  // what stands in the next line may ask for its effect
    } else {
        simulation_.at(start_ + vehicleTime(*event.time),
                       [this, action = event.action] { simulation_.happen(action); });
    }
    runLater();
}

void Player::endWhenDone() {
    simulation_.whenDone([this] { loop_.end(); });
    runLater();
}

void Player::receive(const CanFrame& frame) {
    simulation_.apply(FrameEvent{frame});
    runLater();
}

void Player::pause() {
    simulation_.pause();
    runLater();
}

void Player::resume() {
    simulation_.resume();
    runLater();
}

void Player::setSpeed(double speed) {
    simulation_.setSpeed(speed);
    runLater();
}

void Player::seek(double position) {
    simulation_.seek(position);
    runLater();
}

Player::Progress Player::progress() const {
    const Playback& playback = simulation_.playback();
    return {playback.length(), playback.position(simulation_.timeNow()), simulation_.speed(), playback.isPaused()};
}

void Player::onStatus(std::uint32_t message, bool timedOut) {
    journal_.message(message, timedOut);
    service_.putMessageStatus(message, timedOut);
}

void Player::onReverse(bool engaged) {
    std::string error;
    switch (writeReverseLine(engaged, &error)) {
        case LineWrite::Done:
            if (std::exchange(reverse_, engaged) != engaged) {
                journal_.reverse(engaged);
            }
            break;
        case LineWrite::RealHardware:
            if (!std::exchange(toldOfHardware_, true)) {
                journal_.note(error);
            }
            break;
        case LineWrite::Failed:
            fail(error);
            break;
    }
}

void Player::onService(bool up) {
    std::string error;
    if (up && !service_.goUp(&error)) {
        fail(error);
        return;
    }
    if (!up) {
        service_.goDown();
    }
    journal_.service(up);
}

void Player::fail(const std::string& text) {
    Journal::error(text);
    failed_ = true;
    loop_.end();
}

}  // namespace qvn::tools

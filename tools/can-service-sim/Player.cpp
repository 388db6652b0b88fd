#include "can-service-sim/Player.h"

#include <algorithm>
#include <utility>

#include "can-service-sim/TraceCut.h"
#include "desk/BadInput.h"
#include "desk/DeskPlatform.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "tables/MessageCatalogue.h"

namespace qvn::tools {
namespace {

double secondsOf(Clock::time_point time) {
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

}  // namespace

Player::Player(EventLoop& loop, const Journal& journal, Options options)
    : loop_(loop),
      journal_(journal),
      options_(std::move(options)),
      service_(
          options_.serviceName,
          {[this](std::uint32_t code, const std::string& raw) { loop_.post([this, code, raw] { onSet(code, raw); }); },
           [this](std::size_t codes) { loop_.post([this, codes] { journal_.subscribed(codes); }); }}) {
    if (options_.initialValues) {
        for (const tables::DecodingRow& row : tables::kDecodingRules) {
            service_.presetSignal(row.code, zeroValue(row));
        }
    }
}

bool Player::start(std::vector<TraceEvent> trace) {
    trace_ = std::move(trace);
    lengthOfTrace_ = traceEnd(trace_);
    start_ = Clock::now();
    endOfScheduled_ = start_;
    const bool startsDown = std::any_of(trace_.begin(), trace_.end(), [](const TraceEvent& event) {
        const auto* const service = std::get_if<ServiceEvent>(&event.action);
        return service && !service->up && event.time == 0.0;
    });
    if (startsDown) {
        journal_.service(false);
    } else if (!moveService(true)) {
        return false;
    }
    playTrace(start_);
    return true;
}

void Player::playTrace(Clock::time_point start) {
    traceStart_ = start;
    nextOfTrace_ = 0;
    playNextOfTrace();
}

// One event of the trace waits in the loop at a time, by the trace's own clock: nothing adds up over hours.
void Player::playNextOfTrace() {
    endOfTrace_ = traceStart_ + scaled(lengthOfTrace_);
    endOfScheduled_ = std::max(endOfScheduled_, endOfTrace_);
    if (nextOfTrace_ < trace_.size()) {
        const TraceEvent& event = trace_[nextOfTrace_];
        waitInTrace(traceStart_ + scaled(event.time.value_or(0.0)), [this, &event] {
            ++nextOfTrace_;
            playNextOfTrace();
            apply(event.action);
        });
    } else if (options_.loop && !trace_.empty()) {
        waitInTrace(endOfTrace_, [this] { playTrace(endOfTrace_); });
    } else if (options_.exitAtEnd) {
        waitInTrace(endOfTrace_, [this] { loop_.end(); });
    }
}

void Player::waitInTrace(Clock::time_point time, EventLoop::Task task) {
    traceTimer_ = loop_.at(time, [this, task = std::move(task)] {
        traceTimer_.reset();
        task();
    });
}

double Player::positionInTrace() const {
    return pausedAt_.value_or(std::chrono::duration<double>(Clock::now() - traceStart_).count() * options_.speed);
}

void Player::pause() {
    pausedAt_ = positionInTrace();
    if (traceTimer_) {
        loop_.cancel(*traceTimer_);
        traceTimer_.reset();
    }
}

void Player::resume() {
    if (pausedAt_) {
        traceStart_ = Clock::now() - scaled(*std::exchange(pausedAt_, std::nullopt));
        playNextOfTrace();
    }
}

void Player::setSpeed(double speed) {
    const bool wasPaused = pausedAt_.has_value();
    pause();
    options_.speed = speed;
    if (!wasPaused) {
        resume();
    }
}

void Player::seek(double position) {
    const bool wasPaused = pausedAt_.has_value();
    pause();
    startAfresh();
    for (const TraceEvent& event : stateAt(trace_, position)) {
        apply(event.action);
    }
    nextOfTrace_ = nextAfter(trace_, position);
    pausedAt_ = position;
    if (!wasPaused) {
        resume();
    }
}

/// Ends what goes on, and what is wrong.
void Player::startAfresh() {
    while (!cycles_.empty()) {
        endCycle(cycles_.begin()->first);
    }
    for (const auto& [code, raw] : faults_.end()) {
        service_.putSignal(code, raw);
    }
    supervisor_ = {};
    lateUntil_.clear();
    ++delayed_;
    for (const tables::MessageRow& row : tables::kMessages) {
        if (service_.isTimedOut(row.code)) {
            report(row.code, false);
        }
    }
}

Player::Progress Player::progress() const {
    return {lengthOfTrace_, std::min(positionInTrace(), lengthOfTrace_), options_.speed, pausedAt_.has_value()};
}

void Player::schedule(const TraceEvent& event) {
    const Clock::time_point now = Clock::now();
    const Clock::time_point time = event.time ? std::max(now, start_ + scaled(*event.time)) : now;
    endOfScheduled_ = std::max(endOfScheduled_, time);
    if (!event.time) {
        apply(event.action);  // what stands in the next line may ask for its effect
        return;
    }
    loop_.at(time, [this, action = event.action] { apply(action); });
}

void Player::apply(const TraceAction& action) {
    if (const auto* const signal = std::get_if<SignalEvent>(&action)) {
        put(*signal);
    } else if (const auto* const generate = std::get_if<GenerateEvent>(&action)) {
        startGenerator(*generate);
    } else if (const auto* const fault = std::get_if<FaultEvent>(&action)) {
        applyFault(*fault);
    } else if (const auto* const stop = std::get_if<StopEvent>(&action)) {
        journal_.stops(stop->code);
        endCycle(stop->code);
    } else if (const auto* const message = std::get_if<MessageEvent>(&action)) {
        supervisor_.setByHand(message->code, message->timedOut);
        if (!message->timedOut) {
            faults_.endSilence(message->code);
        }
        report(message->code, message->timedOut);
    } else if (const auto* const reverse = std::get_if<ReverseEvent>(&action)) {
        moveReverseLine(reverse->engaged);
    } else if (const auto* const service = std::get_if<ServiceEvent>(&action)) {
        moveService(service->up);
    } else if (const auto* const received = std::get_if<FrameEvent>(&action)) {
        receive(received->frame);
    }
}

void Player::put(const SignalEvent& event) {
    journal_.signal(event.code, event.raw);
    if (event.cycle) {
        startCycle(event.code, event.raw, *event.cycle);
        return;
    }
    const auto running = cycles_.find(event.code);
    if (running != cycles_.end()) {
        running->second.raw = event.raw;
        running->second.generator.reset();
    }
    receive(event.code, event.raw, 0.0);
}

void Player::startCycle(std::uint32_t code, const std::string& raw, const Cycle& cycle) {
    const Clock::time_point now = Clock::now();
    const Clock::time_point end = cycle.duration ? now + scaled(*cycle.duration) : Clock::time_point::max();
    endCycle(code);
    cycles_[code] = {raw, cycle.period, end, {}, {}, 0.0};
    tick(code, now);
}

void Player::startGenerator(const GenerateEvent& event) {
    endCycle(event.code);
    const Clock::time_point now = Clock::now();
    cycles_[event.code] = {{}, event.generator->period(), Clock::time_point::max(), {}, event.generator, event.since};
    tick(event.code, now);
}

void Player::applyFault(const FaultEvent& fault) {
    const std::optional<CanService::Value> value = service_.signal(fault.code);
    const std::optional<std::string> raw = value ? std::optional(value->raw) : std::nullopt;
    if (const std::optional<std::string> shown = faults_.apply(fault, raw)) {
        receive(fault.code, *shown, 0.0);
    }
    journal_.fault(fault);
}

void Player::endCycle(std::uint32_t code) {
    const auto found = cycles_.find(code);
    if (found != cycles_.end()) {
        loop_.cancel(found->second.next);
        cycles_.erase(found);
    }
}

void Player::tick(std::uint32_t code, Clock::time_point time) {
    const auto found = cycles_.find(code);
    RunningCycle& cycle = found->second;
    if (time >= cycle.end) {
        cycles_.erase(found);
        return;
    }
    const bool goesOn = !cycle.generator || advance(code, cycle);
    receive(code, cycle.raw, goesOn ? cycle.period : 0.0);
    if (!goesOn) {
        cycles_.erase(found);
        return;
    }
    const Clock::time_point next = time + scaled(cycle.period);
    cycle.next = loop_.at(next, [this, code, next] { tick(code, next); });
}

/// Gives the cycle its generator's next value. False when that was the last one.
bool Player::advance(std::uint32_t code, RunningCycle& cycle) {
    cycle.raw = cycle.generator->rawAt(cycle.elapsed);
    journal_.signal(code, cycle.raw);
    if (!cycle.generator->isOver(cycle.elapsed)) {
        cycle.elapsed += cycle.period;
        return true;
    }
    const bool holds = cycle.generator->holds();
    cycle.generator.reset();
    return holds;
}

void Player::receive(std::uint32_t code, const std::string& raw, double period) {
    const std::optional<std::uint32_t> message = messageOf(code);
    if (faults_.isSilent(message)) {
        return;
    }
    const double delay = faults_.delayOf(code, message);
    Clock::time_point& lastDue = lateUntil_[code];
    const Clock::time_point now = Clock::now();
    if (delay <= 0.0 && lastDue <= now) {
        send(code, message, raw, period);
        return;
    }
    // What is late stays in order when the delay shrinks.
    lastDue = std::max(lastDue, now + scaled(delay));
    loop_.at(lastDue, [=, delayed = delayed_] {
        if (delayed == delayed_) {
            send(code, message, raw, period);
        }
    });
}

void Player::send(std::uint32_t code, std::optional<std::uint32_t> message, const std::string& raw, double period) {
    if (message) {
        supervise(*message, period);
    }
    service_.putSignal(code, faults_.shown(code, raw));
}

void Player::receive(const CanFrame& frame) {
    const DecodedFrame decoded = options_.decoder->decode(frame);
    for (const std::string& complaint : decoded.complaints) {
        Journal::error(complaint);
    }
    for (const std::uint32_t message : decoded.messages) {
        if (!faults_.isSilent(message)) {
            supervise(message, decoded.period);
        }
    }
    for (const DecodedFrame::Value& value : decoded.values) {
        if (value.changed) {
            journal_.signal(value.code, value.raw);
        }
        receive(value.code, value.raw, 0.0);
    }
}

/// The message was received; with a period it is watched from now on.
void Player::supervise(std::uint32_t message, double period) {
    if (supervisor_.received(message, secondsOf(Clock::now()), period / options_.speed)) {
        report(message, false);
    }
    superviseLater();
}

void Player::superviseLater() {
    const std::optional<double> deadline = supervisor_.nextDeadline();
    if (!deadline) {
        return;
    }
    const Clock::time_point time(std::chrono::ceil<Clock::duration>(std::chrono::duration<double>(*deadline)));
    if (supervision_ && (*supervision_)->first <= time) {
        return;
    }
    if (supervision_) {
        loop_.cancel(*supervision_);
    }
    supervision_ = loop_.at(time, [this] {
        supervision_.reset();
        for (const std::uint32_t message : supervisor_.newlyTimedOut(secondsOf(Clock::now()))) {
            report(message, true);
        }
        superviseLater();
    });
}

void Player::report(std::uint32_t message, bool timedOut) {
    journal_.message(message, timedOut);
    service_.putMessageStatus(message, timedOut);
}

void Player::moveReverseLine(bool engaged) {
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

bool Player::moveService(bool up) {
    if (up == service_.isUp()) {
        return true;
    }
    std::string error;
    if (up && !service_.goUp(&error)) {
        fail(error);
        return false;
    }
    if (!up) {
        service_.goDown();
    }
    journal_.service(up);
    return true;
}

void Player::onSet(std::uint32_t code, const std::string& raw) {
    const tables::SetRow* const row = tables::findSetSignal(code);
    const std::optional<std::int32_t> value = row ? decodeSet(*row, raw) : std::nullopt;
    if (!value) {
        journal_.ignoredSet(code, raw, row ? "it is of the wrong length" : "it cannot be set");
        return;
    }
    const AnswerRules answers = matchingRules(options_.rules, code, *value);
    const std::size_t set = ++sets_;
    journal_.set(set, code, *value, raw, answers.size());
    for (const AnswerRule& rule : answers) {
        loop_.at(Clock::now() + scaled(rule.delay), [=, value = *value] { answer(set, rule, value); });
    }
}

void Player::answer(std::size_t set, const AnswerRule& rule, std::int32_t value) {
    try {
        const tables::DecodingRow& row = *tables::findDecodingRule(rule.answerCode);
        const SignalEvent event{rule.answerCode, encodePhysical(row, rule.answerValue.value_or(value)), {}};
        journal_.answer(set, event.code, event.raw);
        put(event);
    } catch (const BadInput& error) {
        journal_.noAnswer(set, "no answer by " + signalName(rule.answerCode) + ": " + error.what());
    }
}

void Player::fail(const std::string& text) {
    Journal::error(text);
    failed_ = true;
    loop_.end();
}

Clock::duration Player::scaled(double seconds) const {
    return std::chrono::round<Clock::duration>(std::chrono::duration<double>(seconds / options_.speed));
}

}  // namespace qvn::tools

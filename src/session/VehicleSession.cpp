#include <vehicle/VehicleSession.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <list>
#include <stdexcept>
#include <string>
#include <utility>

#include "session/Properties.h"
#include "session/Vehicle.h"
#include "sync/MonotonicTime.h"

namespace qvn {
namespace platform {
namespace vehicle {

using session::PendingSets;
using session::Receiver;
using session::Session;
using session::Vehicle;

namespace {

constexpr std::chrono::hours kLongestWait(24 * 365);

void requireSense(const SubscribeOptions& options, bool hasHandler) {
    if (!hasHandler) {
        throw std::invalid_argument("a subscription needs a handler");
    }
    if (options.queueSize() == 0) {
        throw std::invalid_argument("a subscription's queue needs room for one update at least");
    }
    const double period = options.minimumPeriod().count();
    if (!(period >= 0.0 && period < std::chrono::duration<double>(kLongestWait).count())) {
        throw std::invalid_argument("a subscription cannot have at most " + std::to_string(1.0 / period) +
                                    " updates a second; the number must be above 0");
    }
}

std::string numberText(const PropertyState& state) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", state.payload);
    return state.hasValue() ? text : "without a value";
}

SetOutcome outcomeOf(SetEnd end, int effect, double effectNumber, std::chrono::milliseconds timeout) {
    SetOutcome outcome;
    outcome.end = end;
    outcome.effect = Vehicle::instance().state(effect);
    PropertyState wanted;
    wanted.payload = effectNumber;
    const std::string missed =
        session::nameOf(effect) + " is " + numberText(outcome.effect) + ", not " + numberText(wanted);
    switch (end) {
        case SetEnd::TimedOut:
            outcome.text = missed + ", after " + std::to_string(timeout.count()) + " ms";
            break;
        case SetEnd::ServiceGone:
            outcome.text = "the CAN service has gone; " + missed;
            break;
        case SetEnd::SessionEnded:
            outcome.text = "the session has ended; " + missed;
            break;
        case SetEnd::Reached:
        case SetEnd::Refused:
            break;
    }
    return outcome;
}

}  // namespace

Subscription::Subscription() = default;

Subscription::Subscription(std::shared_ptr<Receiver> receiver) : mReceiver(std::move(receiver)) {}

Subscription::~Subscription() {
    end();
}

Subscription::Subscription(Subscription&& other) noexcept : mReceiver(other.exchange(nullptr)) {}

Subscription& Subscription::operator=(Subscription&& other) noexcept {
    if (this != &other) {
        Subscription(exchange(other.exchange(nullptr))).end();
    }
    return *this;
}

void Subscription::end() {
    if (const std::shared_ptr<Receiver> receiver = exchange(nullptr)) {
        Vehicle::instance().end(*receiver);
    }
}

/// A handler may be ending the subscription that another thread is about to keep.
std::shared_ptr<Receiver> Subscription::exchange(std::shared_ptr<Receiver> receiver) noexcept {
    if (Vehicle::instance().isForked()) {
        mReceiver.swap(receiver);
    } else {
        const sync::MutexLock lock(session::mutex);
        mReceiver.swap(receiver);
    }
    return receiver;
}

VehicleSession::VehicleSession() : VehicleSession(Executor()) {}

VehicleSession::VehicleSession(Executor executor) : mSession(std::make_shared<Session>(std::move(executor))) {
    Vehicle::instance().open(mSession);
}

VehicleSession::~VehicleSession() {
    if (Vehicle::instance().isForked()) {
        Vehicle::instance().keep(std::move(mSession));  // its thread is the parent's
    } else {
        Vehicle::instance().close(*mSession);
    }
}

Subscription VehicleSession::subscribe(const std::vector<int>& properties, Handler handler,
                                       const SubscribeOptions& options) {
    session::requireReported(properties);
    requireSense(options, static_cast<bool>(handler));
    std::vector<int> each = properties;
    std::sort(each.begin(), each.end());
    each.erase(std::unique(each.begin(), each.end()), each.end());
    return Subscription(Vehicle::instance().subscribe(mSession, std::move(each), std::move(handler), options));
}

Subscription VehicleSession::subscribeService(ServiceHandler handler) {
    requireSense(SubscribeOptions(), static_cast<bool>(handler));
    const auto told = [handler](const PropertyState& service) {
        ServiceState state;
        state.presence = static_cast<ServicePresence>(service.integer());
        state.since = service.timestamp;
        handler(state);
    };
    return Subscription(Vehicle::instance().subscribe(mSession, {Vehicle::kService}, told, SubscribeOptions()));
}

PropertyState VehicleSession::state(int property) const {
    return Vehicle::instance().state(property);
}

ServiceState VehicleSession::serviceState() const {
    return Vehicle::instance().serviceState();
}

SetResult VehicleSession::set(int property, double number) {
    const SetResult result = session::checkSet(property, number);
    return result ? Vehicle::instance().send(property, static_cast<int>(number)) : result;
}

std::future<SetOutcome> VehicleSession::setAndAwait(int property, double number, int effect, double effectNumber,
                                                    std::chrono::milliseconds timeout, EffectCounts counts) {
    const auto promise = std::make_shared<std::promise<SetOutcome>>();
    std::future<SetOutcome> future = promise->get_future();
    awaitEffect(property, number, effect, effectNumber, timeout, counts,
                [promise](const SetOutcome& outcome) { promise->set_value(outcome); });
    return future;
}

void VehicleSession::setAndAwait(int property, double number, int effect, double effectNumber,
                                 std::chrono::milliseconds timeout, OutcomeHandler handler, EffectCounts counts) {
    requireSense(SubscribeOptions(), static_cast<bool>(handler));
    const std::weak_ptr<Session> weak = mSession;
    awaitEffect(property, number, effect, effectNumber, timeout, counts, [weak, handler](const SetOutcome& outcome) {
        if (const std::shared_ptr<Session> session = weak.lock()) {
            std::list<Task> task{[handler, outcome] { handler(outcome); }};
            const session::Change change;
            session->run(task);
        }
    });
}

void VehicleSession::awaitEffect(int property, double number, int effect, double effectNumber,
                                 std::chrono::milliseconds timeout, EffectCounts counts, const OutcomeHandler& finish) {
    SetResult result = session::checkSet(property, number);
    if (result && !session::isReported(effect)) {
        result.error = SetError::EffectUnknown;
        result.text = session::nameOf(effect) + " is not reported by the vehicle, it cannot show an effect; " +
                      session::nameOf(property) + " was not set";
    }
    if (result) {
        using std::chrono::milliseconds;
        timeout = std::max(milliseconds(0), std::min<milliseconds>(timeout, kLongestWait));
        PendingSets::Pending pending;
        pending.session = mSession.get();
        pending.effect = effect;
        pending.number = effectNumber;
        pending.sentAt = sync::monotonicTime();
        pending.deadline = std::chrono::steady_clock::now() + timeout;
        pending.finish = [=](SetEnd end) { finish(outcomeOf(end, effect, effectNumber, timeout)); };
        result = Vehicle::instance().send(property, static_cast<int>(number), &pending,
                                          counts == EffectCounts::WhenThereAlready);
    }
    if (!result) {
        SetOutcome outcome = outcomeOf(SetEnd::Refused, effect, effectNumber, timeout);
        outcome.text = result.text;
        outcome.refusal = std::move(result);
        finish(outcome);
    }
}

bool VehicleSession::waitUntilIdle(std::chrono::steady_clock::time_point deadline, std::string* busy) {
    return Vehicle::instance().waitUntilIdle(deadline, busy);
}

bool VehicleSession::waitForService(bool there, std::chrono::steady_clock::time_point deadline) {
    return Vehicle::instance().waitForService(there, deadline);
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

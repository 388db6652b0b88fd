// The application of the two-process measurement: receives every property and counts. With --way it tells how:
//   callback        by VehicleClient's callback, the default
//   handover        by that callback, which has a thread count: the yardstick for the next one
//   thread, inline  by a session's handler, on the session's thread or on the one that receives
//   beside          by the callback; beside it are 100 subscriptions of all properties, each at most 10 times a second
//   blocked         by the callback; beside it are 100 subscriptions whose handlers do not return before the end

#include "Measure.h"

#include <semaphore.h>
#include <unistd.h>
#include <vehicle/VehicleClient.h>
#include <vehicle/VehicleSession.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tables/SetCatalogue.h"
#include "tables/SignalTable.h"

using namespace qvn::platform::vehicle;

namespace {

constexpr int kSubscriptions = 100;

bench::Receiver* receiver;
bench::Shared* shared;
sem_t finished;
sem_t handedOver;

void count() {
    if (!shared->ready) {
        return;  // the reverse line's level, which subscribe reports
    }
    if (receiver->arrived()) {
        sem_post(&finished);
    }
}

void changed(VehiclePropValue, PropertyType) {
    count();
}

void handOver(VehiclePropValue, PropertyType) {
    if (shared->ready) {
        sem_post(&handedOver);
    }
}

void countWhatIsHandedOver(std::uint32_t values) {
    for (; values > 0; --values) {
        sem_wait(&handedOver);
        count();
    }
}

void waitForEnd() {
    sem_wait(&finished);
    sem_post(&finished);
}

std::vector<int> properties(bool withSettable) {
    std::vector<int> result;
    for (std::size_t row = 0; row < qvn::tables::kSignalTableRows; ++row) {
        if (withSettable || qvn::tables::findSetSignal(hap_signal_table[row].codeId) == nullptr) {
            result.push_back(static_cast<int>(hap_signal_table[row].property));
        }
    }
    return result;
}

std::unique_ptr<VehicleSession> makeSession(const std::string& way) {
    if (way == "inline") {
        return std::make_unique<VehicleSession>([](const auto& task) { task(); });
    }
    const bool hasSession = way == "thread" || way == "beside" || way == "blocked";
    return hasSession ? std::make_unique<VehicleSession>() : nullptr;
}

std::vector<Subscription> subscribe(VehicleSession& session, const std::string& way) {
    const std::vector<int> reported = properties(false);
    std::vector<Subscription> result;
    for (int i = 0; i < kSubscriptions && way == "beside"; ++i) {
        result.push_back(session.subscribe(
            reported, [](const PropertyState&) {}, SubscribeOptions().atMost(10)));
    }
    for (int i = 0; i < kSubscriptions && way == "blocked"; ++i) {
        result.push_back(session.subscribe(reported, [](const PropertyState&) { waitForEnd(); }));
    }
    if (way == "thread" || way == "inline") {
        result.push_back(session.subscribe(reported, [](const PropertyState&) { count(); }));
    }
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Options options = bench::parseOptions(argc, argv);
    bench::pin(options.processor);
    shared = &bench::mapShared(options.shared);
    const auto owner = std::make_unique<bench::Receiver>(options, *shared);
    receiver = owner.get();
    sem_init(&finished, 0, 0);
    sem_init(&handedOver, 0, 0);

    VehicleClient* client = VehicleClient::getInstance();
    usleep(300000);  // the connection is up before the measurement begins
    const std::unique_ptr<VehicleSession> session = makeSession(options.way);
    std::vector<Subscription> subscriptions;
    if (session) {
        subscriptions = subscribe(*session, options.way);
    }
    std::thread other;
    if (options.way == "handover") {
        other = std::thread(countWhatIsHandedOver, options.count);
    }
    if (options.way != "thread" && options.way != "inline") {
        client->subscribe(other.joinable() ? handOver : changed, properties(true), nullptr);
    }
    shared->ready = true;
    waitForEnd();
    client->unsubscribe(changed, properties(true));
    if (other.joinable()) {
        other.join();
    }
    receiver->print("application");
    return 0;
}

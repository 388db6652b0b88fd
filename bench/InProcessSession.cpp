// What sessions add to the way of a signal: from onBroadcast until all handlers have returned, on the thread that
// receives or on the session's own. The allocations are those of the whole process.

#include <benchmark/benchmark.h>
#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleSession.h>

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

#include "AllocationCount.h"
#include "InProcessLibrary.h"

namespace {

using namespace bench;

std::atomic<std::size_t> handlers{0};  // that have run

void handled(const PropertyState&) {
    ++handlers;
}

const VehicleSession::Executor kInline = [](const VehicleSession::Task& task) { task(); };

/// A byte signal that changes with every reception. So many handlers on another thread are waited for each time.
void receive(benchmark::State& state, std::size_t awaited) {
    std::vector<CBaseJob::Ptr> messages;
    for (const char* const bytes : {"\x01", "\x02"}) {
        can_service::BroadcastSignal signal;
        signal.set_raw_value(bytes);
        messages.push_back(message(can_service::QVN_GET_DCT_FD4_DrvModDisp_0x236, signal));
    }
    std::size_t next = 0;
    const auto receiveOne = [&] {
        const std::size_t all = handlers + awaited;
        library().client.onBroadcast(messages[++next % messages.size()]);
        while (awaited > 0 && handlers < all) {
            std::this_thread::yield();
        }
    };
    for (int i = 0; i < 1000; ++i) {
        receiveOne();  // the most that will wait has waited
    }
    const std::size_t before = allocationCount();
    for (auto _ : state) {
        receiveOne();
    }
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(allocationCount() - before), benchmark::Counter::kAvgIterations);
}

void signalWithoutSession(benchmark::State& state) {
    receive(state, 0);
}

void signalToSession(benchmark::State& state, bool hasThread, std::size_t subscriptions,
                     const SubscribeOptions& options) {
    library();
    VehicleSession session(hasThread ? VehicleSession::Executor() : kInline);
    std::vector<Subscription> all;
    while (all.size() < subscriptions) {
        all.push_back(session.subscribe({ids::DCT_FD4_DrvModDisp_0x236}, handled, options));
    }
    receive(state, hasThread ? subscriptions : 0);
}

const SubscribeOptions kEvery = SubscribeOptions().withoutPresent();
const SubscribeOptions kChanges = SubscribeOptions().withoutPresent().changesOnly();
const SubscribeOptions kSlow = SubscribeOptions().withoutPresent().atMost(10);

BENCHMARK(signalWithoutSession);
BENCHMARK_CAPTURE(signalToSession, without_subscription, false, 0, kEvery);
BENCHMARK_CAPTURE(signalToSession, inline, false, 1, kEvery);
BENCHMARK_CAPTURE(signalToSession, inline_changes_only, false, 1, kChanges);
BENCHMARK_CAPTURE(signalToSession, inline_10_a_second, false, 1, kSlow);
BENCHMARK_CAPTURE(signalToSession, inline_1000_subscriptions, false, 1000, kEvery);
BENCHMARK_CAPTURE(signalToSession, inline_1000_subscriptions_10_a_second, false, 1000, kSlow);
BENCHMARK_CAPTURE(signalToSession, thread, true, 1, kEvery)->UseRealTime();
BENCHMARK_CAPTURE(signalToSession, thread_1000_subscriptions, true, 1000, kEvery)->UseRealTime();

}  // namespace

// The library's own share: from onBroadcast to the application's callback, per decoding rule; getters; sets up to the
// bus object; the status fan-out of the largest message. Run it with QVN_LOG_LEVEL=0 for logging off by level, and with
// QVN_LOG_LEVEL=5 QVN_LOG_FILE=/dev/null for logging to a null sink.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "AllocationCount.h"
#include "InProcessLibrary.h"

namespace {

using namespace bench;

void signalToCallback(benchmark::State& state, can_service::CodeIdEnum code) {
    can_service::BroadcastSignal signal;
    signal.set_raw_value(std::string("\x01\x02", 2));
    CBaseJob::Ptr job = message(code, signal);
    library().client.onBroadcast(job);
    const std::size_t before = bench::allocationCount();
    for (auto _ : state) {
        library().client.onBroadcast(job);
    }
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(bench::allocationCount() - before), benchmark::Counter::kAvgIterations);
}

/// A byte signal, the last of `state.range(0)` subscribed properties.
void signalAmongSubscribed(benchmark::State& state) {
    std::vector<int> properties(static_cast<std::size_t>(state.range(0)) - 1);
    properties.push_back(propertyOfRow(qvn::tables::kSignalTableRows - 1));
    library().core.subscribe(changed, properties, nullptr);
    signalToCallback(state, can_service::QVN_GET_DCT_FD4_DrvModDisp_0x236);
    library().core.subscribe(changed, everyProperty(), nullptr);
}

void statusToCallbacks(benchmark::State& state, std::uint32_t status) {
    can_service::BroadcastMessageStatus content;
    content.set_msg_status(status);
    CBaseJob::Ptr job = message(can_service::QVN_GET_HAP_FD3, content);
    for (auto _ : state) {
        library().client.onBroadcast(job);
    }
}

void getter(benchmark::State& state) {
    std::vector<int> values;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            library().core.getInt32Property(propertyOfRow(qvn::tables::kSignalTableRows - 1), values));
    }
}

void wholeValueGetter(benchmark::State& state) {
    VehiclePropValue value;
    for (auto _ : state) {
        benchmark::DoNotOptimize(library().core.getPropValue(propertyOfRow(qvn::tables::kSignalTableRows - 1), &value));
    }
}

void setter(benchmark::State& state) {
    const auto property = static_cast<VehicleProperty>(0x21403033);
    for (auto _ : state) {
        benchmark::DoNotOptimize(library().client.signalFeedback<int>(property, 1));
    }
}

BENCHMARK_CAPTURE(signalToCallback, byte, can_service::QVN_GET_DCT_FD4_DrvModDisp_0x236);
BENCHMARK_CAPTURE(signalToCallback, word, can_service::QVN_GET_HAP_FD1_APS_ESP_BrkDistance);
BENCHMARK_CAPTURE(signalToCallback, vehicle_speed, can_service::QVN_GET_ESP_FD2_VehSpd);
BENCHMARK_CAPTURE(signalToCallback, steering_angle, can_service::QVN_GET_CSA2_SteerWheelAng);
BENCHMARK_CAPTURE(signalToCallback, wheel_speed, can_service::QVN_GET_ABS1_FLWheelSpd);
BENCHMARK_CAPTURE(signalToCallback, switch, can_service::QVN_GET_CSA3_SeekDwnSwtSts);
BENCHMARK(signalAmongSubscribed)->Arg(1)->Arg(60)->Arg(static_cast<int64_t>(qvn::tables::kSignalTableRows));
BENCHMARK(getter)->Name("getInt32Property/last_row");
BENCHMARK(wholeValueGetter)->Name("getPropValue/last_row");
BENCHMARK(setter)->Name("signalFeedback/to_bus_object");
BENCHMARK_CAPTURE(statusToCallbacks, timeout_of_55_signals, 64);
BENCHMARK_CAPTURE(statusToCallbacks, recovery_of_55_signals, 0);

}  // namespace

BENCHMARK_MAIN();

// From the reverse line's change to the application's callback, while the CAN service has never been reached. Prints
// one JSON object.

#include <host/RuntimeDir.h>
#include <semaphore.h>
#include <vehicle/VehicleClient.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Measure.h"

using namespace qvn::platform::vehicle;

namespace {

constexpr int kParkingCommand = 0x2140307A;
constexpr int kChanges = 1000;

sem_t arrived;
std::int64_t arrivedNs = 0;

void changed(VehiclePropValue, PropertyType) {
    arrivedNs = bench::nowNs();
    sem_post(&arrived);
}

/// Replaces the line's file in one step, as a level changes in one step.
std::int64_t setLine(const std::string& folder, int level) {
    std::ofstream(folder + "/new") << level;
    const std::int64_t before = bench::nowNs();
    std::filesystem::rename(folder + "/new", folder + "/87");
    return before;
}

}  // namespace

int main() {
    sem_init(&arrived, 0, 0);
    std::string error;
    if (!qvn::host::ensureRuntimeSubdir("gpio", &error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    const std::string folder = qvn::host::runtimeDir() + "/gpio";
    setLine(folder, 1);
    if (!VehicleClient::getInstance()->subscribe(changed, {kParkingCommand}, nullptr)) {
        return 1;
    }
    sem_wait(&arrived);  // the present level

    std::vector<std::int64_t> latencies;
    for (int i = 0; i < kChanges; ++i) {
        const std::int64_t before = setLine(folder, i % 2);
        sem_wait(&arrived);
        latencies.push_back(arrivedNs - before);
    }
    std::printf("{\"program\": \"reverse_line\", \"count\": %d, \"p50_us\": %.1f, \"p99_us\": %.1f}\n", kChanges,
                bench::percentileUs(latencies, 50), bench::percentileUs(latencies, 99));
    return 0;
}

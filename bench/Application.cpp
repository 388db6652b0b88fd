// The application of the two-process measurement: subscribes every property through the public class and counts.

#include "Measure.h"

#include <semaphore.h>
#include <unistd.h>
#include <vehicle/VehicleClient.h>

#include <memory>
#include <vector>

#include "tables/SignalTable.h"

using namespace qvn::platform::vehicle;

namespace {

bench::Receiver* receiver;
bench::Shared* shared;
sem_t finished;

void changed(VehiclePropValue, PropertyType) {
    if (!shared->ready) {
        return;  // the reverse line's level, which subscribe reports
    }
    if (receiver->arrived()) {
        sem_post(&finished);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Options options = bench::parseOptions(argc, argv);
    bench::pin(options.processor);
    shared = &bench::mapShared(options.shared);
    const auto owner = std::make_unique<bench::Receiver>(options, *shared);
    receiver = owner.get();
    sem_init(&finished, 0, 0);

    std::vector<int> properties;
    for (std::size_t row = 0; row < qvn::tables::kSignalTableRows; ++row) {
        properties.push_back(static_cast<int>(hap_signal_table[row].property));
    }
    VehicleClient* client = VehicleClient::getInstance();
    usleep(300000);  // the connection is up before the measurement begins
    client->subscribe(changed, properties, nullptr);
    shared->ready = true;
    sem_wait(&finished);
    client->unsubscribe(changed, properties);
    receiver->print("application");
    return 0;
}

// The service of the two-process measurement: broadcasts signals as the CAN service does, at a pace, as a load or
// as fast as it can. At a pace it prints how long a broadcast took, as one JSON object.

#include "Measure.h"

#include <common_base/CFdbProtoMsgBuilder.h>
#include <common_base/fdbus.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "common.base.canservice.pb.h"
#include "tables/MessageCatalogue.h"
#include "tables/SubscriptionCodes.h"

namespace {

// The subscription list begins with the signals; then come the messages.
const std::size_t kSignals = qvn::tables::kSubscriptionCodes.size() - qvn::tables::kMessages.size();

class Service : public CBaseServer {
public:
    explicit Service(CBaseWorker* worker) : CBaseServer("fdbus_can_service", worker) {}
    ~Service() override { prepareDestroy(); }
};

}  // namespace

int main(int argc, char** argv) {
    const bench::Options options = bench::parseOptions(argc, argv);
    bench::pin(options.processor);
    bench::Shared& shared = bench::mapShared(options.shared);
    FDB_CONTEXT->start();
    CBaseWorker worker("service");
    worker.start();
    Service service(&worker);
    service.bind("svc://fdbus_can_service");
    while (!shared.ready) {
        usleep(1000);
    }

    const bool paced = options.mode == "paced";
    const bool load = options.mode == "load";
    std::vector<std::int64_t> broadcasts;
    broadcasts.reserve(paced ? options.count : 0);
    std::int64_t next = bench::nowNs();
    shared.startedNs = next;
    for (std::uint32_t i = 0; i < options.count; ++i) {
        // At a pace always the same byte signal, else every signal in turn: as a load all of them at each step.
        const std::size_t which = paced ? 5 : i % kSignals;
        if (paced || (load && which == 0)) {
            next += std::int64_t{1000} * options.paceMicroseconds;
            bench::sleepUntil(next);
        }
        can_service::BroadcastSignal signal;
        signal.set_raw_value(std::string{static_cast<char>(i), static_cast<char>(i >> 8)});
        CFdbProtoMsgBuilder builder(signal);
        if (paced) {
            shared.sentNs.store(bench::nowNs(), std::memory_order_relaxed);
        }
        service.broadcast(static_cast<FdbMsgCode_t>(qvn::tables::kSubscriptionCodes[which]), builder);
        if (paced) {
            broadcasts.push_back(bench::nowNs() - shared.sentNs);
        }
    }
    for (int i = 0; shared.received != options.count && i < 30000; ++i) {
        usleep(1000);
    }
    service.prepareDestroy();
    worker.exit();
    worker.join();
    if (paced) {
        std::printf("{\"program\": \"service\", \"broadcast_p50_us\": %.2f}\n", bench::percentileUs(broadcasts, 50));
    }
    return shared.received == options.count ? 0 : 1;
}

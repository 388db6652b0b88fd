// Dispatches values and message statuses for as long as it is told, 20 million by default, and compares the resident
// size after a tenth of them with that at the end. Exit code 1 when it has grown by more than 1 %.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "AllocationCount.h"
#include "InProcessLibrary.h"
#include "tables/MessageCatalogue.h"
#include "tables/SubscriptionCodes.h"

namespace {

constexpr long kDefaultValues = 20'000'000;
constexpr long kValuesPerStatus = 1000;
// The subscription list begins with the signals; then come the messages.
const std::size_t kSignals = qvn::tables::kSubscriptionCodes.size() - qvn::tables::kMessages.size();

long residentKibibytes() {
    long pages = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

CBaseJob::Ptr signalMessage(std::size_t signal, long value) {
    can_service::BroadcastSignal content;
    content.set_raw_value(std::string{static_cast<char>(value >> 8), static_cast<char>(value)});
    return bench::message(static_cast<can_service::CodeIdEnum>(qvn::tables::kSubscriptionCodes[signal]), content);
}

CBaseJob::Ptr statusMessage(std::uint32_t status) {
    can_service::BroadcastMessageStatus content;
    content.set_msg_status(status);
    return bench::message(can_service::QVN_GET_HAP_FD3, content);
}

}  // namespace

int main(int argc, char** argv) {
    const long values = argc > 1 ? std::atol(argv[1]) : kDefaultValues;
    bench::Client& client = bench::library().client;
    long atATenth = 0;
    for (long i = 0; i < values; ++i) {
        CBaseJob::Ptr signal = signalMessage(static_cast<std::size_t>(i) % kSignals, i);
        client.onBroadcast(signal);
        if (i % kValuesPerStatus == 0) {
            CBaseJob::Ptr status = statusMessage(i % (2 * kValuesPerStatus) == 0 ? 64 : 0);
            client.onBroadcast(status);
        }
        if (i == values / 10) {
            atATenth = residentKibibytes();
        }
    }
    const long atTheEnd = residentKibibytes();
    std::printf("%ld values, %zu callbacks, %zu allocations: resident %ld KiB at a tenth, %ld KiB at the end\n", values,
                bench::received, bench::allocationCount(), atATenth, atTheEnd);
    return atTheEnd * 100 <= atATenth * 101 ? 0 : 1;
}

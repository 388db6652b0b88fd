// Dispatches values and message statuses for as long as it is told, 20 million by default, and compares the resident
// size and the heap in use after a tenth of them with those at the end. Beside the subscriber a session lasts for all
// that time, others are made, used and destroyed, and the CAN service restarts. Exit code 1 when the heap has grown by
// more than 16 KiB or the size by more than 2 %, or when a session has not been told.

#include <common_base/CFdbProtoMsgBuilder.h>
#include <common_base/fdbus.h>
#include <malloc.h>
#include <vehicle/PropertyIds.h>
#include <vehicle/VehicleSession.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <thread>

#include "AllocationCount.h"
#include "InProcessLibrary.h"
#include "Measure.h"
#include "tables/MessageCatalogue.h"
#include "tables/SubscriptionCodes.h"

namespace {

using namespace qvn::platform::vehicle;

constexpr long kDefaultValues = 20'000'000;
constexpr long kValuesPerStatus = 1000;
constexpr long kValuesPerSession = 500;
constexpr long kValuesPerRestart = 10'000;
constexpr std::chrono::seconds kPatience(10);
// The subscription list begins with the signals; then come the messages.
const std::size_t kSignals = qvn::tables::kSubscriptionCodes.size() - qvn::tables::kMessages.size();

struct Memory {
    long resident = 0;  // in KiB, as below
    long heap = 0;      // what is allocated
};

Memory memory() {
    return {bench::residentKibibytes(), static_cast<long>(mallinfo2().uordblks / 1024)};
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

/// The bus's folder: no other program's service is there.
class HostFolder {
public:
    HostFolder() { setenv("QVN_HOST_DIR", mkdtemp(mPath), 1); }
    ~HostFolder() { std::filesystem::remove_all(mPath); }

private:
    char mPath[32] = "/tmp/qvn-soak-XXXXXX";
};

/// A CAN service without signals, for sessions to see it come and go; one message is timed out while it is there.
class Service : public CBaseServer {
public:
    Service() : CBaseServer("fdbus_can_service") { bind("svc://fdbus_can_service"); }
    ~Service() override { prepareDestroy(); }

protected:
    void onSubscribe(CBaseJob::Ptr&) override {
        can_service::BroadcastMessageStatus status;
        status.set_msg_status(64);
        CFdbProtoMsgBuilder builder(status);
        broadcast(can_service::QVN_GET_HAP_FD1, builder);
    }
};

/// What sessions were told.
std::atomic<long> told{0};

void handled(const PropertyState& state) {
    told += state.property != 0 ? 1 : 0;
}

/// Waits until the session has seen the service come or go; false when it has not.
bool waitFor(VehicleSession& session, ServicePresence presence) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (session.serviceState().presence != presence && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    return session.serviceState().presence == presence;
}

/// One of an executor's, or with a thread of its own, that ends with subscriptions, held back updates and a set that is
/// awaited.
void useSession(bool hasThread) {
    const VehicleSession::Executor inThisThread = [](const VehicleSession::Task& task) { task(); };
    VehicleSession session(hasThread ? VehicleSession::Executor() : inThisThread);
    const Subscription every = session.subscribe({ids::ESP_FD2_VehSpd, ids::HAP_FD1_APS_ESP_BrkDistance}, handled);
    const Subscription some =
        session.subscribe({ids::BCM1_DrvDoorSts}, handled, SubscribeOptions().changesOnly().atMost(10));
    const Subscription service = session.subscribeService([](const ServiceState&) { ++told; });
    session.setAndAwait(ids::HUT6_CarMdlDispCmd, 1, ids::HAP_FD2_CarMdlDispSts, 1, kPatience,
                        [](const SetOutcome&) { ++told; });
    for (std::size_t signal = 0; signal < kSignals; ++signal) {
        CBaseJob::Ptr message = signalMessage(signal, static_cast<long>(told));
        bench::library().client.onBroadcast(message);
    }
}

/// With a session used while it is away. False when the session that lasts has not seen it.
bool restart(std::optional<Service>& service, VehicleSession& lasting) {
    const bool wasThere = service.has_value();
    service.reset();
    if (wasThere && !waitFor(lasting, ServicePresence::Gone)) {
        return false;
    }
    useSession(true);
    service.emplace();
    return waitFor(lasting, ServicePresence::There);
}

}  // namespace

int main(int argc, char** argv) {
    const HostFolder folder;
    const long values = argc > 1 ? std::atol(argv[1]) : kDefaultValues;
    bench::Client& client = bench::library().client;
    VehicleSession lasting;
    const Subscription every = lasting.subscribe({ids::ESP_FD2_VehSpd}, handled);
    const Subscription latest = lasting.subscribe({ids::DCT5_TGS_LEVER}, handled, SubscribeOptions().latestOnly());
    std::optional<Service> service;
    Memory atATenth;
    for (long i = 0; i < values; ++i) {
        CBaseJob::Ptr signal = signalMessage(static_cast<std::size_t>(i) % kSignals, i);
        client.onBroadcast(signal);
        if (i % kValuesPerStatus == 0) {
            CBaseJob::Ptr status = statusMessage(i % (2 * kValuesPerStatus) == 0 ? 64 : 0);
            client.onBroadcast(status);
        }
        if (i % kValuesPerSession == 0) {
            useSession(i % (2 * kValuesPerSession) == 0);
        }
        if (i % kValuesPerRestart == 0 && !restart(service, lasting)) {
            std::fprintf(stderr, "soak: after %ld values a session has not seen the service go or come\n", i);
            return 1;
        }
        if (i == values / 10) {
            atATenth = memory();
        }
    }
    const Memory atTheEnd = memory();
    std::printf(
        "%ld values, %zu callbacks, %ld handlers, %zu allocations: resident %ld KiB at a tenth, %ld KiB at the "
        "end; heap %ld and %ld KiB\n",
        values, bench::received, static_cast<long>(told), bench::allocationCount(), atATenth.resident,
        atTheEnd.resident, atATenth.heap, atTheEnd.heap);
    return atTheEnd.heap <= atATenth.heap + 16 && atTheEnd.resident * 100 <= atATenth.resident * 102 && told > 0 ? 0
                                                                                                                 : 1;
}

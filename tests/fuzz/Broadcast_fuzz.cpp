// A broadcast of the CAN service on its way to the core's callbacks: the input is the code and the payload.

#include <Frame.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "Input.h"
#include "Require.h"
#include "canservice/T21CanServiceFdbusClient.h"
#include "tables/SignalTable.h"

namespace {

using namespace qvn::platform::vehicle;
using qvn::fuzz::require;

void requireKnown(int property) {
    const VehilceClientInfo* const end = hap_signal_table + qvn::tables::kSignalTableRows;
    require(std::any_of(hap_signal_table, end, [property](const VehilceClientInfo& row) {
        return static_cast<int>(row.property) == property;
    }));
}

/// The CAN client with its bus callback in reach, and without a connection.
class Client : public T21CanServiceFdbusClient {
public:
    Client() : T21CanServiceFdbusClient("fuzz", nullptr) {
        setFuncSignalTable(hap_signal_table);
        registerErrSignalCallback([](int property, VehiclePropertyStatus) { requireKnown(property); });
        registerAvailableSignalCallabck([](VehicleProperty property) { requireKnown(static_cast<int>(property)); });
        registerSignalCallback([](VehiclePropValue value, PropertyType) {
            requireKnown(value.prop);
            require(value.value.int32Values.empty() != value.value.floatValues.empty());
        });
    }
    using T21CanServiceFdbusClient::onBroadcast;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static auto* const client = new Client;
    qvn::fuzz::Input input(data, size);
    const std::int32_t code = input.code();
    const std::string payload = input.rest();
    const fdb::FrameView frame{fdb::FrameKind::Broadcast,
                               code,
                               0,
                               {},
                               reinterpret_cast<const std::uint8_t*>(payload.data()),
                               static_cast<std::int32_t>(payload.size())};
    CBaseJob::Ptr job = std::make_shared<CFdbMessage>(frame, 1, nullptr);
    client->onBroadcast(job);
    return 0;
}

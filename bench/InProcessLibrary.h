#pragma once

// The library in one process, without a bus: messages are made from the host bus's own frames and handed to the client.

#include <Frame.h>
#include <vehicle/VehicleClient.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "canservice/T21CanServiceFdbusClient.h"
#include "client/ProcessCore.h"
#include "client/VehicleClientImpl.h"
#include "common.base.canservice.pb.h"
#include "tables/SignalTable.h"

namespace bench {

using namespace qvn::platform::vehicle;

/// How often one of the application's callbacks ran.
inline std::size_t received = 0;

inline void changed(VehiclePropValue value, PropertyType) {
    received += value.prop != 0 ? 1 : 0;
}
inline void statusChanged(int, VehiclePropertyStatus) {
    ++received;
}

/// The CAN client with its bus callback in reach, and without a connection.
class Client : public T21CanServiceFdbusClient {
public:
    using T21CanServiceFdbusClient::onBroadcast;
    using T21CanServiceFdbusClient::T21CanServiceFdbusClient;
};

inline int propertyOfRow(std::size_t row) {
    return static_cast<int>(hap_signal_table[row].property);
}

inline std::vector<int> everyProperty() {
    std::vector<int> properties;
    for (std::size_t row = 0; row < qvn::tables::kSignalTableRows; ++row) {
        properties.push_back(propertyOfRow(row));
    }
    return properties;
}

/// The core is the process's own, so that sessions see what it dispatches.
struct Library {
    Library() : client("bench", nullptr) {
        core.subscribe(changed, everyProperty(), nullptr);
        client.setFuncSignalTable(hap_signal_table);
        client.registerSignalCallback(
            [this](VehiclePropValue&& value, PropertyType type) { core.dispatchSingal(std::move(value), type); });
        client.registerAvailableSignalCallabck(
            [this](VehicleProperty property) { core.availableSignalCallback(property); });
        client.registerErrSignalCallback(statusChanged);
    }

    VehicleClientImpl& core = (VehicleClient::getInstance(), *processCore());
    Client client;
};

inline Library& library() {
    static auto* const instance = new Library;
    return *instance;
}

inline CBaseJob::Ptr message(can_service::CodeIdEnum code, const google::protobuf::MessageLite& content) {
    const std::string payload = content.SerializeAsString();
    const fdb::FrameView frame{
        fdb::FrameKind::Broadcast,           code, 0, {}, reinterpret_cast<const uint8_t*>(payload.data()),
        static_cast<int32_t>(payload.size())};
    return std::make_shared<CFdbMessage>(frame, 1, nullptr);
}

}  // namespace bench

#ifndef CLIENT_PROCESS_CORE_H
#define CLIENT_PROCESS_CORE_H

namespace qvn {
namespace platform {
namespace vehicle {

class VehicleClientImpl;

/// The core behind VehicleClient::getInstance(), which has been called before; null when its client was destroyed.
VehicleClientImpl* processCore();

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_PROCESS_CORE_H

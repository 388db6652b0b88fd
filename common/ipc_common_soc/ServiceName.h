#ifndef IPC_COMMON_SOC_SERVICE_NAME_H
#define IPC_COMMON_SOC_SERVICE_NAME_H

#include <string>

namespace qvn {
namespace wire {

/// The name under which clients look for the CAN service.
constexpr char kServiceName[] = "fdbus_can_service";

/// Where the bus has a service of this name: what clients connect to and the service binds.
inline std::string serviceAddress(const std::string& name) {
    return "svc://" + name;
}

}  // namespace wire
}  // namespace qvn

#endif  // IPC_COMMON_SOC_SERVICE_NAME_H

#ifndef IPC_COMMON_SOC_SERVICE_NAME_H
#define IPC_COMMON_SOC_SERVICE_NAME_H

namespace qvn {
namespace wire {

/// The name under which clients look for the CAN service.
constexpr char kServiceName[] = "fdbus_can_service";

}  // namespace wire
}  // namespace qvn

#endif  // IPC_COMMON_SOC_SERVICE_NAME_H

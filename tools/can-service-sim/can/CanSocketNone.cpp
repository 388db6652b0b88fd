#include "can-service-sim/can/CanSocket.h"

namespace qvn::tools {

int openCanInterface(const std::string& name, std::string* error) {
    *error = "CAN interface " + name + " cannot be read: this system has no SocketCAN; play a log with --candump";
    return -1;
}

bool readCanFrames(int, const std::function<void(const CanFrame&)>&, std::string*) {
    return false;
}

}  // namespace qvn::tools

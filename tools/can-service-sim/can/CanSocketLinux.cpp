#include <linux/can.h>
#include <linux/can/raw.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "can-service-sim/can/CanSocket.h"

namespace qvn::tools {
namespace {

constexpr int kFramesAtATime = 256;  // stop signals and timers get their turn between them

/// Takes the interface for the socket. What keeps it from that, as a part of a sentence; empty when nothing does.
std::string bindTo(int socket, const std::string& name) {
    if (socket < 0) {
        return std::string("no CAN socket can be opened: ") + std::strerror(errno) +
               "; does the kernel have CAN (modprobe can-raw)?";
    }
    ifreq request{};
    if (name.empty() || name.size() >= sizeof request.ifr_name) {
        return "expected the name of an interface of 1 to 15 characters";
    }
    name.copy(request.ifr_name, name.size());
    if (ioctl(socket, SIOCGIFFLAGS, &request) != 0) {
        return std::string(std::strerror(errno)) +
               "; 'ip link show type can' and 'ip link show type vcan' list those " + "that there are";
    }
    if ((static_cast<unsigned>(request.ifr_flags) & IFF_UP) == 0) {
        return "it is down; take it up with 'ip link set " + name +
               " up' (a real bus first needs its bit rate: " + "'ip link set " + name + " type can bitrate 500000')";
    }
    // A kernel without CAN FD still has the other frames.
    const int on = 1;
    setsockopt(socket, SOL_CAN_RAW, CAN_RAW_FD_FRAMES, &on, sizeof on);
    sockaddr_can address{};
    address.can_family = AF_CAN;
    address.can_ifindex = static_cast<int>(if_nametoindex(name.c_str()));
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return std::string(std::strerror(errno)) + "; is it a CAN interface?";
    }
    return "";
}

}  // namespace

int openCanInterface(const std::string& name, std::string* error) {
    const int socket = ::socket(PF_CAN, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, CAN_RAW);
    const std::string problem = bindTo(socket, name);
    if (problem.empty()) {
        return socket;
    }
    if (socket >= 0) {
        close(socket);
    }
    *error = "CAN interface " + name + " cannot be read: " + problem;
    return -1;
}

bool readCanFrames(int socket, const std::function<void(const CanFrame&)>& onFrame, std::string* error) {
    for (int i = 0; i < kFramesAtATime; ++i) {
        canfd_frame frame{};
        const ssize_t size = recv(socket, &frame, sizeof frame, MSG_DONTWAIT);
        if (size < 0) {
            const int reason = errno;
            *error = std::strerror(reason);
            return reason == EAGAIN || reason == EINTR;
        }
        const bool isData = (frame.can_id & (CAN_RTR_FLAG | CAN_ERR_FLAG)) == 0;
        if ((size != CAN_MTU && size != CANFD_MTU) || !isData) {
            continue;
        }
        const bool extended = (frame.can_id & CAN_EFF_FLAG) != 0;
        const std::size_t most = size == CAN_MTU ? CAN_MAX_DLEN : CANFD_MAX_DLEN;
        onFrame({frame.can_id & (extended ? CAN_EFF_MASK : CAN_SFF_MASK), extended,
                 std::string(frame.data, frame.data + std::min<std::size_t>(frame.len, most))});
    }
    return true;
}

}  // namespace qvn::tools

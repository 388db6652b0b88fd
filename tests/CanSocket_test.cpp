#include "can-service-sim/can/CanSocket.h"

#include <gtest/gtest.h>
#include <linux/can.h>
#include <sys/socket.h>
#include <unistd.h>

namespace qvn::tools {
namespace {

/// A frame as the kernel hands it over, in `size` bytes.
void put(int socket, canid_t id, const std::string& payload, std::size_t size) {
    canfd_frame frame{};
    frame.can_id = id;
    frame.len = static_cast<std::uint8_t>(payload.size());
    payload.copy(reinterpret_cast<char*>(frame.data), payload.size());
    ASSERT_EQ(write(socket, &frame, size), static_cast<ssize_t>(size));
}

TEST(CanSocket, TakesTheDataFramesThatHaveArrived) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    put(ends[0], 0x241, "\x01\x02", CAN_MTU);
    put(ends[0], 0x18FEF118 | CAN_EFF_FLAG, std::string(64, 'x'), CANFD_MTU);
    put(ends[0], 0x241 | CAN_RTR_FLAG, "", CAN_MTU);
    put(ends[0], CAN_ERR_FLAG | CAN_ERR_MASK, "", CAN_MTU);
    put(ends[0], 0x241, "", 5);  // no frame at all
    std::vector<CanFrame> frames;
    const auto keep = [&](const CanFrame& frame) { frames.push_back(frame); };
    std::string error;
    EXPECT_TRUE(readCanFrames(ends[1], keep, &error));
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].id, 0x241U);
    EXPECT_FALSE(frames[0].extended);
    EXPECT_EQ(frames[0].payload, "\x01\x02");
    EXPECT_EQ(frames[1].id, 0x18FEF118U);
    EXPECT_TRUE(frames[1].extended);
    EXPECT_EQ(frames[1].payload, std::string(64, 'x'));
    close(ends[1]);
    EXPECT_FALSE(readCanFrames(ends[1], keep, &error));
    EXPECT_NE(error, "");
    close(ends[0]);
}

}  // namespace
}  // namespace qvn::tools

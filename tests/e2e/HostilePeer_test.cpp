#include <string>
#include <vector>

#include "e2e/Desk.h"
#include "e2e/RawSocket.h"
#include "e2e/WatchOutput.h"
#include "support/Scale.h"

namespace qvn::e2e {
namespace {

constexpr unsigned kByteCode = 0x02FE03F0;
constexpr unsigned kUnknownCode = 0x7FFFFFFF;
constexpr unsigned kSmallMessage = 0x01170000;  // ECM_PT7, of one signal
constexpr unsigned kLargeMessage = 0x02980000;  // HAP_FD3, of 55

constexpr long kLittleKibibytes = 8192;

const std::string kMebibyte(1 << 20, '\x01');
const std::string kMebibyteValue = std::string("\x0A\x80\x80\x40") + kMebibyte;  // a raw_value of that length

const std::string kHugeSignal =
    frame(kBroadcast, kByteCode, std::string("\x0A\x80\x80\xC0\x07") + std::string(15 << 20, '\x01'));

std::string byteSignal(int value) {
    return frame(kBroadcast, kByteCode, {'\x0A', '\x01', static_cast<char>(value)});
}

std::string messageStatus(unsigned code, int status) {
    return frame(kBroadcast, code, {'\x08', static_cast<char>(status)});
}

using HostilePeer = DeskTest;

struct Misdeed {
    const char* what;
    std::string bytes;
    bool endsTheSession;
};

const Misdeed kMisdeeds[] = {
    {"text", "HTTP/1.1 400 Bad Request\r\n\r\n", true},
    {"no kind", frame(0, kByteCode, ""), true},
    {"unknown kind", frame(99, kByteCode, ""), true},
    {"a client's frame", frame(kSubscribe, 0, ""), true},
    {"longer than any frame", frame(kBroadcast, kByteCode, "", 0x7FFFFFFF), true},
    {"a topic longer than the frame", frame(kBroadcast, kByteCode, "abcd", 4, 5), true},
    {"an answer to nothing", frame(kReply, kByteCode, "answer"), false},
    {"unknown code", frame(kBroadcast, kUnknownCode, "\x0A\x01\x05"), false},
    {"unknown code, one MiB", frame(kBroadcast, kUnknownCode, kMebibyte), false},
    {"negative code", frame(kBroadcast, 0xFFFFFFFF, ""), false},
    {"a signal of no protobuf", frame(kBroadcast, kByteCode, std::string(40, '\xFF')), false},
    {"a signal of one MiB of no protobuf", frame(kBroadcast, kByteCode, std::string(1 << 20, '\xFF')), false},
    {"a signal of one MiB", frame(kBroadcast, kByteCode, kMebibyteValue), false},
    {"a signal that is cut off", frame(kBroadcast, kByteCode, "\x0A\x05\x01"), false},
    {"an empty signal", frame(kBroadcast, kByteCode, ""), false},
    {"an unknown status", messageStatus(kSmallMessage, 17), false},
    {"a status of one MiB", frame(kBroadcast, kLargeMessage, kMebibyteValue), false},
};

TEST_F(HostilePeer, AServiceThatSendsRubbishDoesNotStopAClient) {
    const auto watch = desk.watch(kByte + " BCM8_PASWorkCmd");  // the reverse line's level, which a subscribe reports
    const HostileService service(desk.directory());
    int value = 1;  // what the one MiB and the empty signal show differs from all of these
    const auto showsTheNext = [&](const RawSocket& client) {
        ++value;
        return client.write(byteSignal(value)) && waitForValue(*watch, kByte, value);
    };
    RawSocket client = service.accept();
    const long usual = watch->kibibytes();
    ASSERT_TRUE(client.write(kHugeSignal) && showsTheNext(client));
    if (!test::kSanitized) {
        EXPECT_LT(watch->kibibytes(), usual + kLittleKibibytes) << "the memory of a huge signal is given back";
    }
    for (const Misdeed& misdeed : kMisdeeds) {
        SCOPED_TRACE(misdeed.what);
        ASSERT_TRUE(client.write(misdeed.bytes));
        if (misdeed.endsTheSession) {
            ASSERT_TRUE(client.ends());
            client = service.accept();
        }
        ASSERT_TRUE(showsTheNext(client));
    }

    for (const std::size_t bytes : {7U, 17U}) {  // in the middle of the header, and of the payload
        ASSERT_TRUE(client.write(byteSignal(99).substr(0, bytes)));
        client = RawSocket(-1);
        client = service.accept();
    }
    ASSERT_TRUE(showsTheNext(client));
    for (const char byte : byteSignal(++value)) {
        ASSERT_TRUE(client.write({byte}));
    }
    ASSERT_TRUE(waitForValue(*watch, kByte, value));

    std::string changes;
    for (int i = 0; i < 1000; ++i) {
        changes += messageStatus(kSmallMessage, i % 2 == 0 ? 64 : 0);
    }
    for (int i = 0; i < test::scaled(50); ++i) {
        ASSERT_TRUE(client.write(changes));
    }
    ASSERT_TRUE(showsTheNext(client));
}

// The other way round: peers that begin frames and never end them.
TEST_F(HostilePeer, PeersWithHalfAFrameDoNotStopAService) {
    const auto simulator = desk.simulator();
    const auto watch = desk.watch(kWord);
    std::vector<RawSocket> peers;
    for (std::size_t bytes = 0; bytes < 64; ++bytes) {
        peers.emplace_back(serviceSocket(desk.directory()));
        ASSERT_TRUE(peers.back().write(frame(kSubscribe, 0, std::string(100, '\0')).substr(0, bytes)));
    }
    simulator->write(wordLine(1));
    EXPECT_TRUE(waitForValue(*watch, kWord, 1));
    peers.clear();
    simulator->write(wordLine(2));
    EXPECT_TRUE(waitForValue(*watch, kWord, 2));
}

TEST_F(HostilePeer, APeerOfManyTopicsDoesNotStopAService) {
    const auto simulator = desk.simulator();
    std::string topics = {'\xD0', '\x02', '\x19', '\x03', '\0', '\0'};  // every topic: this one is answered
    for (int i = 0; i < 300'000; ++i) {
        const std::string topic = std::to_string(1'000'000 + i);
        topics += {'\xD0', '\x02', '\x19', '\x03', static_cast<char>(topic.size()), '\0'};  // kByteCode, length
        topics += topic;
    }
    const RawSocket peer(serviceSocket(desk.directory()));
    ASSERT_TRUE(peer.write(frame(kSubscribe, 0, topics)));
    const auto watch = desk.watch(kWord);
    EXPECT_FALSE(peer.read().empty()) << "the session was ended instead";
}

}  // namespace
}  // namespace qvn::e2e

// The yardstick: the same frames over a bare unix stream socket, one thread at each end, one frame a read.
// The process forks: the child sends, the parent receives; --cpu is the receiver's processor, --sender-cpu the
// sender's.

#include "Measure.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace {

/// As large as the bus's frame of a byte signal: a header of 16 bytes, and the three of the message.
constexpr std::size_t kFrameBytes = 19;

int send(const bench::Options& options, bench::Shared& shared, int fd) {
    const bool paced = options.mode == "paced";
    char frame[kFrameBytes] = {};
    std::int64_t next = bench::nowNs();
    shared.startedNs = next;
    for (std::uint32_t i = 0; i < options.count; ++i) {
        std::memcpy(frame + kFrameBytes - 1, &i, 1);
        if (paced) {
            next += options.paceMicroseconds * 1000;
            bench::sleepUntil(next);
            shared.sentNs.store(bench::nowNs(), std::memory_order_relaxed);
        }
        if (write(fd, frame, kFrameBytes) != static_cast<ssize_t>(kFrameBytes)) {
            return 1;
        }
    }
    return 0;
}

int receive(const bench::Options& options, bench::Shared& shared, int fd) {
    bench::Receiver receiver(options, shared);
    char frame[kFrameBytes];
    for (;;) {
        std::size_t got = 0;
        while (got < kFrameBytes) {
            const ssize_t bytes = read(fd, frame + got, kFrameBytes - got);
            if (bytes <= 0) {
                std::fprintf(stderr, "yardstick: the sender ended early\n");
                return 1;
            }
            got += static_cast<std::size_t>(bytes);
        }
        if (receiver.arrived()) {
            receiver.print("yardstick");
            return 0;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Options options = bench::parseOptions(argc, argv);
    bench::Shared& shared = bench::mapShared(options.shared);
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) {
        std::perror("socketpair");
        return 1;
    }
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        bench::pin(options.senderProcessor);
        return send(options, shared, ends[1]);
    }
    close(ends[1]);
    bench::pin(options.processor);
    const int result = receive(options, shared, ends[0]);
    waitpid(child, nullptr, 0);
    return result;
}

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "e2e/Process.h"
#include "e2e/WatchOutput.h"

namespace qvn::e2e {
namespace {

constexpr int kValues = 20000;  // of which a pipe and the tools hold a part only

/// A reader of standard output that has stopped, until it is asked to read.
class StoppedReader {
public:
    StoppedReader(const Desk& desk, const std::string& name) : path_(desk.directory() + "/" + name) {
        mkfifo(path_.c_str(), 0600);
        fd_ = open(path_.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    }
    ~StoppedReader() { close(fd_); }
    StoppedReader(const StoppedReader&) = delete;
    StoppedReader& operator=(const StoppedReader&) = delete;

    std::unique_ptr<Process> start(const Desk& desk, const std::string& command) const {
        const Process::Environment environment{{"QVN_HOST_DIR", desk.directory()}};
        return std::make_unique<Process>(std::vector<std::string>{"/bin/sh", "-c", "exec " + command + " >" + path_},
                                         environment);
    }

    bool isFull() const {
        for (int attempt = 0; attempt < kDeadlineSeconds * 100; ++attempt) {
            pollfd writable{fd_, POLLOUT, 0};
            if (poll(&writable, 1, 0) == 0) {
                return true;
            }
            poll(nullptr, 0, 10);
        }
        return false;
    }

    /// Reads on until the text comes, and returns everything.
    std::string readUntil(const std::string& text) const {
        std::string all;
        char buffer[4096];
        pollfd readable{fd_, POLLIN, 0};
        while (all.find(text) == std::string::npos && poll(&readable, 1, kDeadlineSeconds * 1000) > 0) {
            all.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(read(fd_, buffer, sizeof buffer), 0)));
        }
        return all;
    }

private:
    std::string path_;
    int fd_ = -1;
};

void flood(const Process& simulator) {
    std::string lines;
    for (int value = 1; value <= kValues; ++value) {
        lines += wordLine(value);
    }
    simulator.write(lines);
}

TEST(Output, AReaderThatStopsHoldsUpNeitherClientsNorTheEnd) {
    const Desk desk;
    const StoppedReader journal(desk, "journal");
    const auto simulator = journal.start(desk, std::string(QVN_SIMULATOR) + " -v");
    ASSERT_EQ(desk.runVehiclectl({"get", kWord, "--timeout", "20"}).exitCode, 0);
    const StoppedReader screen(desk, "screen");
    const auto watch = screen.start(desk, std::string(QVN_VEHICLECTL) + " watch " + kWord);
    const StoppedReader other(desk, "other");
    const auto timed = other.start(desk, std::string(QVN_VEHICLECTL) + " watch --duration 2");
    flood(*simulator);
    EXPECT_TRUE(journal.isFull());
    EXPECT_TRUE(screen.isFull());

    const auto set = desk.runVehiclectl(
        {"set", "HUT6_CarMdlDispCmd", "1", "--wait-for", "HAP_FD2_CarMdlDispSts=1", "--timeout", "20"});
    EXPECT_EQ(set.exitCode, 0) << set.errors;
    EXPECT_NE(screen.readUntil(shown(kWord, kValues)).find(shown(kWord, kValues)), std::string::npos)
        << "the newest is kept";
    EXPECT_EQ(timed->wait(), 0) << "its time is over";

    flood(*simulator);
    EXPECT_TRUE(screen.isFull());
    for (Process* const process : {watch.get(), simulator.get()}) {
        process->signal(SIGTERM);
        EXPECT_EQ(process->wait(), 0);
        EXPECT_NE(process->errors().find(" lines were left out\n"), std::string::npos) << process->errors();
    }
}

TEST(Output, AFullDiskIsAnError) {
    const Desk desk;
    const auto simulator = desk.simulator();
    const std::string trace = desk.file("a.trace", "(0) BCM1_DrvDoorSts=1\n");
    const std::string commands[] = {
        std::string(QVN_VEHICLECTL) + " list",
        std::string(QVN_VEHICLECTL) + " --help",
        std::string(QVN_VEHICLECTL) + " get BCM1_DrvDoorSts",
        std::string(QVN_VEHICLECTL) + " watch",
        std::string(QVN_SIMULATOR) + " --list",
        std::string(QVN_SIMULATOR) + " --name other --exit-at-end --play " + trace,
    };
    for (const std::string& command : commands) {
        const auto result = desk.run({"/bin/sh", "-c", "exec " + command + " >/dev/full"});
        EXPECT_EQ(result.exitCode, 1) << command;
        EXPECT_NE(result.errors.find(": cannot write standard output: No space left on device\n"), std::string::npos)
            << command << ": " << result.errors;
    }
}

TEST(Output, NothingIsLostOnTheWayToAReaderThatIsLate) {
    const Desk desk;
    const StoppedReader reader(desk, "list");
    const std::string command = std::string(QVN_VEHICLECTL) + " list --json";
    const auto lists = reader.start(desk, "/bin/sh -c 'for i in 1 2 3 4 5 6; do " + command + "; done; echo end'");
    EXPECT_TRUE(reader.isFull());
    const std::string text = reader.readUntil("end\n");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6 * 235 + 1);
    EXPECT_EQ(lists->wait(), 0);
    EXPECT_EQ(lists->errors(), "");
}

}  // namespace
}  // namespace qvn::e2e

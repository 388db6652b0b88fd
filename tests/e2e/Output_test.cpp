#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "e2e/Desk.h"
#include "e2e/WatchOutput.h"

namespace qvn::e2e {
namespace {

constexpr int kValues = 20000;  // of which a pipe and the tools hold a part only

using Output = DeskTest;

/// A reader of standard output that has stopped, until it is asked to read.
class StoppedReader {
public:
    explicit StoppedReader(std::string path) : mPath(std::move(path)) {
        mkfifo(mPath.c_str(), 0600);
        mFd = open(mPath.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    }
    ~StoppedReader() { close(mFd); }
    StoppedReader(const StoppedReader&) = delete;
    StoppedReader& operator=(const StoppedReader&) = delete;

    const std::string& path() const { return mPath; }

    bool isFull() const {
        for (int attempt = 0; attempt < kDeadlineSeconds * 100; ++attempt) {
            pollfd writable{mFd, POLLOUT, 0};
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
        pollfd readable{mFd, POLLIN, 0};
        while (all.find(text) == std::string::npos && poll(&readable, 1, kDeadlineSeconds * 1000) > 0) {
            all.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(read(mFd, buffer, sizeof buffer), 0)));
        }
        return all;
    }

private:
    std::string mPath;
    int mFd = -1;
};

TEST_F(Output, AReaderThatStopsHoldsUpNeitherClientsNorTheEnd) {
    const StoppedReader journal(desk.directory() + "/journal");
    const auto simulator = desk.start("can-service-sim -v >" + journal.path());
    ASSERT_EQ(desk.run("vehiclectl get " + kWord + " --timeout 20").exitCode, 0);
    const StoppedReader screen(desk.directory() + "/screen");
    const auto watch = desk.start("vehiclectl watch " + kWord + " >" + screen.path());
    const StoppedReader other(desk.directory() + "/other");
    const auto timed = desk.start("vehiclectl watch --duration 2 >" + other.path());
    simulator->write(wordLines(1, kValues));
    EXPECT_TRUE(journal.isFull());
    EXPECT_TRUE(screen.isFull());

    const auto set = desk.run("vehiclectl set HUT6_CarMdlDispCmd 1 --wait-for HAP_FD2_CarMdlDispSts=1 --timeout 20");
    EXPECT_EQ(set.exitCode, 0) << set.errors;
    const std::string newest = shown(kWord, std::to_string(kValues));
    EXPECT_NE(screen.readUntil(newest).find(newest), std::string::npos) << "the newest is kept";
    EXPECT_EQ(timed->wait(), 0) << "its time is over";

    simulator->write(wordLines(1, kValues));
    EXPECT_TRUE(screen.isFull());
    for (Process* const process : {watch.get(), simulator.get()}) {
        process->signal(SIGTERM);
        EXPECT_EQ(process->wait(), 0);
        EXPECT_NE(process->errors().find(" lines were left out\n"), std::string::npos) << process->errors();
    }
}

TEST_F(Output, AFullDiskIsAnError) {
    const auto simulator = desk.simulator();
    const std::string trace = desk.file("a.trace", "(0) BCM1_DrvDoorSts=1\n");
    for (const std::string& command :
         {std::string("vehiclectl list"), std::string("vehiclectl --help"), "vehiclectl get " + kByte,
          std::string("vehiclectl watch"), std::string("can-service-sim --list"),
          "can-service-sim --name other --exit-at-end --play " + trace}) {
        const auto result = desk.run(command + " >/dev/full");
        EXPECT_EQ(result.exitCode, 1) << command;
        EXPECT_NE(result.errors.find(": cannot write standard output: No space left on device\n"), std::string::npos)
            << command << ": " << result.errors;
    }
    const std::string list = desk.directory() + "/list";
    const auto limited = desk.run("sh -c 'ulimit -f 9; exec vehiclectl list --json' >" + list);
    EXPECT_EQ(limited.errors, "vehiclectl: cannot write standard output: File too large\n");
    EXPECT_EQ(desk.run("tail -c 2 " + list).output, "}\n") << "a whole object";
}

TEST_F(Output, ThatIsClosedIsAnErrorAndTakesNothingElsesPlace) {
    const auto result = desk.run("vehiclectl list >&-");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "vehiclectl: cannot write standard output: Bad file descriptor\n");
}

TEST_F(Output, NothingIsLostOnTheWayToAReaderThatIsLate) {
    const StoppedReader reader(desk.directory() + "/list");
    const auto lists =
        desk.start("sh -c 'for i in 1 2 3 4 5 6; do vehiclectl list --json; done; echo end' >" + reader.path());
    EXPECT_TRUE(reader.isFull());
    const std::string text = reader.readUntil("end\n");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6 * 235 + 1);
    EXPECT_EQ(lists->wait(), 0);
    EXPECT_EQ(lists->errors(), "");
}

TEST_F(Output, AReaderThatGoesAwayEndsAWatchQuietly) {
    const auto simulator = desk.simulator();
    const auto result = desk.run("vehiclectl watch | head -n 1");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 1);
    EXPECT_EQ(result.errors.find("vehiclectl:"), std::string::npos) << result.errors;
}

}  // namespace
}  // namespace qvn::e2e

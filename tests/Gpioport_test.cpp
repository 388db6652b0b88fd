#include <gpioport/gpioport_client.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <list>
#include <string>
#include <thread>
#include <vector>

#include "support/HostDir.h"
#include "support/Journal.h"
#include "support/Resources.h"

namespace fs = std::filesystem;

namespace {

constexpr int kLine = 87;
constexpr int kRising = 1;
constexpr int kFalling = 2;
constexpr int kBothEdges = 3;

using Levels = std::vector<int>;

/// Records the level of the line at each interrupt, then does what the test asks for.
struct Recorder {
    explicit Recorder(int lineNumber = kLine) : line(lineNumber) {}

    static void interrupt(void* context) {
        auto* self = static_cast<Recorder*>(context);
        const int level = gpioport_get_inout_value(self->line);
        if (self->during) {
            self->during();
        }
        self->thread = std::this_thread::get_id();
        self->levels.add(level);
    }

    const int line;
    std::function<void()> during;
    std::atomic<std::thread::id> thread{std::thread::id()};
    qvn::test::Journal<int> levels;
};

class Gpioport : public testing::Test {
protected:
    ~Gpioport() override { EXPECT_EQ(gpioport_exit(), 0); }

    fs::path file(int line = kLine) const { return mHost.path() / "gpio" / std::to_string(line); }
    void drive(const std::string& text, int line = kLine) { writeFile(file(line), text); }
    /// A file that can become the line's without a descriptor.
    void prepare(const std::string& text) { writeFile(file().parent_path() / "next", text); }
    void driveAsPrepared() { fs::rename(file().parent_path() / "next", file()); }

    Recorder& watch(int mode, int line = kLine) {
        Recorder& recorder = mRecorders.emplace_back(line);
        EXPECT_EQ(gpioport_irq_func_register(line, mode, Recorder::interrupt, &recorder), 0);
        return recorder;
    }
    /// Returns when the callbacks of every earlier change have run: the port works in batches.
    void settle() {
        for (int batch = 0; batch < 3; ++batch) {
            ASSERT_EQ(gpioport_irq_func_register(kMarker, kBothEdges, Recorder::interrupt, &mMarker), 0);
            drive(gpioport_get_inout_value(kMarker) == 0 ? "1" : "0", kMarker);
            ASSERT_TRUE(mMarker.levels.waitForSize(++mMarkers));
        }
    }

    HostDir mHost;

private:
    static constexpr int kMarker = 1000;
    Recorder mMarker{kMarker};
    std::size_t mMarkers = 0;
    std::list<Recorder> mRecorders;
};

}  // namespace

TEST_F(Gpioport, ReadsTheLevelFromTheLineFile) {
    EXPECT_EQ(gpioport_get_inout_value(kLine), 1) << "no file, no directory";
    const struct {
        const char* text;
        int level;
    } cases[] = {{"0", 0},  {"1", 1},   {"0\n", 0}, {"1\n", 1},   {"", -1},    {"\n", -1},
                 {"2", -1}, {"00", -1}, {"0 ", -1}, {"01\n", -1}, {"low", -1}, {"-1", -1}};
    for (const auto& c : cases) {
        drive(c.text);
        EXPECT_EQ(gpioport_get_inout_value(kLine), c.level) << c.text;
    }
    fs::create_directories(file(5));
    EXPECT_LT(gpioport_get_inout_value(5), 0);
    EXPECT_LT(gpioport_get_inout_value(-1), 0);
}

TEST_F(Gpioport, CallsBackOnTheEdgesOfItsMode) {
    ASSERT_EQ(gpioport_request(0), 0);
    Recorder& both = watch(kBothEdges);
    Recorder& rising = watch(kRising);
    Recorder& falling = watch(kFalling);
    Recorder& otherLine = watch(kBothEdges, 88);
    Recorder& replaced = watch(kBothEdges);
    ASSERT_EQ(gpioport_irq_func_register(kLine, kRising, Recorder::interrupt, &replaced), 0);
    drive("0");
    settle();
    drive("1\n");
    settle();
    prepare("0");
    driveAsPrepared();
    settle();
    fs::remove(file());
    settle();
    EXPECT_EQ(both.levels.entries(), (Levels{0, 1, 0, 1}));
    EXPECT_EQ(rising.levels.entries(), (Levels{1, 1}));
    EXPECT_EQ(falling.levels.entries(), (Levels{0, 0}));
    EXPECT_EQ(otherLine.levels.entries(), Levels{});
    EXPECT_EQ(replaced.levels.entries(), (Levels{1, 1})) << "by the later registration of the same context";
    EXPECT_NE(both.thread.load(), std::this_thread::get_id());
    EXPECT_EQ(both.thread.load(), rising.thread.load());
}

TEST_F(Gpioport, IgnoresWritesThatChangeNothing) {
    drive("0");
    Recorder& recorder = watch(kBothEdges);
    drive("0");
    drive("0\n");
    drive("garbage");
    settle();
    std::ofstream rewriting(file(), std::ios::trunc);
    settle();
    rewriting << "0";
    rewriting.close();
    settle();
    EXPECT_EQ(recorder.levels.entries(), Levels{}) << "what is no level is no edge either";
    drive("garbage");
    Recorder& late = watch(kBothEdges);
    drive("1");
    EXPECT_EQ(recorder.levels.atLeast(1), (Levels{1}));
    EXPECT_EQ(late.levels.atLeast(1), (Levels{1})) << "the first level that it can read counts as an edge";
}

TEST_F(Gpioport, RefusesUnusableArguments) {
    int context = 0;
    EXPECT_NE(gpioport_irq_func_register(-1, kBothEdges, Recorder::interrupt, &context), 0);
    EXPECT_NE(gpioport_irq_func_register(kLine, 0, Recorder::interrupt, &context), 0);
    EXPECT_NE(gpioport_irq_func_register(kLine, 4, Recorder::interrupt, &context), 0);
    EXPECT_NE(gpioport_irq_func_register(kLine, kBothEdges, nullptr, &context), 0);
}

TEST_F(Gpioport, ARuntimeDirectoryThatIsMendedIsUsed) {
    drive("1");
    fs::permissions(mHost.path(), fs::perms(0755));
    const std::string log = qvn::test::logOf([this] {
        Recorder& recorder = watch(kBothEdges);
        drive("0");
        EXPECT_TRUE(qvn::test::isIdle());
        EXPECT_EQ(recorder.levels.entries(), Levels{});
        fs::permissions(mHost.path(), fs::perms(0700));
        EXPECT_EQ(recorder.levels.atLeast(1), (Levels{0}));
    });
    const std::string complaint = " is open to other users; run: chmod 700 " + mHost.path().string() + "; trying again";
    EXPECT_EQ(qvn::test::count(log, " gpioport: the directory " + mHost.path().string() + complaint), 1U) << log;
}

TEST_F(Gpioport, RecoversWhenTheDirectoryIsMadeAgain) {
    Recorder& recorder = watch(kBothEdges);
    drive("0");
    EXPECT_EQ(recorder.levels.atLeast(1), (Levels{0}));
    fs::remove_all(mHost.path());
    EXPECT_EQ(recorder.levels.atLeast(2), (Levels{0, 1})) << "no file: released";
    drive("0");
    EXPECT_EQ(recorder.levels.atLeast(3), (Levels{0, 1, 0}));
}

TEST_F(Gpioport, SeesAnEdgeLaterThatNoDescriptorWasLeftFor) {
    Recorder& recorder = watch(kBothEdges);
    prepare("0");
    settle();
    {
        const qvn::test::NoMoreDescriptors shortage;
        driveAsPrepared();
        EXPECT_TRUE(qvn::test::isIdle());
        EXPECT_EQ(gpioport_get_inout_value(kLine), -1);
    }
    EXPECT_EQ(recorder.levels.atLeast(1), (Levels{0}));
}

TEST_F(Gpioport, MayBeOpenedWhileNoDescriptorIsLeft) {
    drive("1");
    prepare("0");
    const std::string log = qvn::test::logOf([this] {
        auto shortage = std::make_unique<qvn::test::NoMoreDescriptors>();
        Recorder& forgotten = watch(kFalling);
        EXPECT_EQ(gpioport_exit(), 0) << "nor does it keep the port from closing";
        Recorder& recorder = watch(kFalling);
        driveAsPrepared();
        EXPECT_TRUE(qvn::test::isIdle());
        shortage.reset();
        EXPECT_EQ(recorder.levels.atLeast(1), (Levels{0}));
        drive("1");
        settle();
        drive("0");
        EXPECT_EQ(recorder.levels.atLeast(2), (Levels{0, 0}));
        EXPECT_EQ(forgotten.levels.entries(), Levels{});
    });
    const char* const complaint = " gpioport: cannot watch the GPIO lines: Too many open files; trying again\n";
    EXPECT_NE(log.find(complaint), std::string::npos) << log;
    EXPECT_LE(qvn::test::count(log, complaint), 2U) << "once for each time that it was opened";
}

TEST_F(Gpioport, ForgetsRegistrationsOnExitAndLeavesNoDescriptorBehind) {
    const std::size_t before = qvn::test::openDescriptors();
    for (int round = 0; round < 3; ++round) {
        drive("1");
        Recorder& recorder = watch(kBothEdges);
        drive("0");
        EXPECT_EQ(recorder.levels.atLeast(1), (Levels{0}));
        settle();
        ASSERT_EQ(gpioport_exit(), 0);
        ASSERT_EQ(gpioport_exit(), 0);
        EXPECT_EQ(qvn::test::openDescriptors(), before);
        recorder.during = [] { ADD_FAILURE() << "it is forgotten"; };
    }
}

TEST_F(Gpioport, IsLeftAloneByAChildThatEnds) {
    Recorder& recorder = watch(kBothEdges);
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        const bool leftAlone = gpioport_exit() == 0 && gpioport_request(0) != 0 && gpioport_exit() == 0;
        _exit(leftAlone ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    drive("0");
    EXPECT_EQ(recorder.levels.atLeast(1), (Levels{0}));
}

TEST_F(Gpioport, MayBeClosedAndOpenedInsideACallback) {
    Recorder& once = watch(kBothEdges);
    once.during = [] { EXPECT_EQ(gpioport_exit(), 0); };
    drive("0");
    EXPECT_EQ(once.levels.atLeast(1), (Levels{0}));

    Recorder& again = watch(kBothEdges);
    again.during = [&again] {
        EXPECT_EQ(gpioport_exit(), 0);
        EXPECT_EQ(gpioport_request(0), 0);
        EXPECT_EQ(gpioport_irq_func_register(kLine, kBothEdges, Recorder::interrupt, &again), 0);
    };
    drive("1");
    EXPECT_EQ(again.levels.atLeast(1), (Levels{1}));
    drive("0");
    EXPECT_EQ(again.levels.atLeast(2), (Levels{1, 0}));
    settle();
    EXPECT_EQ(once.levels.entries(), (Levels{0}));
}

TEST_F(Gpioport, RunsNoCallbackAfterExitHasReturned) {
    struct Busy {
        static void interrupt(void* context) {
            auto* self = static_cast<Busy*>(context);
            self->inside = true;
            gpioport_get_inout_value(kLine);
            if (++self->calls % 5 == 0) {
                gpioport_exit();
            }
            self->inside = false;
        }
        std::atomic<bool> inside{false};
        std::atomic<int> calls{0};
    } busy;
    std::atomic<bool> done{false};
    std::thread driver([&] {
        for (bool low = true; !done; low = !low) {
            drive(low ? "0" : "1");
        }
    });
    std::thread otherUser([&] {
        while (!done) {
            gpioport_request(0);
            gpioport_exit();
        }
    });
    for (int round = 0; round < 40; ++round) {
        EXPECT_EQ(gpioport_irq_func_register(kLine, kBothEdges, Busy::interrupt, &busy), 0);
        const int before = busy.calls;
        for (int turn = 0; turn < 100 && busy.calls == before; ++turn) {
            std::this_thread::yield();
        }
        EXPECT_EQ(gpioport_exit(), 0);
        EXPECT_FALSE(busy.inside);
    }
    done = true;
    driver.join();
    otherUser.join();
}

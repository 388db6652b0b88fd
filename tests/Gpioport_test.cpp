#include <gpioport/gpioport_client.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/HostDir.h"

namespace fs = std::filesystem;

namespace {

constexpr int kLine = 87;
constexpr int kRising = 1;
constexpr int kFalling = 2;
constexpr int kBothEdges = 3;

/** Records the level of the line at each interrupt, then does what the test asks for. */
class Recorder {
public:
    explicit Recorder(int line = kLine) : line_(line) {}

    static void interrupt(void* context) {
        auto* self = static_cast<Recorder*>(context);
        const int level = gpioport_get_inout_value(self->line_);
        if (self->during) {
            self->during();
        }
        const std::lock_guard<std::mutex> lock(self->mutex_);
        self->levels_.push_back(level);
        self->thread_ = std::this_thread::get_id();
        self->changed_.notify_all();
    }

    /** The levels recorded once there are that many; fewer when the deadline came first. */
    std::vector<int> levels(std::size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(20), [&] { return levels_.size() >= count; });
        return levels_;
    }

    std::thread::id thread() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return thread_;
    }

    std::function<void()> during;

private:
    const int line_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<int> levels_;
    std::thread::id thread_;
};

class Gpioport : public testing::Test {
protected:
    ~Gpioport() override { EXPECT_EQ(gpioport_exit(), 0); }

    fs::path file(int line = kLine) const { return host_.path() / "gpio" / std::to_string(line); }

    void drive(const std::string& text, int line = kLine) { writeFile(file(line), text); }

    Recorder& watch(int mode, int line = kLine) {
        Recorder& recorder = recorders_.emplace_back(line);
        EXPECT_EQ(gpioport_irq_func_register(line, mode, Recorder::interrupt, &recorder), 0);
        return recorder;
    }

    /** Returns when the callbacks of every earlier change have run: the port works in batches. */
    void settle() {
        for (int batch = 0; batch < 3; ++batch) {
            ASSERT_EQ(gpioport_irq_func_register(kMarker, kBothEdges, Recorder::interrupt, &marker_), 0);
            drive(gpioport_get_inout_value(kMarker) == 0 ? "1" : "0", kMarker);
            ++markers_;
            ASSERT_EQ(marker_.levels(markers_).size(), markers_);
        }
    }

    HostDir host_;

private:
    static constexpr int kMarker = 1000;
    Recorder marker_{kMarker};
    std::size_t markers_ = 0;
    std::list<Recorder> recorders_;
};

using Levels = std::vector<int>;

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
    drive("0");
    settle();
    drive("1\n");
    settle();
    writeFile(host_.root() / "ready", "0");
    fs::rename(host_.root() / "ready", file());
    settle();
    fs::remove(file());
    settle();
    EXPECT_EQ(both.levels(4), (Levels{0, 1, 0, 1}));
    EXPECT_EQ(rising.levels(2), (Levels{1, 1}));
    EXPECT_EQ(falling.levels(2), (Levels{0, 0}));
    EXPECT_EQ(otherLine.levels(0), Levels{});
    EXPECT_NE(both.thread(), std::this_thread::get_id());
    EXPECT_EQ(both.thread(), rising.thread());
}

TEST_F(Gpioport, IgnoresWritesThatChangeNothing) {
    drive("0");
    Recorder& recorder = watch(kBothEdges);
    drive("0");
    drive("0\n");
    drive("garbage");
    settle();
    EXPECT_EQ(recorder.levels(0), Levels{});

    std::ofstream rewriting(file(), std::ios::trunc);
    settle();
    EXPECT_EQ(recorder.levels(0), Levels{}) << "a truncated file is no level";
    rewriting << "0";
    rewriting.close();
    settle();
    EXPECT_EQ(recorder.levels(0), Levels{});
    drive("1");
    EXPECT_EQ(recorder.levels(1), (Levels{1}));
}

TEST_F(Gpioport, ReplacesARegistrationOfTheSameContext) {
    Recorder& recorder = watch(kBothEdges);
    ASSERT_EQ(gpioport_irq_func_register(kLine, kRising, Recorder::interrupt, &recorder), 0);
    drive("0");
    settle();
    drive("1");
    settle();
    EXPECT_EQ(recorder.levels(1), (Levels{1}));
}

TEST_F(Gpioport, RefusesUnusableArguments) {
    int context = 0;
    EXPECT_NE(gpioport_irq_func_register(-1, kBothEdges, Recorder::interrupt, &context), 0);
    EXPECT_NE(gpioport_irq_func_register(kLine, 0, Recorder::interrupt, &context), 0);
    EXPECT_NE(gpioport_irq_func_register(kLine, 4, Recorder::interrupt, &context), 0);
    EXPECT_NE(gpioport_irq_func_register(kLine, kBothEdges, nullptr, &context), 0);
}

TEST_F(Gpioport, FailsWithALogLineWhenTheRuntimeDirectoryIsUnusable) {
    writeFile(host_.path(), "in the way");
    testing::internal::CaptureStderr();
    EXPECT_NE(gpioport_request(0), 0);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find(host_.path().string() + " is not a directory"), std::string::npos) << log;

    fs::remove(host_.path());
    EXPECT_EQ(gpioport_request(0), 0) << "a later request may succeed";
}

TEST_F(Gpioport, RecoversWhenTheDirectoryIsMadeAgain) {
    Recorder& recorder = watch(kBothEdges);
    drive("0");
    EXPECT_EQ(recorder.levels(1), (Levels{0}));
    fs::remove_all(host_.path());
    EXPECT_EQ(recorder.levels(2), (Levels{0, 1})) << "no file: released";
    drive("0");
    EXPECT_EQ(recorder.levels(3), (Levels{0, 1, 0}));
}

TEST_F(Gpioport, SeesAnEdgeLaterThatNoDescriptorWasLeftFor) {
    Recorder& recorder = watch(kBothEdges);
    const fs::path next = host_.path() / "gpio" / "next";
    writeFile(next, "0");
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit none{3, usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    fs::rename(next, file());
    for (int i = 0; i < 10000; ++i) {  // the port's thread tries meanwhile
        EXPECT_EQ(gpioport_get_inout_value(kLine), -1);
    }
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_EQ(recorder.levels(1), (Levels{0}));
}

TEST_F(Gpioport, MayBeOpenedWhileNoDescriptorIsLeft) {
    drive("1");
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit none{3, usual.rlim_max};
    const fs::path next = host_.path() / "gpio" / "next";
    writeFile(next, "0");
    testing::internal::CaptureStderr();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_EQ(gpioport_request(0), 0);
    Recorder& recorder = watch(kFalling);
    fs::rename(next, file());
    ASSERT_EQ(gpioport_exit(), 0) << "nor does it keep the port from closing";
    Recorder& another = watch(kFalling);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_EQ(another.levels(1), (Levels{0}));
    drive("1");
    settle();
    drive("0");
    EXPECT_EQ(another.levels(2), (Levels{0, 0}));
    EXPECT_EQ(recorder.levels(0), Levels{});
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("cannot watch the GPIO lines: Too many open files; trying again"), std::string::npos) << log;
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
    EXPECT_EQ(recorder.levels(1), (Levels{0}));
}

TEST_F(Gpioport, ForgetsRegistrationsOnExitAndOpensAgain) {
    Recorder& forgotten = watch(kBothEdges);
    ASSERT_EQ(gpioport_exit(), 0);
    ASSERT_EQ(gpioport_exit(), 0);
    Recorder& recorder = watch(kBothEdges);
    drive("0");
    EXPECT_EQ(recorder.levels(1), (Levels{0}));
    settle();
    EXPECT_EQ(forgotten.levels(0), Levels{});
}

TEST_F(Gpioport, MayBeClosedAndOpenedInsideACallback) {
    Recorder& once = watch(kBothEdges);
    once.during = [] { EXPECT_EQ(gpioport_exit(), 0); };
    drive("0");
    EXPECT_EQ(once.levels(1), (Levels{0}));

    Recorder& again = watch(kBothEdges);
    again.during = [&again] {
        EXPECT_EQ(gpioport_exit(), 0);
        EXPECT_EQ(gpioport_request(0), 0);
        EXPECT_EQ(gpioport_irq_func_register(kLine, kBothEdges, Recorder::interrupt, &again), 0);
    };
    drive("1");
    EXPECT_EQ(again.levels(1), (Levels{1}));
    drive("0");
    EXPECT_EQ(again.levels(2), (Levels{1, 0}));
    settle();
    EXPECT_EQ(once.levels(1), (Levels{0}));
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

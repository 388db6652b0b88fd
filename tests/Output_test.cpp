#include "desk/Output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>

#include "desk/WholeLines.h"
#include "support/Resources.h"

namespace qvn::tools {
namespace {

/// Standard output as a pipe that is read when the test wants to.
class OutputTest : public testing::Test {
protected:
    OutputTest() {
        EXPECT_EQ(pipe(mEnds), 0);
        std::fflush(stdout);
        dup2(mEnds[1], STDOUT_FILENO);
        close(mEnds[1]);
    }
    ~OutputTest() override {
        restore();
        close(mUsual);
        close(mEnds[0]);
    }
    /// Before the test says anything itself.
    void restore() const { dup2(mUsual, STDOUT_FILENO); }
    /// What waits in the pipe at this moment.
    std::string take() const {
        std::string text(1 << 20, 0);
        fcntl(mEnds[0], F_SETFL, O_NONBLOCK);
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(::read(mEnds[0], &text[0], text.size()), 0)));
        return text;
    }
    /// The same, and what is written meanwhile.
    std::string read() const {
        std::string text;
        for (std::string more = take(); !more.empty(); more = take()) {
            text += more;
        }
        return text;
    }

    StopSignals stop;

private:
    int mEnds[2] = {};
    const int mUsual = dup(STDOUT_FILENO);
};

TEST_F(OutputTest, CountsWhatAStoppedReaderDoesNotGetAndCutsNoLine) {
    constexpr int kLines = 5000;  // more than a pipe and what waits for it hold
    pid_t child = -1;
    int status = -1;
    const std::string complaint = test::logOf([&] {
        child = fork();
        if (child != 0) {
            waitpid(child, &status, 0);
            return;
        }
        // A process of its own, so that the thread that hangs in a write ends.
        std::string text;
        Output output(stop);
        for (int i = 0; i < kLines; ++i) {
            output.write(std::string(99, 'x') + "\n");
        }
        output.hurry();
        output.finish(&text);
        std::fputs(text.c_str(), stderr);
        _exit(0);
    });
    const std::string text = read();
    restore();
    EXPECT_EQ(status, 0);
    const auto shown = std::count(text.begin(), text.end(), '\n');
    EXPECT_GT(shown, 0);
    EXPECT_EQ(text.size(), static_cast<std::size_t>(shown) * 100) << "whole lines";
    EXPECT_EQ(complaint,
              "standard output was not read in time; " + std::to_string(kLines - shown) + " lines were left out");
}

TEST_F(OutputTest, APipeThatIsFullHoldsWholeLines) {
    std::string lines;
    while (lines.size() < 100'000) {
        lines += "16 bytes and end\n";
    }
    std::thread writer([&] { writeWholeLines(STDOUT_FILENO, lines); });
    pollfd writable{STDOUT_FILENO, POLLOUT, 0};
    while (poll(&writable, 1, 0) > 0) {
        std::this_thread::yield();
    }
    std::string text = take();
    const char last = text.back();
    while (text.size() < lines.size()) {
        text += read();
    }
    writer.join();
    restore();
    EXPECT_EQ(last, '\n');
    EXPECT_EQ(text, lines);
}

TEST_F(OutputTest, RestsWhenEverythingHasBeenWritten) {
    Output output(stop);
    output.write(std::string(10000, 'x') + "\nend\n");
    output.drain();
    const std::string text = read();
    restore();
    EXPECT_EQ(text, std::string(10000, 'x') + "\nend\n");
    EXPECT_TRUE(test::isIdle());
}

}  // namespace
}  // namespace qvn::tools

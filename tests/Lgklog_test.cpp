#include <gtest/gtest.h>
#include <lgklog/lgklog.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/HostDir.h"

namespace {

using Lines = std::vector<std::string>;

Lines linesOf(const std::filesystem::path& path) {
    Lines lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

/** The settings are read once a process, so every case logs in a process of its own; returns its stderr. */
Lines stderrOf(const char* level, const char* file, const std::function<void()>& log) {
    const HostDir host;
    const std::filesystem::path output = host.root() / "stderr";
    const pid_t child = ::fork();
    if (child == 0) {
        level != nullptr ? ::setenv("QVN_LOG_LEVEL", level, 1) : ::unsetenv("QVN_LOG_LEVEL");
        file != nullptr ? ::setenv("QVN_LOG_FILE", file, 1) : ::unsetenv("QVN_LOG_FILE");
        if (std::freopen(output.c_str(), "w", stderr) != nullptr) {
            log();
        }
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return linesOf(output);
}

/** The message texts alone, without time, level and thread; a line of another shape gives "?" and the line. */
Lines textsOf(const Lines& lines) {
    Lines texts;
    for (const std::string& line : lines) {
        int start = 0;
        std::sscanf(line.c_str(), "%*4d-%*2d-%*2d %*2d:%*2d:%*2d.%*3d %*[TDIWEC] %*d/%*d%n", &start);
        texts.push_back(start > 0 ? line.substr(static_cast<std::size_t>(start) + 1) : "?" + line);
    }
    return texts;
}

void logEveryLevel() {
    for (int level = 0; level <= 5; ++level) {
        lgklog_print(level, "level %d", level);
    }
}

}  // namespace

TEST(Lgklog, PrintsUpToTheLimit) {
    const std::string warning = "QVN_LOG_LEVEL is \"";
    const struct {
        const char* level;
        Lines expected;
    } cases[] = {
        {nullptr, {"level 0", "level 1"}},
        {"", {"level 0", "level 1"}},
        {"0", {"level 0"}},
        {"3", {"level 0", "level 1", "level 2", "level 3"}},
        {"5", {"level 0", "level 1", "level 2", "level 3", "level 4", "level 5"}},
        {"6", {warning + "6\", expected 0 to 5; using 1", "level 0", "level 1"}},
        {"-1", {warning + "-1\", expected 0 to 5; using 1", "level 0", "level 1"}},
        {"debug", {warning + "debug\", expected 0 to 5; using 1", "level 0", "level 1"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(textsOf(stderrOf(c.level, nullptr, logEveryLevel)), c.expected);
    }
}

TEST(Lgklog, MarksTheSeverityWithALetter) {
    const Lines lines = stderrOf("5", nullptr, logEveryLevel);
    std::string letters;
    for (const std::string& line : lines) {
        letters += line.at(std::string("2024-01-01 00:00:00.000 ").size());
    }
    EXPECT_EQ(letters, "CEWIDT");
}

TEST(Lgklog, PrintsOneLineAMessage) {
    const std::string longText(5000, 'x');
    const Lines texts = textsOf(stderrOf("1", nullptr, [&] {
        lgklog_print(1, "[%s][%d]with newline %d\n", "dispatch", 92, 7);
        lgklog_print(1, "without newline");
        lgklog_print(1, "two\nlines\r\n");
        lgklog_print(1, "100%% {} {0} %s", "%s");
        lgklog_print(1, "%s", longText.c_str());
        lgklog_print(-3, "more severe than 0");
    }));
    EXPECT_EQ(texts, (Lines{"[dispatch][92]with newline 7", "without newline", "two lines", "100% {} {0} %s", longText,
                            "more severe than 0"}));
}

TEST(Lgklog, ReturnsTheLengthOrZeroWhenOff) {
    stderrOf("1", nullptr, [] {
        EXPECT_EQ(lgklog_print(1, "%d\n", 123), 4);
        EXPECT_EQ(lgklog_print(2, "%d\n", 123), 0);
        EXPECT_EQ(lgklog_print(1, "%s", std::string(2000, 'x').c_str()), 2000);
    });
}

TEST(Lgklog, AppendsToTheFile) {
    const HostDir host;
    const std::string file = (host.root() / "head-unit.log").string();
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(stderrOf(nullptr, file.c_str(), [run] { lgklog_print(1, "run %d", run); }), Lines{});
    }
    EXPECT_EQ(textsOf(linesOf(file)), (Lines{"run 0", "run 1"}));
}

TEST(Lgklog, GoesOnWithStderrWhenTheFileIsUnwritable) {
    const Lines texts = textsOf(stderrOf(nullptr, "/proc/self/qvn/log", [] { lgklog_print(1, "still here"); }));
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].rfind("QVN_LOG_FILE: ", 0), 0U) << texts[0];
    EXPECT_NE(texts[0].find("/proc/self/qvn/log"), std::string::npos) << texts[0];
    EXPECT_EQ(texts[1], "still here");
}

TEST(Lgklog, KeepsLinesOfSeveralThreadsApart) {
    const Lines texts = textsOf(stderrOf("1", nullptr, [] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                for (int n = 0; n < 100; ++n) {
                    lgklog_print(1, "a line of %s", "some length");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }));
    EXPECT_EQ(texts, Lines(400, "a line of some length"));
}

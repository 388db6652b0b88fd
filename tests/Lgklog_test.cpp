#include <gtest/gtest.h>
#include <lgklog/lgklog.h>
#include <sys/stat.h>
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

/// The settings are read once a process, so every case logs in a process of its own; returns its stderr.
Lines stderrOf(const char* level, const char* file, const std::function<void()>& log) {
    const HostDir host;
    const std::filesystem::path output = host.root() / "stderr";
    const pid_t child = ::fork();
    if (child == 0) {
        level != nullptr ? ::setenv("QVN_LOG_LEVEL", level, 1) : 0;
        file != nullptr ? ::setenv("QVN_LOG_FILE", file, 1) : 0;
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

/// Each line as its level and its text, without time and thread; "?" and the line where it has another shape.
Lines messagesOf(const Lines& lines) {
    Lines messages;
    for (const std::string& line : lines) {
        int start = 0;
        char letter = 0;
        std::sscanf(line.c_str(), "%*4d-%*2d-%*2d %*2d:%*2d:%*2d.%*3d %c %*d/%*d%n", &letter, &start);
        messages.push_back(start > 0 ? letter + line.substr(static_cast<std::size_t>(start)) : "?" + line);
    }
    return messages;
}

}  // namespace

TEST(Lgklog, PrintsUpToTheLimit) {
    const Lines all = {"0 level 0", "1 level 1", "2 level 2", "3 level 3", "4 level 4", "5 level 5"};
    const struct {
        const char* limit;
        std::ptrdiff_t printed;
        const char* refused;
    } cases[] = {{nullptr, 2, nullptr}, {"", 2, nullptr}, {"0", 1, nullptr}, {"3", 4, nullptr},
                 {"5", 6, nullptr},     {"6", 2, "6"},    {"-1", 2, "-1"},   {"debug", 2, "debug"}};
    for (const auto& c : cases) {
        Lines expected(all.begin(), all.begin() + c.printed);
        if (c.refused != nullptr) {
            expected.insert(expected.begin(),
                            "2 QVN_LOG_LEVEL is \"" + std::string(c.refused) + "\", expected 0 to 5; using 1");
        }
        const Lines lines = stderrOf(c.limit, nullptr, [] {
            for (int level = 0; level <= 5; ++level) {
                lgklog_print(level, "level %d", level);
            }
        });
        EXPECT_EQ(messagesOf(lines), expected);
    }
}

TEST(Lgklog, PrintsOneLineAMessageAndReturnsItsLength) {
    const std::string longText(5000, 'x');
    const std::string buffer(512, 'b');  // its last character is one more than the buffer for short texts takes
    const Lines lines = stderrOf("1", nullptr, [&] {
        EXPECT_EQ(lgklog_print(1, "[%s][%d]with newline %d\n", "dispatch", 92, 7), 29);
        EXPECT_EQ(lgklog_print(2, "%d\n", 123), 0) << "its level is off";
        EXPECT_EQ(lgklog_print(1, "%s", ""), 0);
        lgklog_print(1, "without newline");
        lgklog_print(1, "two\nlines\r\n");
        lgklog_print(1, "100%% {} {0} %s", "%s");
        EXPECT_EQ(lgklog_print(1, "%s", longText.c_str()), 5000);
        EXPECT_EQ(lgklog_print(1, "%s", buffer.c_str()), 512);
        lgklog_print(-3, "more severe than 0");
    });
    EXPECT_EQ(messagesOf(lines), (Lines{"1 [dispatch][92]with newline 7", "1 ", "1 without newline", "1 two lines",
                                        "1 100% {} {0} %s", "1 " + longText, "1 " + buffer, "0 more severe than 0"}));
}

TEST(Lgklog, AppendsToTheFileOrGoesOnWithStderr) {
    const HostDir host;
    const std::string file = (host.root() / "head-unit.log").string();
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(stderrOf(nullptr, file.c_str(), [run] { lgklog_print(1, "run %d", run); }), Lines{});
    }
    EXPECT_EQ(messagesOf(linesOf(file)), (Lines{"1 run 0", "1 run 1"}));

    const std::string fifo = (host.root() / "fifo").string();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& unusable : {fifo, std::string("/proc/self/qvn/log")}) {
        const Lines messages = messagesOf(stderrOf(nullptr, unusable.c_str(), [] { lgklog_print(1, "still here"); }));
        ASSERT_EQ(messages.size(), 2U);
        EXPECT_EQ(messages[0].rfind("2 QVN_LOG_FILE: ", 0), 0U) << messages[0];
        EXPECT_NE(messages[0].find(unusable), std::string::npos) << messages[0];
        EXPECT_EQ(messages[1], "1 still here");
    }
}

TEST(Lgklog, KeepsLinesOfSeveralThreadsApart) {
    const Lines lines = stderrOf("1", nullptr, [] {
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
    });
    EXPECT_EQ(messagesOf(lines), Lines(400, "1 a line of some length"));
}

#include "log/Log.h"

#include <gtest/gtest.h>

#include "support/LogRecorder.h"

namespace {

using namespace qvn::test;

TEST(Log, SeveritiesBecomeLevels) {
    const int expected[] = {0, 1, 2, 3, 4, 5, 5};
    for (int severity = 0; severity <= 6; ++severity) {
        EXPECT_EQ(lgk::covertLogLevel(static_cast<lgk::LogLevel>(severity)), expected[severity]);
    }
}

TEST(Log, LinesStartWithFunctionAndLine) {
    log_recorder::reset();
    const int here = __LINE__ + 1;
    QVN_LOG(Info, "[%s][%d]door %d is %s", 3, "open");
    QVN_LOG_AT(Error, 40, "[%s][%d]done\n");
    const std::vector<LogLine> expected = {{3, "TestBody", here, "[%s][%d]door %d is %s", "door 3 is open"},
                                           {1, "TestBody", 40, "[%s][%d]done\n", "done\n"}};
    EXPECT_EQ(log_recorder::lines(), expected);
}

}  // namespace

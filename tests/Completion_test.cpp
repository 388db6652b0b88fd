#include "can-service-sim/console/Completion.h"

#include <gtest/gtest.h>

namespace qvn::tools {
namespace {

TEST(Completion, AddsWhatIsCertainAndKnowsWhatIsPossible) {
    const struct {
        const char* line;
        const char* common;
        std::size_t words;
    } cases[] = {
        {"see", "k", 1},
        {"show EPB1_EP", "BSts", 1},
        {"show sh", "", 0},
        {"reverse=", "", 2},
        {"(1.0) service=d", "own", 1},
        {"DCT5_TGS_LEVER=", "", 6},
        {"DCT5_TGS_LEVER=ra", "", 2},
        {"EPB1_EPBSts!f", "reeze", 1},
        {"EPB1!s", "ilence", 1},
        {"EPB1_EPBSts=1 ev", "ery", 1},
        {"nothing=", "", 0},
    };
    for (const auto& [line, common, words] : cases) {
        const Completion completion = completeLine(line, {"seek", "show"});
        EXPECT_EQ(completion.common(line), common) << line;
        EXPECT_EQ(completion.words.size(), words) << line;
    }
}

}  // namespace
}  // namespace qvn::tools

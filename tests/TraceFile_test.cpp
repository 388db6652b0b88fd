#include "vehiclectl/TraceFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <iterator>

#include "desk/BadInput.h"
#include "support/ErrorOf.h"
#include "support/HostDir.h"

namespace qvn::tools {
namespace {

class TraceFileTest : public testing::Test {
protected:
    std::string text() const {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    HostDir directory;
    const std::string path = (directory.root() / "drive.trace").string();
};

/// The most that a file may hold, for as long as this lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &usual_);
        const rlimit limit{bytes, usual_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &usual_); }

private:
    rlimit usual_{};
};

TEST_F(TraceFileTest, HoldsWholeLinesAtAnyMoment) {
    TraceFile file(path, false, "# first\n");
    file.append("(0.1) a\n(0.2) b\n");
    EXPECT_EQ(text(), "# first\n(0.1) a\n(0.2) b\n") << "at once";
    {
        const FileSizeLimit full(file.bytes() + 10);  // in the second line
        EXPECT_THROW(file.append("(0.3) c\n(0.4) d\n"), std::runtime_error);
    }
    EXPECT_EQ(text(), "# first\n(0.1) a\n(0.2) b\n(0.3) c\n");
}

TEST_F(TraceFileTest, ReplacesAFileOnlyWhenItCanBegin) {
    writeFile(path, "before\n");
    EXPECT_EQ(errorOf([&] { TraceFile(path, false, "# first\n"); }), path + " is there already; --force replaces it");
    {
        const FileSizeLimit full(4);
        EXPECT_THROW(TraceFile(path, true, "# first\n"), std::runtime_error);
    }
    EXPECT_EQ(text(), "before\n");
    TraceFile file(path, true, "# first\n");
    file.append("(0.1) a\n");
    EXPECT_EQ(text(), "# first\n(0.1) a\n");
    EXPECT_EQ(file.bytes(), text().size());
    EXPECT_NE(errorOf([] { TraceFile("/nonexistent/a.trace", true, ""); }).find("cannot write /nonexistent/a.trace"),
              std::string::npos);
}

}  // namespace
}  // namespace qvn::tools

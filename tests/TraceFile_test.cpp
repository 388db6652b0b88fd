#include "vehiclectl/TraceFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
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
        getrlimit(RLIMIT_FSIZE, &mUsual);
        const rlimit limit{bytes, mUsual.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &mUsual); }

private:
    rlimit mUsual{};
};

TEST_F(TraceFileTest, EndsWithAWholeLineWhenItIsFull) {
    TraceFile file(path, false, "# first\n");
    file.append("(0.1) a\n(0.2) b\n");
    EXPECT_EQ(text(), "# first\n(0.1) a\n(0.2) b\n") << "at once";
    std::string longer;
    for (int line = 100; line < 2000; ++line) {  // more than is written at once
        longer += "(0.3) " + std::to_string(line).substr(0, 3) + "\n";
    }
    constexpr std::size_t kFit = 12340;  // bytes, 10 a line
    const std::size_t most = file.bytes() + kFit;
    {
        const FileSizeLimit full(most + 4);
        EXPECT_THROW(file.append(longer), std::runtime_error);
    }
    EXPECT_EQ(text().size(), most);
    EXPECT_EQ(text().substr(most - 10), longer.substr(kFit - 10, 10));
    file.append("(0.4) c\n");
    EXPECT_EQ(text().substr(most), "(0.4) c\n");
}

TEST_F(TraceFileTest, ReplacesAFileOnlyWhenItCanBegin) {
    const std::string link = path + ".link";
    writeFile(path, "before\n");
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    std::filesystem::create_symlink(path, link);
    EXPECT_EQ(errorOf([&] { TraceFile(path, false, "# first\n"); }), path + " is there already; --force replaces it");
    {
        const FileSizeLimit full(4);
        EXPECT_THROW(TraceFile(path, true, "# first\n"), std::runtime_error);
        EXPECT_THROW(TraceFile(path + "2", false, "# first\n"), std::runtime_error);
    }
    EXPECT_EQ(text(), "before\n");
    TraceFile file(link, true, "# first\n");
    file.append("(0.1) a\n");
    EXPECT_EQ(text(), "# first\n(0.1) a\n");
    EXPECT_EQ(file.bytes(), text().size());
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
    const std::filesystem::directory_iterator all(directory.root());
    EXPECT_EQ(std::distance(begin(all), end(all)), 2) << "nothing else is left";
}

TEST_F(TraceFileTest, SaysWhatIsNoFile) {
    const std::string fifo = path + ".fifo";
    mkfifo(fifo.c_str(), 0600);
    const struct {
        std::string path, error;
    } cases[] = {{"/nonexistent/a.trace", "cannot write /nonexistent/a.trace: No such file or directory"},
                 {fifo, fifo + " is not a file; '-' writes to standard output"},
                 {directory.root(), directory.root().string() + " is not a file; '-' writes to standard output"},
                 {"/dev/null", "accepted"}};
    for (const auto& [name, error] : cases) {
        EXPECT_EQ(errorOf([&, &file = name] { TraceFile(file, true, "# first\n"); }), error);
    }
}

}  // namespace
}  // namespace qvn::tools

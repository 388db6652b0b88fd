#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>

#include "host/DirectoryWatch.h"
#include "host/RuntimeDir.h"
#include "host/ServiceSocket.h"
#include "support/HostDir.h"

namespace fs = std::filesystem;
using qvn::host::DirectoryWatch;

namespace {

constexpr int kDeadlineMs = 20000;

void setOrUnset(const char* name, const char* value) {
    if (value != nullptr) {
        ::setenv(name, value, 1);
    } else {
        ::unsetenv(name);
    }
}

mode_t modeOf(const fs::path& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

/** Collects changes until one satisfies the condition, or the deadline ends the test. */
bool eventually(DirectoryWatch& watch, const std::function<bool(const DirectoryWatch::Changes&)>& condition) {
    for (;;) {
        pollfd source = {watch.fd(), POLLIN, 0};
        if (::poll(&source, 1, kDeadlineMs) != 1) {
            return false;
        }
        if (condition(watch.drain())) {
            return true;
        }
    }
}

bool reports(DirectoryWatch& watch, const std::string& name) {
    return eventually(watch, [&](const DirectoryWatch::Changes& changes) {
        return std::count(changes.names.begin(), changes.names.end(), name) > 0;
    });
}

}  // namespace

TEST(RuntimeDir, FollowsTheEnvironment) {
    const std::string ofThisUser = "/tmp/qvn-" + std::to_string(::geteuid());
    const struct {
        const char* hostDir;
        const char* xdgRuntimeDir;
        std::string expected;
    } cases[] = {
        {"/srv/desk", "/run/user/1000", "/srv/desk"},
        {"/srv/desk//", nullptr, "/srv/desk"},
        {"/", nullptr, "/"},
        {nullptr, "/run/user/1000", "/run/user/1000/qvn"},
        {"", "/run/user/1000", "/run/user/1000/qvn"},
        {nullptr, nullptr, ofThisUser},
        {"", "", ofThisUser},
    };
    for (const auto& c : cases) {
        setOrUnset("QVN_HOST_DIR", c.hostDir);
        setOrUnset("XDG_RUNTIME_DIR", c.xdgRuntimeDir);
        EXPECT_EQ(qvn::host::runtimeDir(), c.expected);
    }
    ::unsetenv("QVN_HOST_DIR");
}

TEST(RuntimeDir, IsMadeForItsUserOnlyWithMissingParents) {
    const HostDir host;
    const fs::path deep = host.path() / "a" / "b";
    ::setenv("QVN_HOST_DIR", deep.c_str(), 1);
    ::umask(0);
    std::string error;
    ASSERT_TRUE(qvn::host::ensureRuntimeDir(&error)) << error;
    EXPECT_EQ(modeOf(deep), 0700U);
    EXPECT_EQ(modeOf(host.path()), 0700U);
    EXPECT_TRUE(qvn::host::ensureRuntimeDir(nullptr)) << "a second time";
    EXPECT_TRUE(qvn::host::ensureRuntimeSubdir("gpio", &error)) << error;
    EXPECT_TRUE(fs::is_directory(deep / "gpio"));
}

TEST(RuntimeDir, RefusesWhatOthersCouldReach) {
    const struct {
        const char* what;
        std::function<void(const fs::path&)> prepare;
        const char* message;
    } cases[] = {
        {"readable by others", [](const fs::path& p) { ::mkdir(p.c_str(), 0700), ::chmod(p.c_str(), 0755); },
         "is open to other users; run: chmod 700 "},
        {"writable by the group", [](const fs::path& p) { ::mkdir(p.c_str(), 0700), ::chmod(p.c_str(), 0720); },
         "is open to other users; run: chmod 700 "},
        {"closed to its owner", [](const fs::path& p) { ::mkdir(p.c_str(), 0700), ::chmod(p.c_str(), 0500); },
         "is closed to its owner; run: chmod 700 "},
        {"a file", [](const fs::path& p) { writeFile(p, ""); }, "is not a directory"},
        {"a symbolic link",
         [](const fs::path& p) {
             fs::create_directory(p.parent_path() / "elsewhere");
             fs::create_directory_symlink("elsewhere", p);
         },
         "is not a directory (symbolic links are refused)"},
    };
    for (const auto& c : cases) {
        const HostDir host;
        c.prepare(host.path());
        std::string error;
        EXPECT_FALSE(qvn::host::ensureRuntimeDir(&error)) << c.what;
        EXPECT_NE(error.find(c.message), std::string::npos) << error;
        EXPECT_NE(error.find(host.path().string()), std::string::npos) << error;
    }
}

TEST(RuntimeDir, RefusesTheFolderOfAnotherUser) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give a folder away";
    }
    const HostDir host;
    ASSERT_EQ(::mkdir(host.path().c_str(), 0700), 0);
    ASSERT_EQ(::chown(host.path().c_str(), 65534, 65534), 0);
    std::string error;
    EXPECT_FALSE(qvn::host::ensureRuntimeDir(&error));
    EXPECT_NE(error.find("belongs to another user"), std::string::npos) << error;
}

TEST(RuntimeDir, NamesThePlaceThatCannotBeMade) {
    ::setenv("QVN_HOST_DIR", "/proc/self/qvn/run", 1);
    std::string error;
    EXPECT_FALSE(qvn::host::ensureRuntimeDir(&error));
    EXPECT_EQ(error.rfind("cannot make the directory /proc/self/qvn/run: ", 0), 0U) << error;
    EXPECT_NE(error.find("set QVN_HOST_DIR"), std::string::npos) << error;
    ::unsetenv("QVN_HOST_DIR");
}

TEST(ServiceSocket, HasAPathThatFits) {
    const std::string longest(sizeof(sockaddr_un::sun_path) - 1 - std::string("/x.sock").size(), 'd');
    std::string path, error;
    ::setenv("QVN_HOST_DIR", ("/" + longest.substr(1)).c_str(), 1);
    EXPECT_TRUE(qvn::host::serviceSocketPath("x", &path, &error)) << error;
    EXPECT_EQ(path, "/" + longest.substr(1) + "/x.sock");
    EXPECT_FALSE(qvn::host::serviceSocketPath("xx", &path, &error));
    EXPECT_EQ(error, "the path /" + longest.substr(1) +
                         "/xx.sock is longer than the 107 bytes that a socket's may have; "
                         "set QVN_HOST_DIR to a folder with a shorter path");
    EXPECT_EQ(qvn::host::serviceHolder("xx"), 0);
    EXPECT_EQ(errno, ENAMETOOLONG);
    ::unsetenv("QVN_HOST_DIR");
}

TEST(ServiceSocket, IsHeldByTheProcessThatListens) {
    const HostDir host;
    fs::create_directories(host.path());
    EXPECT_EQ(qvn::host::serviceHolder("x"), 0);
    EXPECT_EQ(errno, ENOENT);
    std::string path;
    sockaddr_un address;
    ASSERT_TRUE(qvn::host::serviceSocketPath("x", &path, nullptr) && qvn::host::socketAddress(path, &address));
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listener, 1), 0);
    EXPECT_EQ(qvn::host::serviceHolder("x"), ::getpid());
    ::close(listener);
    EXPECT_EQ(qvn::host::serviceHolder("x"), 0);
    EXPECT_EQ(errno, ECONNREFUSED) << "a socket file that a process has left behind";
}

TEST(DirectoryWatch, ReportsNamesThatComeChangeAndGo) {
    const HostDir host;
    fs::create_directories(host.path());
    writeFile(host.root() / "outside", "1");
    DirectoryWatch watch;
    ASSERT_TRUE(watch.open(host.path()));
    EXPECT_TRUE(watch.present());
    EXPECT_TRUE(watch.drain().names.empty());

    writeFile(host.path() / "made", "1");
    EXPECT_TRUE(reports(watch, "made"));
    fs::rename(host.root() / "outside", host.path() / "moved");
    EXPECT_TRUE(reports(watch, "moved"));
    watch.drain();
    writeFile(host.path() / "made", "0");
    EXPECT_TRUE(reports(watch, "made"));
    watch.drain();
    fs::remove(host.path() / "made");
    EXPECT_TRUE(reports(watch, "made"));
}

TEST(DirectoryWatch, FollowsADirectoryThatIsRemovedAndMadeAgain) {
    const HostDir host;
    const fs::path directory = host.path() / "gpio";
    fs::create_directories(directory);
    DirectoryWatch watch;
    ASSERT_TRUE(watch.open(directory));
    for (int round = 0; round < 3; ++round) {
        fs::remove_all(host.path());
        ASSERT_TRUE(eventually(watch, [](const auto& changes) { return changes.directoryGone; }));
        EXPECT_FALSE(watch.present());
        fs::create_directories(directory);
        ASSERT_TRUE(eventually(watch, [](const auto& changes) { return changes.rescan; }));
        EXPECT_TRUE(watch.present());
        writeFile(directory / "87", "0");
        ASSERT_TRUE(reports(watch, "87"));
    }
    fs::rename(directory, host.path() / "aside");
    EXPECT_TRUE(eventually(watch, [](const auto& changes) { return changes.directoryGone; }));
}

TEST(DirectoryWatch, WaitsForADirectoryThatDoesNotExistYet) {
    const HostDir host;
    const fs::path directory = host.path() / "gpio";
    DirectoryWatch watch;
    ASSERT_TRUE(watch.open(directory));
    EXPECT_FALSE(watch.present());
    fs::create_directories(host.path());
    fs::create_directory_symlink(host.root(), directory);
    fs::remove(directory);
    fs::create_directories(directory);
    EXPECT_TRUE(eventually(watch, [](const auto& changes) { return changes.rescan; }));
    EXPECT_TRUE(watch.present());
}

TEST(DirectoryWatch, DoesNotFollowASymbolicLink) {
    const HostDir host;
    fs::create_directory_symlink("elsewhere", host.path());
    fs::create_directories(host.root() / "elsewhere");
    DirectoryWatch watch;
    ASSERT_TRUE(watch.open(host.path()));
    EXPECT_FALSE(watch.present());
}

TEST(DirectoryWatch, IsQuietWhenClosed) {
    const HostDir host;
    fs::create_directories(host.path());
    DirectoryWatch watch;
    EXPECT_EQ(watch.fd(), -1);
    EXPECT_TRUE(watch.drain().names.empty());
    ASSERT_TRUE(watch.open(host.path()));
    watch.close();
    EXPECT_EQ(watch.fd(), -1);
    EXPECT_FALSE(watch.present());
}

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <host/DirectoryWatch.h>
#include <host/RuntimeDir.h>
#include <host/ServiceSocket.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "support/HostDir.h"
#include "support/Journal.h"
#include "support/Resources.h"

namespace fs = std::filesystem;
using namespace qvn::host;

namespace {

void setOrUnset(const char* name, const char* value) {
    value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
}

mode_t modeOf(const fs::path& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

}  // namespace

TEST(RuntimeDir, FollowsTheEnvironment) {
    const HostDir restoresTheEnvironment;
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
        EXPECT_EQ(runtimeDir(), c.expected);
    }
}

TEST(RuntimeDir, IsMadeForItsUserOnlyWithMissingParents) {
    const HostDir host;
    const fs::path deep = host.path() / "a" / "b";
    ::setenv("QVN_HOST_DIR", deep.c_str(), 1);
    ::umask(0);
    std::string error;
    ASSERT_TRUE(ensureRuntimeDir(&error)) << error;
    EXPECT_EQ(modeOf(deep), 0700U);
    EXPECT_EQ(modeOf(host.path()), 0700U);
    EXPECT_TRUE(ensureRuntimeDir(nullptr)) << "a second time";
    EXPECT_TRUE(ensureRuntimeSubdir("gpio", &error)) << error;
    EXPECT_TRUE(fs::is_directory(deep / "gpio"));
}

TEST(RuntimeDir, RefusesWhatOthersCouldReach) {
    const auto withMode = [](mode_t mode) {
        return [mode](const fs::path& path) { ::mkdir(path.c_str(), 0700), ::chmod(path.c_str(), mode); };
    };
    const struct {
        std::function<void(const fs::path&)> prepare;
        const char* complaint;
    } cases[] = {
        {withMode(0755), " is open to other users; run: chmod 700 "},
        {withMode(0720), " is open to other users; run: chmod 700 "},
        {withMode(0500), " is closed to its owner; run: chmod 700 "},
        {[](const fs::path& path) { writeFile(path, ""); }, " is not a directory"},
        {[](const fs::path& path) { fs::create_directory_symlink(path.parent_path(), path); },
         " is not a directory (symbolic links are refused)"},
        {[](const fs::path& path) { ::setenv("QVN_HOST_DIR", (path.parent_path() / "file/run").c_str(), 1); },
         ": Not a directory; set QVN_HOST_DIR to a folder that you can write to"},
        {[](const fs::path& path) {
             fs::create_directory(path);
             ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
         },
         " belongs to another user; set QVN_HOST_DIR to a folder of yours"},
    };
    for (const auto& c : cases) {
        const HostDir host;
        if (std::string(c.complaint).find("another user") != std::string::npos && ::geteuid() != 0) {
            continue;  // only root can give a folder away
        }
        writeFile(host.root() / "file", "");
        c.prepare(host.path());
        std::string error;
        EXPECT_FALSE(ensureRuntimeDir(&error)) << c.complaint;
        EXPECT_NE(error.find(runtimeDir() + c.complaint), std::string::npos) << error;
    }
}

TEST(ServiceSocket, HasAPathThatFits) {
    const HostDir restoresTheEnvironment;
    const std::string longest =
        "/" + std::string(sizeof(sockaddr_un::sun_path) - 1 - std::string("//x.sock").size(), 'd');
    ::setenv("QVN_HOST_DIR", longest.c_str(), 1);
    std::string path, error;
    EXPECT_TRUE(serviceSocketPath("x", &path, &error)) << error;
    EXPECT_EQ(path, longest + "/x.sock");
    EXPECT_FALSE(serviceSocketPath("xx", &path, &error));
    EXPECT_EQ(error, "the path " + longest +
                         "/xx.sock is longer than the 107 bytes that a socket's may have; "
                         "set QVN_HOST_DIR to a folder with a shorter path");
    std::error_code code;
    EXPECT_FALSE(connectToService("xx", code));
    EXPECT_EQ(code, std::errc::filename_too_long);
}

TEST(ServiceSocket, IsHeldByTheProcessThatListens) {
    const HostDir host;
    fs::create_directories(host.path());
    const auto reasonNotToConnect = [] {
        std::error_code error;
        connectToService("x", error);
        return error;
    };
    EXPECT_EQ(serviceHolder("x"), 0);
    EXPECT_EQ(reasonNotToConnect(), std::errc::no_such_file_or_directory);
    sockaddr_un address;
    ASSERT_FALSE(socketAddress(host.path() / "x.sock", &address));
    {
        const UniqueFd listener(::socket(AF_UNIX, SOCK_STREAM, 0));
        ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(::listen(listener.get(), 5), 0);
        EXPECT_EQ(serviceHolder("x"), ::getpid());
        EXPECT_FALSE(reasonNotToConnect());
    }
    EXPECT_EQ(serviceHolder("x"), 0) << "a socket file that a process has left behind";
    EXPECT_EQ(reasonNotToConnect(), std::errc::connection_refused);
}

/// Called when a test program asks for a watch, with the path.
static std::function<void(const std::string&)> afterWatch;

/// Stands before the system's own.
extern "C" int inotify_add_watch(int fd, const char* path, std::uint32_t mask) {
    static const auto system = reinterpret_cast<decltype(&inotify_add_watch)>(dlsym(RTLD_NEXT, "inotify_add_watch"));
    const int watch = system(fd, path, mask);
    const int error = errno;
    if (afterWatch) {
        afterWatch(path);
    }
    errno = error;
    return watch;
}

namespace {

/// A watch of the directory run/gpio on a loop with a thread.
class DirectoryWatchTest : public testing::Test {
protected:
    DirectoryWatchTest() { mLoop->start("watch", false); }
    ~DirectoryWatchTest() override {
        onLoop([this] { mWatch.reset(); });
        mLoop->stop();
        mLoop->join(0);
    }

    void onLoop(const std::function<void()>& task) { mLoop->runExclusive(task); }
    void start() {
        onLoop([this] {
            mWatch.emplace(*mLoop, "test: cannot watch");
            mWatch->start(directory, [this] { mChanges.add(0); });
        });
    }
    /// Whether the watch calls back after the action.
    bool notices(const std::function<void()>& action) {
        // What is still reported of earlier actions goes first: the loop runs handlers in turn.
        for (int turn = 0; turn < 3; ++turn) {
            std::promise<void> ran;
            mLoop->post([&ran] { ran.set_value(); });
            ran.get_future().wait();
        }
        mChanges.clear();
        action();
        return mChanges.waitForSize(1);
    }
    std::size_t changes() { return mChanges.entries().size(); }

    HostDir mHost;
    const fs::path directory = mHost.path() / "gpio";
    std::shared_ptr<EventLoop> mLoop = std::make_shared<EventLoop>();
    std::optional<DirectoryWatch> mWatch;
    qvn::test::Journal<int> mChanges;
};

}  // namespace

TEST_F(DirectoryWatchTest, ReportsWhatComesChangesAndGoes) {
    fs::create_directories(directory);
    writeFile(mHost.root() / "outside", "1");
    start();
    EXPECT_TRUE(notices([&] { writeFile(directory / "made", "1"); }));
    EXPECT_TRUE(notices([&] { fs::rename(mHost.root() / "outside", directory / "moved"); }));
    EXPECT_TRUE(notices([&] { writeFile(directory / "made", "0"); }));
    EXPECT_TRUE(notices([&] { fs::remove(directory / "made"); }));
    EXPECT_TRUE(notices([&] { fs::rename(directory / "moved", mHost.root() / "away"); }));
    EXPECT_TRUE(notices([&] { fs::rename(directory, mHost.root() / "gpio"); }));
    EXPECT_TRUE(notices([&] { fs::rename(mHost.root() / "gpio", directory); }));
}

TEST_F(DirectoryWatchTest, FollowsAPathThatIsMadeRemovedAndMadeAgain) {
    start();
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(notices([&] { fs::create_directories(directory); })) << round;
        EXPECT_TRUE(notices([&] { writeFile(directory / "87", "0"); })) << round;
        EXPECT_TRUE(notices([&] { fs::remove_all(mHost.path()); })) << round;
    }
}

TEST_F(DirectoryWatchTest, FollowsAPathWhoseParentsAreMovedAndMadeAgain) {
    fs::create_directories(directory);
    start();
    for (const fs::path& moved : {mHost.path(), mHost.root()}) {
        const fs::path away = moved.string() + ".away";
        EXPECT_TRUE(notices([&] { fs::rename(moved, away); })) << moved;
        EXPECT_TRUE(notices([&] { fs::create_directories(directory); })) << moved;
        EXPECT_TRUE(notices([&] { writeFile(directory / "87", "0"); })) << moved;
        fs::remove_all(away);
    }
}

TEST_F(DirectoryWatchTest, MissesNothingThatHappensWhileItBegins) {
    afterWatch = [this](const std::string& path) {
        if (path == directory) {
            afterWatch = nullptr;
            fs::create_directories(directory);
        }
    };
    start();
    EXPECT_TRUE(notices([&] { writeFile(directory / "87", "0"); }));
}

TEST_F(DirectoryWatchTest, FollowsAPathThatMovedAmongMoreEventsThanTheSystemKeeps) {
    fs::create_directories(directory);
    writeFile(directory / "a", "");
    start();
    EXPECT_TRUE(notices([&] {
        onLoop([&] {
            for (int i = 0; i < 20000; ++i) {
                fs::rename(directory / (i % 2 == 0 ? "a" : "b"), directory / (i % 2 == 0 ? "b" : "a"));
            }
            fs::rename(mHost.path(), mHost.root() / "away");
            fs::create_directories(directory);
        });
    }));
    EXPECT_TRUE(notices([&] { writeFile(directory / "87", "0"); }));
}

TEST_F(DirectoryWatchTest, TakesASymbolicLinkForNoDirectory) {
    fs::create_directories(mHost.root() / "elsewhere");
    fs::create_directories(mHost.path());
    fs::create_directory_symlink(mHost.root() / "elsewhere", directory);
    start();
    writeFile(directory / "87", "0");
    writeFile(mHost.path() / "beside", "");
    EXPECT_TRUE(notices([&] {
        EXPECT_EQ(changes(), 0U) << "neither the link's target nor a file beside it is of interest";
        fs::remove(directory);
        fs::create_directory(directory);
    }));
}

TEST_F(DirectoryWatchTest, TriesAgainWhenNoDescriptorIsLeft) {
    fs::create_directories(directory);
    const std::string log = qvn::test::logOf([&] {
        {
            const qvn::test::NoMoreDescriptors shortage;
            start();
            EXPECT_TRUE(qvn::test::isIdle());
            EXPECT_EQ(changes(), 0U);
        }
        EXPECT_TRUE(mChanges.waitForSize(1)) << "something may have changed meanwhile";
        EXPECT_TRUE(notices([&] { writeFile(directory / "87", "0"); }));
    });
    EXPECT_EQ(qvn::test::count(log, "test: cannot watch: Too many open files; trying again"), 1U) << log;
}

TEST_F(DirectoryWatchTest, IsQuietWhenStopped) {
    fs::create_directories(directory);
    const std::size_t before = qvn::test::openDescriptors();
    start();
    onLoop([&] {
        writeFile(directory / "87", "0");
        mWatch->stop();
        EXPECT_EQ(qvn::test::openDescriptors(), before);
    });
    onLoop([&] { mWatch->start(directory, [this] { mChanges.add(1); }); });
    EXPECT_TRUE(notices([&] { writeFile(directory / "87", "1"); }));
    EXPECT_EQ(mChanges.entries().front(), 1);
}

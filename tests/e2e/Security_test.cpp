#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "e2e/Desk.h"
#include "e2e/RawSocket.h"
#include "e2e/WatchOutput.h"

namespace qvn::e2e {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kOtherUser = 65534;
constexpr int kThrew = 99;

/// 0 when the other side has ended the connection and sent nothing.
int sentAway(const RawSocket& socket) {
    return socket.read().empty() && socket.ends() ? 0 : 1;
}

/// What the action returns when another user runs it, -1 when it does not return in time.
int asOtherUser(const std::function<int()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(kDeadlineSeconds);
        int result = kThrew;
        try {
            result = setgid(kOtherUser) == 0 && setuid(kOtherUser) == 0 ? action() : -1;
        } catch (...) {
        }
        _exit(result);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

using Security = DeskTest;

class OtherUser : public DeskTest {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can act as another user";
        }
    }
    const std::string socket = serviceSocket(desk.directory());
};

TEST_F(OtherUser, ReachesNothingInTheRuntimeDirectory) {
    const auto simulator = desk.simulator();
    EXPECT_EQ(asOtherUser([&] { return RawSocket(socket).fd(); }), kThrew) << "connect";
    EXPECT_EQ(asOtherUser([&] { return HostileService(desk.directory()).accept().fd(); }), kThrew) << "bind";
    EXPECT_EQ(asOtherUser([&] { return access(socket.c_str(), F_OK) == 0 ? 0 : errno; }), EACCES);
    EXPECT_EQ(asOtherUser([&] { return unlink(socket.c_str()) == 0 ? 0 : errno; }), EACCES);
    EXPECT_EQ(asOtherUser([&] { return rename(socket.c_str(), "/tmp/taken") == 0 ? 0 : errno; }), EACCES);
    const std::string user = std::to_string(kOtherUser);
    const auto service = desk.run("setpriv --reuid " + user + " --regid " + user + " --clear-groups can-service-sim");
    EXPECT_EQ(service.exitCode, 1) << "offer the service";
    EXPECT_NE(service.errors.find("can-service-sim: "), std::string::npos) << service.errors;
    EXPECT_EQ(desk.run("vehiclectl get " + kWord).exitCode, 0);
}

// The permissions of the directory are the first line only.
TEST_F(OtherUser, IsRefusedAlsoWhereTheDirectoryWasOpened) {
    const auto simulator = desk.simulator();
    const auto watch = desk.watch(kWord);
    ASSERT_EQ(chmod(desk.directory().c_str(), 0777), 0);
    ASSERT_EQ(chmod(socket.c_str(), 0777), 0);
    const auto subscribe = [&] {
        const RawSocket client(socket);
        client.write(frame(kSubscribe, 0, {'\x90', '\x68', '\x74', '\x02', '\0', '\0'}));
        return sentAway(client);
    };
    EXPECT_EQ(asOtherUser(subscribe), 0) << "a client of another user gets no value";
    simulator->signal(SIGKILL);
    simulator->wait();
    EXPECT_NE(simulator->errors().find("belongs to user 65534 and is refused"), std::string::npos);

    const auto serve = [&] { return sentAway(HostileService(desk.directory()).accept()); };
    EXPECT_EQ(asOtherUser(serve), 0) << "a client does not talk to a service of another user";
    ASSERT_EQ(chmod(desk.directory().c_str(), 0700), 0);
    const auto again = desk.simulator();
    again->write(wordLine(1));
    EXPECT_TRUE(waitForValue(*watch, kWord, 1));
}

TEST_F(Security, WhatLiesInTheWayOfAServiceGivesWayOrStopsItButIsNeverFollowed) {
    const struct {
        const char* file;
        bool directory;
        bool starts;
    } cases[] = {
        {"fdbus_can_service.sock", false, true},  {"fdbus_can_service.new", false, true},
        {"fdbus_can_service.lock", false, false}, {"fdbus_can_service.sock", true, false},
        {"fdbus_can_service.lock", true, false},
    };
    for (const auto& [file, directory, starts] : cases) {
        SCOPED_TRACE(std::string(file) + (directory ? " is a directory" : " is a link"));
        const Desk other;
        const std::string path = other.directory() + "/" + file;
        const std::string victim = other.file("victim", "untouched");
        if (directory) {
            fs::create_directories(path + "/full");
        } else {
            fs::create_symlink(victim, path);
        }
        if (starts) {
            const auto simulator = other.simulator();
            EXPECT_EQ(other.run("vehiclectl get " + kWord).exitCode, 0);
        } else {
            EXPECT_EQ(other.run("can-service-sim").exitCode, 1);
        }
        std::string content;
        std::ifstream(victim) >> content;
        EXPECT_EQ(content, "untouched");
        EXPECT_TRUE(fs::is_regular_file(victim));
    }
}

TEST_F(Security, NoSocketLeavesTheMachine) {
    const auto simulator = desk.simulator();
    const auto watch = desk.watch(kWord);
    for (const Process* const process : {simulator.get(), watch.get()}) {
        const std::string proc = "/proc/" + std::to_string(process->pid());
        std::string unixSockets;
        std::getline(std::ifstream(proc + "/net/unix"), unixSockets, '\0');
        int sockets = 0;
        for (const auto& descriptor : fs::directory_iterator(proc + "/fd")) {
            const std::string target = fs::read_symlink(descriptor).string();
            if (target.rfind("socket:[", 0) == 0) {
                ++sockets;
                const std::string inode = " " + target.substr(8, target.size() - 9);
                EXPECT_TRUE(unixSockets.find(inode + " ") != std::string::npos ||
                            unixSockets.find(inode + "\n") != std::string::npos)
                    << target << " is no unix-domain socket";
            }
        }
        EXPECT_GE(sockets, 1);
    }
}

}  // namespace
}  // namespace qvn::e2e

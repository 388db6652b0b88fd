#include <common_base/fdbus.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "support/HostDir.h"
#include "support/Journal.h"
#include "support/Resources.h"
#include "support/Scale.h"

std::atomic<bool> refuseThreads{false};

/// Stands before the system's own, which it can hide.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                              void* argument) {
    static const auto system = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return refuseThreads ? EAGAIN : system(thread, attributes, run, argument);
}

namespace {

using qvn::test::Journal;
using qvn::test::logOf;
using Texts = std::vector<std::string>;

const char kUrl[] = "svc://test_service";
constexpr int kUnsubscribed = 99;
const std::string kLarge(1 << 20, 'x');  // more than a socket holds

CFdbMsgSubscribeList listOf(const CFdbMsgTable& items) {
    CFdbMsgSubscribeList list;
    for (const CFdbMsgSubscribeItem& item : items) {
        CFdbBaseObject::addNotifyItem(list, item.msg_code(), item.filter().c_str());
    }
    return list;
}

std::string payloadOf(CBaseJob::Ptr& job) {
    auto* message = castToMessage<CFdbMessage*>(job);
    return {reinterpret_cast<char*>(message->getPayloadBuffer()), static_cast<size_t>(message->getPayloadSize())};
}

class Text : public IFdbMsgBuilder {
public:
    Text(std::string text) : mText(std::move(text)) {}
    int32_t build() override { return bufferSize(); }
    int32_t bufferSize() override { return static_cast<int32_t>(mText.size()); }
    const uint8_t* buffer() override { return reinterpret_cast<const uint8_t*>(mText.data()); }
    bool toBuffer(uint8_t* buffer, int32_t size) override {
        std::memcpy(buffer, mText.data(), static_cast<size_t>(size));
        return true;
    }
    bool toString(std::string&) const override { return false; }

private:
    std::string mText;
};

class CountingParser : public IFdbMsgParser {
public:
    bool parse(const uint8_t*, int32_t) override { return ++calls > 0; }
    int calls = 0;
};

class Server : public CBaseServer {
public:
    explicit Server(CBaseWorker* worker, const char* url = nullptr) : CBaseServer("test_service", worker) {
        if (url) {
            bind(url);
        }
    }
    ~Server() override { prepareDestroy(); }

    bool tell(int code, const std::string& text, const char* topic = nullptr) {
        Text payload(text);
        return broadcast(code, payload, topic);
    }

    Journal<std::string> sessions;
    Journal<std::string> received;
    Journal<int> subscribed;
    Journal<int> statuses;
    std::atomic<FdbSessionId_t> newest{FDB_INVALID_ID};

protected:
    void onOnline(FdbSessionId_t session, bool is_first) override {
        newest = session;
        sessions.add(is_first ? "first online" : "online");
    }
    void onStatus(CBaseJob::Ptr&, int32_t error, const char*) override { statuses.add(error); }
    void onOffline(FdbSessionId_t, bool is_last) override { sessions.add(is_last ? "last offline" : "offline"); }
    void onInvoke(CBaseJob::Ptr& job) override {
        const std::string payload = payloadOf(job);
        Text answer("answer");
        if (payload == "plain") {
            EXPECT_FALSE(CFdbMessage::reply(job, answer)) << "nobody expects one";
        } else if (payload == "ask") {
            EXPECT_TRUE(CFdbMessage::reply(job, answer));
        } else if (payload == "refuse") {
            CFdbMessage::status(job, 17, "refused");
        }
        received.add(payload);
    }
    void onSubscribe(CBaseJob::Ptr& job) override {
        auto* message = castToMessage<CBaseMessage*>(job);
        const CFdbMsgSubscribeItem* item;
        FDB_BEGIN_FOREACH_SIGNAL(message, item)
        Text current("current " + std::to_string(item->msg_code()));
        message->broadcast(item->msg_code(), current, item->filter().c_str());
        message->broadcast(kUnsubscribed, current);
        subscribed.add(item->msg_code());
        FDB_END_FOREACH_SIGNAL();
    }
};

class Client : public CBaseClient {
public:
    /// Subscribes the items whenever it comes online.
    explicit Client(CBaseWorker* worker, const CFdbMsgTable& items = {{1, nullptr}, {2, nullptr}},
                    const char* url = kUrl)
        : CBaseClient("test_client", worker), mItems(items) {
        if (url) {
            EXPECT_EQ(FDB_INVALID_ID, connect(url)) << "it says nothing about what comes of it";
        }
    }
    ~Client() override { prepareDestroy(); }

    Texts values(size_t count) { return broadcasts.atLeast(count); }

    std::function<void(const std::string&)> onValue = [](const std::string&) {};
    Journal<std::string> broadcasts;  // payloads; with a topic "TOPIC: PAYLOAD"
    Journal<std::string> replies;
    Journal<std::string> state;
    std::atomic<CBaseWorker*> ranOn{nullptr};

protected:
    void onOnline(FdbSessionId_t, bool) override {
        CFdbMsgSubscribeList list = listOf(mItems);
        subscribe(list);
        state.add("online");
    }
    void onOffline(FdbSessionId_t, bool) override { state.add(connected() ? "connected" : "offline"); }
    void onBroadcast(CBaseJob::Ptr& job) override {
        const std::string payload = payloadOf(job);
        const auto* message = castToMessage<CFdbMessage*>(job);
        CountingParser parser;
        EXPECT_EQ(!payload.empty(), message->deserialize(parser));
        EXPECT_EQ(payload.empty() ? 0 : 1, parser.calls) << "no parser sees an empty payload";
        if (worker() && worker()->isSelf()) {
            ranOn = worker();
        }
        broadcasts.add(message->topic().empty() ? payload : message->topic() + ": " + payload);
        onValue(payload);
    }
    void onReply(CBaseJob::Ptr& job) override { replies.add(payloadOf(job)); }
    void onStatus(CBaseJob::Ptr&, int32_t error, const char* text) override {
        replies.add(std::to_string(error) + " " + text);
    }

private:
    const CFdbMsgTable mItems;
};

/// A client of code 1 whose callback does not return before it is released.
class BlockedClient : public Client {
public:
    explicit BlockedClient(CBaseWorker* worker) : Client(worker, {{1, nullptr}}, nullptr) {
        onValue = [released = release.get_future().share()](const std::string&) { released.wait(); };
        connect(kUrl);
    }
    ~BlockedClient() override { prepareDestroy(); }

    std::promise<void> release;
};

class Job : public CBaseJob {
public:
    explicit Job(std::function<void()> task) : mTask(std::move(task)) {}
    void run(CBaseWorker*, Ptr&) override { mTask(); }

private:
    std::function<void()> mTask;
};

class Worker : public CBaseWorker {
public:
    explicit Worker(const char* name) : CBaseWorker(name) { start(); }
    ~Worker() override {
        exit();
        join();
    }
};

class FdbusTest : public testing::Test {
protected:
    FdbusTest() { FDB_CONTEXT->start(); }

    std::string socketPath() const { return mHost.path() / "test_service.sock"; }
    /// Connects a socket as a peer would that does not know the protocol.
    void connectRaw(int fd) const {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, socketPath().c_str(), socketPath().size() + 1);
        EXPECT_EQ(0, connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
    }

    HostDir mHost;
    Worker serverWorker{"server"};
    Worker clientWorker{"client"};
};

TEST_F(FdbusTest, ClientMayConnectBeforeOrAfterTheServerBinds) {
    Client early(&clientWorker, {{1, nullptr}, {2, nullptr}}, nullptr);
    early.onValue = [](const std::string& value) {  // the bus swallows what a callback throws
        value == "current 1" ? throw std::runtime_error("no luck") : throw 5;
    };
    early.connect(kUrl);
    Server server(&serverWorker);
    EXPECT_EQ(FDB_INVALID_ID, server.bind(kUrl));
    Client late(nullptr);
    const Texts current = {"current 1", "current 2"};
    EXPECT_EQ(current, early.values(2));
    EXPECT_EQ(current, late.values(2));
    EXPECT_EQ(&clientWorker, early.ranOn);
    EXPECT_TRUE(early.connected());
    EXPECT_EQ((Texts{"first online", "online"}), server.sessions.atLeast(2));
}

TEST_F(FdbusTest, BroadcastsReachSubscribersOfTheCodeInOrder) {
    Server server(&serverWorker, kUrl);
    Client one(&clientWorker, {{1, nullptr}, {1, nullptr}});
    Client topical(&clientWorker, {{1, "left"}});
    server.subscribed.waitForSize(3);
    Texts expected = {"current 1", "current 1"};
    for (int i = 0; i < 20000; ++i) {
        expected.push_back(std::to_string(i));
        ASSERT_TRUE(server.tell(1, expected.back()));
        ASSERT_TRUE(server.tell(3, "other code"));
    }
    server.broadcast(1);
    server.tell(1, "here", "left");
    server.tell(1, "there", "right");
    server.tell(1, "end");
    expected.insert(expected.end(), {"", "left: here", "right: there", "end"});
    EXPECT_EQ(expected, one.values(expected.size()));
    EXPECT_EQ((Texts{"left: current 1", "left: here"}), topical.values(2));
}

TEST_F(FdbusTest, SubscriptionsAreRepeatedAndEnded) {
    const CFdbMsgTable before = {{1, nullptr}, {2, "left"}, {2, "right"}, {3, nullptr}};
    const struct {
        CFdbMsgTable ended;
        Texts rest;  // of what is broadcast afterwards
    } cases[] = {
        {{{2, nullptr}}, {"one", "three"}},
        {{{2, "left"}, {3, nullptr}}, {"one", "right: two"}},
        {{{77, nullptr}, {2, "up"}, {1, nullptr}}, {"left: two", "right: two", "three"}},
        {{}, {"one", "left: two", "right: two", "three"}},
    };
    Server server(&serverWorker, kUrl);
    for (const auto& c : cases) {
        Client client(&clientWorker, before);
        client.broadcasts.waitForSize(4);
        CFdbMsgSubscribeList again = listOf({{1, nullptr}});
        EXPECT_TRUE(client.subscribe(again));
        EXPECT_EQ("current 1", client.values(5).back()) << "subscribing again repeats the current value";
        CFdbMsgSubscribeList ended = listOf(c.ended);
        EXPECT_TRUE(client.unsubscribe(ended));
        CFdbMsgSubscribeList mark = listOf({{4, nullptr}});
        client.subscribe(mark);
        EXPECT_EQ("current 4", client.values(6).back());
        client.broadcasts.clear();
        server.tell(1, "one");
        server.tell(2, "two", "left");
        server.tell(2, "two", "right");
        server.tell(3, "three");
        server.tell(4, "end");
        Texts expected = c.rest;
        expected.push_back("end");
        EXPECT_EQ(expected, client.values(expected.size()));
    }
}

TEST_F(FdbusTest, SendInvokeReplyAndStatus) {
    Server server(&serverWorker);
    Client client(&clientWorker, {}, nullptr);
    Text early("early");
    EXPECT_TRUE(client.send(5, early)) << "it is lost, and nobody is told";
    EXPECT_TRUE(client.invoke(5, early));
    EXPECT_EQ("-2 the service is not there", client.replies.atLeast(1).at(0));
    server.bind(kUrl);
    client.connect(kUrl);
    client.state.waitForSize(1);

    Text plain("plain");
    EXPECT_TRUE(client.send(5, plain));
    EXPECT_TRUE(client.send(5, "raw", 3));
    EXPECT_TRUE(client.send(5, "", 0));
    EXPECT_FALSE(client.send(5, "raw", -1));
    const struct {
        const char* request;
        int timeout;
        const char* outcome;
    } cases[] = {{"ask", 0, "answer"},
                 {"refuse", 0, "17 refused"},
                 {"silent", 20, "-1 no reply in time"},
                 {"ask", 60000, "answer"}};
    for (const auto& c : cases) {
        client.replies.clear();
        Text request(c.request);
        EXPECT_TRUE(client.invoke(6, request, c.timeout));
        EXPECT_EQ(Texts{c.outcome}, client.replies.atLeast(1));
    }
    EXPECT_EQ((Texts{"plain", "raw", "", "ask", "refuse", "silent", "ask"}), server.received.atLeast(7));
}

TEST_F(FdbusTest, WhatIsSentJustAfterConnectReachesAServiceThatIsThere) {
    Server server(&serverWorker, kUrl);
    std::promise<void> release;
    clientWorker.sendAsync(new Job([released = release.get_future().share()] { released.wait(); }));
    Client client(&clientWorker);
    Texts expected;
    for (int i = 0; i < 1000; ++i) {
        expected.push_back(std::to_string(i));
        client.send(5, expected.back().data(), static_cast<int>(expected.back().size()));
        if (i == 500) {
            release.set_value();
        }
    }
    EXPECT_EQ(expected, server.received.atLeast(expected.size()));
}

TEST_F(FdbusTest, AClientAnswersARequestWhenItHasHandledWhatCameBefore) {
    Server server(&serverWorker, kUrl);
    Client client(&clientWorker);
    client.values(2);
    for (int i = 0; i < 100; ++i) {
        server.tell(1, "value");
    }
    Text text("value");
    EXPECT_TRUE(server.invoke(server.newest, 7, text));
    EXPECT_EQ(std::vector<int>{FDB_ST_AUTO_REPLY_OK}, server.statuses.atLeast(1));
    EXPECT_EQ(102u, client.values(0).size());
    EXPECT_TRUE(server.invoke(server.newest + 1, 7, text)) << "there is no such session, and nobody is told";
}

TEST_F(FdbusTest, ClientComesBackWithTheService) {
    Client client(&clientWorker);
    for (size_t round = 1; round <= 20; ++round) {
        Server server(&serverWorker, kUrl);
        ASSERT_EQ(2 * round, client.values(2 * round).size());
        Text silent("silent");
        client.invoke(6, silent);
        server.received.waitForSize(1);
        round % 2 ? server.prepareDestroy() : server.unbind();
        ASSERT_EQ("offline", client.state.atLeast(2 * round).back());
        ASSERT_EQ(Texts(round, "-2 the service went away"), client.replies.atLeast(round));
        EXPECT_TRUE(client.send(5, "lost", 4));
    }
    client.disconnect();
    EXPECT_FALSE(client.connected());
}

TEST_F(FdbusTest, NamesAndFoldersThatCannotBeUsed) {
    const auto complains = [](const std::function<void()>& action, const std::string& text) {
        const std::string log = logOf(action);
        EXPECT_NE(log.find(text), std::string::npos) << log;
    };
    Server server(&serverWorker);
    for (const char* const url : {"tcp://elsewhere", "svc://", "svc://../up", "svc://.hidden"}) {
        complains([&] { server.bind(url); }, "fdbus: '" + std::string(url) + "' is not a service address");
    }
    EXPECT_EQ("", logOf([&] { server.bind(kUrl); }));
    complains([&] { Server(&serverWorker, kUrl); }, "cannot offer 'test_service': another server has this name");

    const std::pair<std::string, const char*> folders[] = {
        {"/proc/no_such_folder", "'test_service': cannot make the directory /proc/no_such_folder"},
        {mHost.path() / std::string(100, 'd'), "bytes that a socket's may have; set QVN_HOST_DIR to a"}};
    for (const auto& [folder, complaint] : folders) {
        setenv("QVN_HOST_DIR", folder.c_str(), 1);
        complains([&] { Server(&serverWorker, kUrl); }, complaint);
        complains([&] { Client(&clientWorker, {}, kUrl); }, complaint);
    }
}

TEST_F(FdbusTest, AFolderThatIsMendedIsUsed) {
    ASSERT_EQ(0, mkdir(mHost.path().c_str(), 0700));
    ASSERT_EQ(0, chmod(mHost.path().c_str(), 0755));
    Client client(&clientWorker, {}, nullptr);
    const std::string log = logOf([&] {
        client.connect(kUrl);
        EXPECT_TRUE(qvn::test::isIdle());
    });
    EXPECT_EQ(1u, qvn::test::count(log, "run: chmod 700 " + mHost.path().string() + "; trying again")) << log;
    ASSERT_EQ(0, chmod(mHost.path().c_str(), 0700));
    Server server(&serverWorker, kUrl);
    EXPECT_TRUE(client.state.waitForSize(1));
}

TEST_F(FdbusTest, ASocketThatIsReplacedIsMadeAgain) {
    Server server(&serverWorker, kUrl);
    const std::string path = socketPath();
    std::filesystem::rename(path, path + ".kept");  // so that its number is not given to another
    const int other = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, (path + ".other").c_str(), path.size() + 7);
    ASSERT_EQ(0, bind(other, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
    std::filesystem::rename(path + ".other", path);
    Client client(&clientWorker);
    EXPECT_EQ(2u, client.values(2).size());
    close(other);
}

TEST_F(FdbusTest, AFrameAboveTheQueuesLimitReachesAnIdlePeer) {
    setenv("QVN_HOST_QUEUE_MIB", "1", 1);  // read at the first frame of the process
    Server server(&serverWorker, kUrl);
    Client client(&clientWorker, {{1, nullptr}});
    client.values(1);
    EXPECT_TRUE(server.tell(1, kLarge + kLarge));
    EXPECT_EQ(2 * kLarge.size(), client.values(2).back().size());
    unsetenv("QVN_HOST_QUEUE_MIB");
}

std::string header(uint32_t length, uint16_t kind, uint16_t topic) {
    std::string bytes(16, '\0');
    std::memcpy(&bytes[0], &length, 4);
    std::memcpy(&bytes[4], &kind, 2);
    std::memcpy(&bytes[6], &topic, 2);
    return bytes;
}

TEST_F(FdbusTest, MalformedFramesEndTheirSessionOnly) {
    Server server(&serverWorker, kUrl);
    Client client(&clientWorker);
    client.broadcasts.waitForSize(2);
    const std::pair<const char*, std::string> frames[] = {
        {"unknown kind", header(0, 99, 0)},
        {"no kind", header(0, 0, 0)},
        {"oversized", header(0x7fffffff, 3, 0)},
        {"topic longer than the frame", header(4, 3, 5) + "abcd"},
        {"a server's frame", header(0, 7, 0)},
        {"truncated subscribe list", header(5, 1, 0) + "abcde"},
        {"subscribe topic beyond the end", header(6, 1, 0) + std::string("\1\0\0\0\x10\0", 6)},
        {"text", "GET / HTTP/1.1\r\n\r\n"},
        {"half a frame, and away", header(100, 3, 0) + "half"},
    };
    for (const auto& [what, bytes] : frames) {
        const bool half = bytes.find("half") != std::string::npos;
        const std::string log = logOf([&, &what = what, &bytes = bytes] {
            const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
            connectRaw(fd);
            EXPECT_EQ(static_cast<ssize_t>(bytes.size()), write(fd, bytes.data(), bytes.size()));
            if (half) {
                shutdown(fd, SHUT_WR);
            }
            char byte;
            EXPECT_LE(read(fd, &byte, 1), 0) << what << ": the session must end";
            close(fd);
        });
        EXPECT_EQ(half ? 0u : 1u, qvn::test::count(log, "sent a malformed frame")) << what << log;
    }
    server.tell(1, "still here");
    EXPECT_EQ("still here", client.values(3).back());
}

TEST_F(FdbusTest, LargePayloadsAndBlockedReceivers) {
    Server server(&serverWorker, kUrl);
    BlockedClient client(&clientWorker);
    server.subscribed.waitForSize(1);
    Texts expected = {"current 1"};
    for (int i = 0; i < 20; ++i) {
        expected.push_back(kLarge);
        expected.push_back(std::to_string(i));
        ASSERT_TRUE(server.tell(1, kLarge) && server.tell(1, expected.back()));
    }
    client.release.set_value();
    EXPECT_TRUE(expected == client.values(expected.size()));
}

TEST_F(FdbusTest, TheMemoryOfLargeFramesIsGivenBack) {
    if (qvn::test::kSanitized) {
        GTEST_SKIP() << "a sanitizer keeps what is freed";
    }
    Server server(&serverWorker, kUrl);
    Client client(&clientWorker, {{1, nullptr}});
    client.values(1);
    const long before = qvn::test::residentKibibytes();
    for (size_t i = 1; i <= 3; ++i) {
        server.tell(1, std::string(15 * kLarge.size(), 'x'));
        client.values(2);
        client.broadcasts.clear();
        server.tell(1, "small");
        client.values(1);
    }
    EXPECT_LT(qvn::test::residentKibibytes(), before + 8192);
}

// A job that waits for what it has sent to arrive stands for an application's callback that takes long.
TEST_F(FdbusTest, FramesLeaveWhileTheLoopIsBusy) {
    Server server(&serverWorker, kUrl);
    Client client(&clientWorker, {{1, nullptr}});
    client.broadcasts.waitForSize(1);
    clientWorker.sendSync(new Job([&] {
        for (int i = 0; i < 9; ++i) {
            client.send(5, "set", 3);
        }
        EXPECT_EQ(9u, server.received.atLeast(9).size());
    }));
    serverWorker.sendSync(new Job([&] {
        for (int i = 0; i < 9; ++i) {
            server.tell(1, kLarge);
        }
        EXPECT_EQ(10u, client.values(10).size());
    }));
}

TEST_F(FdbusTest, ObjectsMayGoWhileTrafficFlows) {
    std::atomic<bool> stop{false};
    Server server(&serverWorker, kUrl);
    std::thread traffic([&] {
        for (int i = 0; !stop; ++i) {
            server.tell(1 + i % 2, std::to_string(i));
        }
    });
    for (int round = 0; round < 50; ++round) {
        auto client = std::make_unique<Client>(round % 2 ? &clientWorker : nullptr);
        client->broadcasts.waitForSize(static_cast<size_t>(round % 5));
        if (round % 2) {
            clientWorker.sendSync(new Job([&] {  // what it has asked the loop for is still to be done when it goes
                Text silent("silent");
                client->invoke(6, silent, 1);
                client->connect(kUrl);
                client.reset();
            }));
        }
        client.reset();
        Worker ending("ending");
        Client orphan(&ending);
        if (round % 3 == 0) {
            orphan.prepareDestroy();
        }
        ending.exit();
        ending.join();
    }
    stop = true;
    traffic.join();
}

TEST_F(FdbusTest, WithoutDescriptorsItWaitsAndGoesOnLater) {
    Server server(&serverWorker, kUrl);
    const int raw = socket(AF_UNIX, SOCK_STREAM, 0);
    auto client = std::make_unique<Client>(&clientWorker, CFdbMsgTable{{1, nullptr}}, nullptr);
    const std::string log = logOf([&] {
        {
            const qvn::test::NoMoreDescriptors shortage;
            connectRaw(raw);  // the server cannot accept it
            client->connect(kUrl);
            EXPECT_TRUE(qvn::test::isIdle());
        }
        EXPECT_EQ(Texts{"current 1"}, client->values(1));
        EXPECT_EQ((Texts{"first online", "online"}), server.sessions.atLeast(2));
    });
    close(raw);
    for (const char* const what :
         {"watch the runtime directory", "connect to service 'test_service'", "accept a client"}) {
        EXPECT_EQ(1u, qvn::test::count(log, std::string("cannot ") + what + ": Too many open files; trying again"))
            << log;
    }
}

TEST_F(FdbusTest, NoDescriptorStaysBehind) {
    const auto use = [] {
        Worker worker("used");
        Server server(&worker, kUrl);
        Client client(&worker);
        EXPECT_EQ(2u, client.values(2).size());
        client.disconnect();
        client.connect(kUrl);
        EXPECT_EQ(4u, client.values(4).size());
    };
    use();  // the first connection of a process starts its writer, which stays
    const size_t before = qvn::test::openDescriptors();
    for (int round = 0; round < 5; ++round) {
        use();
    }
    EXPECT_EQ(before, qvn::test::openDescriptors());

    const auto openNow = [this] {
        for (Worker* const worker : {&serverWorker, &clientWorker}) {
            worker->sendSync(new Job([] {}));  // behind the reads that were ended
        }
        return qvn::test::openDescriptors();
    };
    Server server(&serverWorker, kUrl);
    const size_t withServer = openNow();
    for (size_t round = 1; round <= 50; ++round) {
        Client(&clientWorker).values(2);
        ASSERT_EQ(2 * round, server.sessions.atLeast(2 * round).size()) << "came and went";
    }
    EXPECT_EQ(withServer, openNow());
    Client client(&clientWorker);
    client.values(2);
    server.prepareDestroy();
    client.prepareDestroy();
    EXPECT_EQ(before, openNow()) << "both are still there, but off the bus";
}

// What a child does not use itself must neither keep it from ending nor be disturbed by that.
TEST_F(FdbusTest, AChildOfForkEndsWithoutAMark) {
    auto server = std::make_unique<Server>(&serverWorker, kUrl);
    auto client = std::make_unique<Client>(&clientWorker);
    client->broadcasts.waitForSize(2);
    auto worker = std::make_unique<Worker>("parent's");
    const pid_t child = fork();
    if (child == 0) {  // as the destructors of static objects would
        alarm(20);
        client.reset();
        server.reset();
        worker.reset();
        FDB_CONTEXT->destroy();
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    server->tell(1, "live");
    EXPECT_EQ("live", client->values(3).back());
    Client late(&clientWorker);
    EXPECT_EQ(2u, late.values(2).size()) << "the service can still be found";
}

TEST(FdbusWorkerTest, RunsJobsInOrderFromStartToExit) {
    CBaseWorker worker("jobs", 3);
    EXPECT_FALSE(worker.sendAsync(new Job([] {}))) << "nothing waits for a start";
    EXPECT_FALSE(worker.flush());
    std::promise<void> reached, opened;
    EXPECT_TRUE(worker.start());
    EXPECT_FALSE(worker.start()) << "it starts once";
    EXPECT_TRUE(worker.sendSync(new Job([&] {
        EXPECT_TRUE(worker.isSelf());
        EXPECT_FALSE(worker.join()) << "a worker cannot wait for itself";
        EXPECT_FALSE(worker.flush());
    })));
    EXPECT_TRUE(worker.sendAsync(new Job([&] {
        reached.set_value();
        opened.get_future().wait();
    })));
    reached.get_future().wait();
    std::vector<int> ran;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(worker.sendAsync(new Job([&, i] { ran.push_back(i); })));
    }
    EXPECT_FALSE(worker.sendAsync(new Job([] {}))) << "the queue holds three";
    worker.exit();
    opened.set_value();
    EXPECT_TRUE(worker.join());
    EXPECT_EQ((std::vector<int>{0, 1, 2}), ran) << "exit() lets the jobs before it run";
    EXPECT_FALSE(worker.sendAsync(new Job([] {})));
    EXPECT_FALSE(worker.flush());
    EXPECT_FALSE(worker.start()) << "not even when it has ended";
}

TEST(FdbusWorkerTest, ReportsAThreadThatRunsAtItsDestruction) {
    const std::string log = logOf([] { CBaseWorker("left alone").start(); });
    EXPECT_NE(log.find("worker 'left alone' is destroyed while its thread runs"), std::string::npos) << log;
}

TEST(FdbusWorkerTest, SaysWhenThereIsNoThreadToStart) {
    CBaseWorker worker("starved");
    const std::string log = logOf([&] {
        refuseThreads = true;
        EXPECT_FALSE(worker.start());
        refuseThreads = false;
    });
    EXPECT_NE(log.find("fdbus: cannot start the thread of worker 'starved'"), std::string::npos) << log;
    EXPECT_FALSE(worker.flush()) << "nothing waits for a loop that does not run";
    EXPECT_TRUE(worker.start()) << "it may be tried again";
    EXPECT_TRUE(worker.flush());
    worker.exit();
    worker.join();
}

TEST(FdbusWorkerTest, LoopMayRunInPlace) {
    CBaseWorker worker("here");
    std::thread other([&] {
        while (!worker.sendAsync(new Job([&] {
            EXPECT_TRUE(worker.isSelf());
            worker.exit();
        }))) {
            std::this_thread::yield();
        }
    });
    EXPECT_TRUE(worker.start(FDB_WORKER_EXE_IN_PLACE));
    other.join();
}

TEST(FdbusWorkerTest, WithoutDescriptorsItsConstructionFailsAsAWhole) {
    bool fails = false, succeeds = false;
    const size_t open = qvn::test::openDescriptors();
    for (rlim_t limit = 3; limit < 40; ++limit) {
        try {
            const qvn::test::NoMoreDescriptors shortage(limit);
            const CBaseWorker shortOfSomething("short");
            succeeds = true;
        } catch (const std::system_error& error) {
            fails = error.code().value() == EMFILE;
        }
        EXPECT_EQ(open, qvn::test::openDescriptors());
    }
    EXPECT_TRUE(fails && succeeds);
}

/// Goes when the main thread's own objects have gone.
struct SendsAfterMain {
    ~SendsAfterMain() {
        if (client) {
            client->send(5, "late", 4);
        }
    }
    std::unique_ptr<Client> client;
} sendsAfterMain;

TEST(FdbusExitTest, AStaticObjectMaySend) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            FDB_CONTEXT->start();
            sendsAfterMain.client = std::make_unique<Client>(nullptr, CFdbMsgTable{}, nullptr);
            sendsAfterMain.client->send(5, "early", 5);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

// In a process of its own: a context starts once.
TEST(FdbusContextTest, NothingIsSentBeforeAndAfterIt) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            Client client(nullptr);
            Server server(nullptr);
            Text text("text");
            bool sends = client.send(5, text) || client.invoke(5, text) || server.broadcast(5, text);
            FDB_CONTEXT->start();
            sends = sends || !client.send(5, text) || !client.invoke(5, text) || !server.broadcast(5, text);
            FDB_CONTEXT->destroy();
            sends = sends || client.send(5, text) || client.invoke(5, text) || server.broadcast(5, text);
            std::exit(sends ? 1 : 0);
        },
        testing::ExitedWithCode(0), "needs the context");
}

}  // namespace

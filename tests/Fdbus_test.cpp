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
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

std::atomic<bool> refuseThreads{false};

/// Stands before the system's own, which it can hide.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                              void* argument) {
    static const auto system = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return refuseThreads ? EAGAIN : system(thread, attributes, run, argument);
}

namespace {

constexpr std::chrono::seconds kDeadline(20);
const char kUrl[] = "svc://test_service";
constexpr int kUnsubscribed = 99;

/// Values that callbacks add on a worker's thread and a test waits for.
template <typename T>
class Log {
public:
    void add(T value) {
        std::lock_guard<std::mutex> lock(mMutex);
        mValues.push_back(std::move(value));
        mChanged.notify_all();
    }
    /// The values, when there are at least `count` or the deadline has passed.
    std::vector<T> waitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait_for(lock, kDeadline, [&] { return mValues.size() >= count; });
        return mValues;
    }

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<T> mValues;
};

std::string payloadOf(CBaseJob::Ptr& job) {
    auto* message = castToMessage<CFdbMessage*>(job);
    return std::string(reinterpret_cast<char*>(message->getPayloadBuffer()),
                       static_cast<size_t>(message->getPayloadSize()));
}

class Text : public IFdbMsgBuilder {
public:
    explicit Text(std::string text) : mText(std::move(text)) {}
    int32_t build() override { return bufferSize(); }
    int32_t bufferSize() override { return static_cast<int32_t>(mText.size()); }
    const uint8_t* buffer() override { return reinterpret_cast<const uint8_t*>(mText.data()); }
    bool toBuffer(uint8_t* buffer, int32_t size) override {
        std::memcpy(buffer, mText.data(), static_cast<size_t>(size));
        return true;
    }
    bool toString(std::string& text) const override {
        text = mText;
        return true;
    }

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
    explicit Server(CBaseWorker* worker) : CBaseServer("test_service", worker) {}
    ~Server() override { prepareDestroy(); }

    Log<std::string> sessions;
    Log<std::string> received;
    Log<int> subscribed;

protected:
    void onOnline(FdbSessionId_t, bool is_first) override { sessions.add(is_first ? "first online" : "online"); }
    void onOffline(FdbSessionId_t, bool is_last) override { sessions.add(is_last ? "last offline" : "offline"); }
    void onInvoke(CBaseJob::Ptr& job) override {
        const std::string payload = payloadOf(job);
        received.add(payload);
        Text answer("answer");
        if (payload == "plain") {
            EXPECT_FALSE(CFdbMessage::reply(job, answer)) << "nobody expects one";
        } else if (payload == "ask") {
            EXPECT_TRUE(CFdbMessage::reply(job, answer));
        } else if (payload == "refuse") {
            CFdbMessage::status(job, 17, "refused");
        }
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
    explicit Client(CBaseWorker* worker, std::vector<int> codes = {1, 2}, const char* topic = nullptr)
        : CBaseClient("test_client", worker), mCodes(std::move(codes)), mTopic(topic) {}
    ~Client() override { prepareDestroy(); }

    std::function<void(const std::string&)> onValue = [](const std::string&) {};
    Log<std::string> broadcasts;
    Log<std::string> replies;
    Log<std::string> state;
    std::atomic<CBaseWorker*> ranOn{nullptr};

protected:
    void onOnline(FdbSessionId_t, bool) override {
        CFdbMsgSubscribeList list;
        for (const int code : mCodes) {
            addNotifyItem(list, code, mTopic);
        }
        subscribe(list);
        state.add("online");
    }
    void onOffline(FdbSessionId_t, bool) override { state.add("offline"); }
    void onBroadcast(CBaseJob::Ptr& job) override {
        const std::string payload = payloadOf(job);
        CountingParser parser;
        EXPECT_EQ(!payload.empty(), castToMessage<CFdbMessage*>(job)->deserialize(parser));
        EXPECT_EQ(payload.empty() ? 0 : 1, parser.calls) << "no parser sees an empty payload";
        if (worker() && worker()->isSelf()) {
            ranOn = worker();
        }
        broadcasts.add(payload);
        onValue(payload);
    }
    void onReply(CBaseJob::Ptr& job) override { replies.add(payloadOf(job)); }
    void onStatus(CBaseJob::Ptr&, int32_t error, const char* text) override {
        replies.add(std::to_string(error) + " " + text);
    }

private:
    std::vector<int> mCodes;
    const char* mTopic;
};

/// A client of code 1 whose callback does not return before it is released.
class BlockedClient : public Client {
public:
    explicit BlockedClient(CBaseWorker* worker) : Client(worker, {1}) {
        onValue = [released = release.get_future().share()](const std::string&) { released.wait(); };
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

class FdbusTest : public testing::Test {
protected:
    FdbusTest() {
        std::string pattern = testing::TempDir() + "fdbus_XXXXXX";
        mDir = mkdtemp(pattern.data());
        setenv("QVN_HOST_DIR", mDir.c_str(), 1);
        FDB_CONTEXT->start();
        serverWorker.start();
        clientWorker.start();
    }
    ~FdbusTest() override {
        for (CBaseWorker* const worker : {&serverWorker, &clientWorker}) {
            worker->exit();
            worker->join();
        }
        std::filesystem::remove_all(mDir);
    }

    /// A raw connection to the service, as a peer that does not know the protocol would make it.
    int connectRaw() const {
        const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const std::string path = mDir + "/test_service.sock";
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        EXPECT_EQ(0, connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
        return fd;
    }

    std::string mDir;
    CBaseWorker serverWorker{"server"};
    CBaseWorker clientWorker{"client"};
};

TEST_F(FdbusTest, ClientMayConnectBeforeOrAfterTheServerBinds) {
    Client early(&clientWorker);
    EXPECT_EQ(FDB_INVALID_ID, early.connect(kUrl)) << "it says nothing about what comes of it";
    Server server(&serverWorker);
    EXPECT_EQ(FDB_INVALID_ID, server.bind(kUrl));
    Client late(nullptr);
    late.connect(kUrl);

    const std::vector<std::string> current = {"current 1", "current 2"};
    EXPECT_EQ(current, early.broadcasts.waitFor(2));
    EXPECT_EQ(current, late.broadcasts.waitFor(2));
    EXPECT_EQ(&clientWorker, early.ranOn);
    EXPECT_TRUE(early.connected());
    EXPECT_EQ((std::vector<std::string>{"first online", "online"}), server.sessions.waitFor(2));
}

TEST_F(FdbusTest, BroadcastsReachSubscribersOfTheCodeInOrder) {
    Server server(&serverWorker);
    server.bind(kUrl);
    Client one(&clientWorker, {1, 1});
    Client topical(&clientWorker, {1}, "left");
    one.connect(kUrl);
    topical.connect(kUrl);
    server.subscribed.waitFor(3);

    constexpr int kCount = 20000;
    for (int i = 0; i < kCount; ++i) {
        Text text(std::to_string(i));
        ASSERT_TRUE(server.broadcast(1, text));
        Text other("other code");
        ASSERT_TRUE(server.broadcast(3, other));
    }
    server.broadcast(1);
    Text left("on the left");
    server.broadcast(1, left, "left");

    std::vector<std::string> expected = {"current 1", "current 1"};
    for (int i = 0; i < kCount; ++i) {
        expected.push_back(std::to_string(i));
    }
    expected.push_back("");
    expected.push_back("on the left");
    EXPECT_EQ(expected, one.broadcasts.waitFor(expected.size()));
    EXPECT_EQ((std::vector<std::string>{"current 1", "on the left"}), topical.broadcasts.waitFor(2));
}

TEST_F(FdbusTest, SubscriptionsAreRepeatedAndEnded) {
    Server server(&serverWorker);
    server.bind(kUrl);
    Client client(&clientWorker, {1});
    client.connect(kUrl);
    client.broadcasts.waitFor(1);
    CFdbMsgSubscribeList list;
    CFdbBaseObject::addNotifyItem(list, 1);
    CFdbBaseObject::addNotifyItem(list, 2, "left");
    EXPECT_TRUE(client.subscribe(list));
    server.subscribed.waitFor(3);
    server.broadcast(1, "once", 4);
    CFdbMsgSubscribeList ended;
    CFdbBaseObject::addNotifyItem(ended, 2);
    EXPECT_TRUE(client.unsubscribe(ended));
    client.send(5, "mark", 4);
    server.received.waitFor(1);
    server.broadcast(2, "ended", 5, "left");
    server.broadcast(1, "end", 3);
    EXPECT_EQ((std::vector<std::string>{"current 1", "current 1", "current 2", "once", "end"}),
              client.broadcasts.waitFor(5));
}

TEST_F(FdbusTest, SendInvokeReplyAndStatus) {
    Server server(&serverWorker);
    Client client(&clientWorker);
    Text early("early");
    EXPECT_TRUE(client.send(5, early)) << "it is lost, and nobody is told";
    EXPECT_TRUE(client.invoke(5, early));
    EXPECT_EQ("-2 the service is not there", client.replies.waitFor(1).at(0));
    server.bind(kUrl);
    client.connect(kUrl);
    client.state.waitFor(1);

    Text plain("plain"), ask("ask"), refuse("refuse"), silent("silent");
    EXPECT_TRUE(client.send(5, plain));
    EXPECT_TRUE(client.send(5, "raw", 3));
    EXPECT_TRUE(client.invoke(6, ask));
    EXPECT_EQ("answer", client.replies.waitFor(2).at(1));
    EXPECT_TRUE(client.invoke(6, refuse));
    EXPECT_EQ("17 refused", client.replies.waitFor(3).at(2));
    EXPECT_TRUE(client.invoke(6, silent, 20));
    EXPECT_EQ("-1 no reply in time", client.replies.waitFor(4).at(3));
    EXPECT_EQ((std::vector<std::string>{"plain", "raw", "ask", "refuse", "silent"}), server.received.waitFor(5));
}

TEST_F(FdbusTest, ClientComesBackWithTheService) {
    Client client(&clientWorker);
    client.connect(kUrl);
    for (size_t round = 1; round <= 20; ++round) {
        Server server(&serverWorker);
        server.bind(kUrl);
        ASSERT_EQ(2 * round, client.broadcasts.waitFor(2 * round).size());
        server.prepareDestroy();
        ASSERT_EQ("offline", client.state.waitFor(2 * round).back());
        EXPECT_TRUE(client.send(5, "lost", 4));
    }
    client.disconnect();
    EXPECT_FALSE(client.connected());
}

TEST_F(FdbusTest, RuntimeDirectoryMayVanish) {
    Server server(&serverWorker);
    server.bind(kUrl);
    Client before(&clientWorker);
    before.connect(kUrl);
    before.broadcasts.waitFor(2);

    const std::string away = mDir + ".away";  // moved first: the server makes it again at once
    std::filesystem::rename(mDir, away);
    std::filesystem::remove_all(away);
    Client after(&clientWorker);
    after.connect(kUrl);
    EXPECT_EQ(2u, after.broadcasts.waitFor(2).size());
    Text live("live");
    server.broadcast(1, live);
    EXPECT_EQ("live", before.broadcasts.waitFor(3).back());
}

TEST_F(FdbusTest, NamesAndFoldersThatCannotBeUsed) {
    const auto logOf = [](const std::function<void()>& action) {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    };
    const auto expectLog = [](const std::string& log, const char* text) {
        EXPECT_NE(log.find(text), std::string::npos) << log;
    };
    Server server(&serverWorker);
    for (const char* const url : {"tcp://elsewhere", "svc://", "svc://../up"}) {
        expectLog(logOf([&] { server.bind(url); }), "is no service address");
    }
    EXPECT_EQ("", logOf([&] { server.bind(kUrl); }));
    Server second(&serverWorker);
    expectLog(logOf([&] { second.bind(kUrl); }), "another server has this name");

    const struct {
        std::string folder;
        const char* complaint;
    } folders[] = {{"/proc/no_such_folder", "'test_service': cannot make the directory /proc/no_such_folder"},
                   {mDir + "/" + std::string(100, 'd'), "bytes that a socket's may have; set QVN_HOST_DIR to a"}};
    for (const auto& unusable : folders) {
        setenv("QVN_HOST_DIR", unusable.folder.c_str(), 1);
        Server nowhere(&serverWorker);
        expectLog(logOf([&] { nowhere.bind(kUrl); }), unusable.complaint);
        Client client(&clientWorker);
        expectLog(logOf([&] { client.connect(kUrl); }), unusable.complaint);
    }
}

TEST_F(FdbusTest, StaleAndForeignSocketFilesGiveWay) {
    const std::string path = mDir + "/test_service.sock";
    ASSERT_EQ(0, symlink("/dev/null", path.c_str()));
    Client client(&clientWorker);
    client.connect(kUrl);
    Server server(&serverWorker);
    server.bind(kUrl);
    EXPECT_EQ(2u, client.broadcasts.waitFor(2).size());
    struct stat status;
    ASSERT_EQ(0, lstat(path.c_str(), &status));
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
}

struct BadFrame {
    const char* what;
    std::string bytes;
};

std::string header(uint32_t length, uint16_t kind, uint16_t topic) {
    std::string bytes(16, '\0');
    std::memcpy(&bytes[0], &length, 4);
    std::memcpy(&bytes[4], &kind, 2);
    std::memcpy(&bytes[6], &topic, 2);
    return bytes;
}

TEST_F(FdbusTest, MalformedFramesEndTheirSessionOnly) {
    Server server(&serverWorker);
    server.bind(kUrl);
    Client client(&clientWorker);
    client.connect(kUrl);
    client.broadcasts.waitFor(2);

    const BadFrame frames[] = {
        {"unknown kind", header(0, 99, 0)},
        {"no kind", header(0, 0, 0)},
        {"oversized", header(0x7fffffff, 3, 0)},
        {"topic longer than the frame", header(4, 3, 5) + "abcd"},
        {"a server's frame", header(0, 7, 0)},
        {"truncated subscribe list", header(5, 1, 0) + "abcde"},
        {"subscribe topic beyond the end", header(6, 1, 0) + std::string("\1\0\0\0\x10\0", 6)},
        {"text", "GET / HTTP/1.1\r\n\r\n"},
    };
    for (const BadFrame& frame : frames) {
        const int fd = connectRaw();
        ASSERT_EQ(static_cast<ssize_t>(frame.bytes.size()), write(fd, frame.bytes.data(), frame.bytes.size()));
        char byte;
        EXPECT_LE(read(fd, &byte, 1), 0) << frame.what << ": the session must end";
        close(fd);
    }
    {
        const int fd = connectRaw();  // half a frame, and away
        const std::string half = header(100, 3, 0) + "half";
        ASSERT_EQ(static_cast<ssize_t>(half.size()), write(fd, half.data(), half.size()));
        close(fd);
    }
    Text live("still here");
    server.broadcast(1, live);
    EXPECT_EQ("still here", client.broadcasts.waitFor(3).back());
}

TEST_F(FdbusTest, LargePayloadsAndBlockedReceivers) {
    Server server(&serverWorker);
    server.bind(kUrl);
    BlockedClient client(&clientWorker);
    client.connect(kUrl);
    server.subscribed.waitFor(1);
    const std::string large(1 << 20, 'x');
    for (int i = 0; i < 20; ++i) {
        Text text(large);
        ASSERT_TRUE(server.broadcast(1, text));
        Text small(std::to_string(i));
        ASSERT_TRUE(server.broadcast(1, small));
    }
    client.release.set_value();
    const std::vector<std::string> received = client.broadcasts.waitFor(41);
    ASSERT_EQ(41u, received.size());
    EXPECT_EQ(large, received[39]);
    EXPECT_EQ("19", received[40]);
}

// A job that waits for what it has sent to arrive stands for an application's callback that takes long.
TEST_F(FdbusTest, FramesLeaveWhileTheLoopIsBusy) {
    Server server(&serverWorker);
    server.bind(kUrl);
    Client client(&clientWorker, {1});
    client.connect(kUrl);
    client.broadcasts.waitFor(1);
    clientWorker.sendSync(new Job([&] {
        for (int i = 0; i < 9; ++i) {
            client.send(5, "set", 3);
        }
        EXPECT_EQ(9u, server.received.waitFor(9).size());
    }));
    const std::string large(1 << 20, 'x');  // more than the socket holds
    serverWorker.sendSync(new Job([&] {
        for (int i = 0; i < 9; ++i) {
            server.broadcast(1, large.data(), static_cast<int32_t>(large.size()));
        }
        EXPECT_EQ(10u, client.broadcasts.waitFor(10).size());
    }));
}

TEST_F(FdbusTest, ClientThatFallsTooFarBehindIsCutOffAndComesBack) {
    Server server(&serverWorker);
    server.bind(kUrl);
    BlockedClient client(&clientWorker);
    client.connect(kUrl);
    server.subscribed.waitFor(1);
    const std::string large(1 << 20, 'x');
    for (int i = 0; i < 80; ++i) {
        Text text(large);
        server.broadcast(1, text);
    }
    EXPECT_EQ("last offline", server.sessions.waitFor(2).back());
    client.release.set_value();
    EXPECT_EQ((std::vector<std::string>{"online", "offline", "online"}), client.state.waitFor(3));
    EXPECT_EQ(2u, server.subscribed.waitFor(2).size()) << "it gets current values again";
}

TEST_F(FdbusTest, ObjectsMayGoWhileTrafficFlows) {
    std::atomic<bool> stop{false};
    Server server(&serverWorker);
    server.bind(kUrl);
    std::thread traffic([&] {
        for (int i = 0; !stop; ++i) {
            Text text(std::to_string(i));
            server.broadcast(1 + i % 2, text);
        }
    });
    for (int round = 0; round < 50; ++round) {
        auto client = std::make_unique<Client>(round % 2 ? &clientWorker : nullptr);
        client->connect(kUrl);
        client->broadcasts.waitFor(static_cast<size_t>(round % 5));
        client.reset();
        CBaseWorker ending("ending");
        ending.start();
        Client orphan(&ending);
        orphan.connect(kUrl);
        if (round % 3 == 0) {
            orphan.prepareDestroy();
        }
        ending.exit();
        ending.join();
    }
    stop = true;
    traffic.join();
}

TEST_F(FdbusTest, ExceptionsOfCallbacksAreSwallowed) {
    Server server(&serverWorker);
    server.bind(kUrl);
    Client client(&clientWorker);
    client.onValue = [](const std::string& value) {
        if (value == "current 1") {
            throw std::runtime_error("no luck");
        }
        throw 5;
    };
    client.connect(kUrl);
    EXPECT_EQ(2u, client.broadcasts.waitFor(2).size());
}

TEST(FdbusWorkerTest, RunsJobsInOrderFromStartToExit) {
    CBaseWorker worker("jobs", 3);
    EXPECT_FALSE(worker.sendAsync(new Job([] {}))) << "nothing waits for a start";
    EXPECT_FALSE(worker.flush());
    std::promise<void> reached, opened;
    EXPECT_TRUE(worker.start());
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
}

TEST(FdbusWorkerTest, StartsOnce) {
    CBaseWorker worker("once");
    EXPECT_TRUE(worker.start());
    EXPECT_FALSE(worker.start());
    worker.exit();
    worker.join();
    EXPECT_FALSE(worker.start());
}

TEST(FdbusWorkerTest, ReportsAThreadThatRunsAtItsDestruction) {
    testing::internal::CaptureStderr();
    {
        CBaseWorker worker("left alone");
        worker.start();
    }
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("worker 'left alone' is destroyed while its thread runs"), std::string::npos) << log;
}

TEST(FdbusWorkerTest, SaysWhenThereIsNoThreadToStart) {
    CBaseWorker worker("starved");
    refuseThreads = true;
    EXPECT_FALSE(worker.start());
    refuseThreads = false;
    EXPECT_FALSE(worker.flush()) << "nothing waits for a loop that does not run";
    EXPECT_TRUE(worker.start()) << "it may be tried again";
    EXPECT_TRUE(worker.flush());
    worker.exit();
    worker.join();
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
            sendsAfterMain.client = std::make_unique<Client>(nullptr);
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
            client.connect(kUrl);
            bool sends = client.send(5, text) || client.invoke(5, text) || server.broadcast(5, text);
            FDB_CONTEXT->start();
            sends = sends || !client.send(5, text) || !client.invoke(5, text) || !server.broadcast(5, text);
            FDB_CONTEXT->destroy();
            sends = sends || client.send(5, text) || client.invoke(5, text) || server.broadcast(5, text);
            std::exit(sends ? 1 : 0);
        },
        testing::ExitedWithCode(0), "needs the context");
}

// What a child does not use itself must neither keep it from ending nor be disturbed by that.
TEST_F(FdbusTest, AChildOfForkEndsWithoutAMark) {
    auto server = std::make_unique<Server>(&serverWorker);
    server->bind(kUrl);
    auto client = std::make_unique<Client>(&clientWorker);
    client->connect(kUrl);
    client->broadcasts.waitFor(2);
    auto worker = std::make_unique<CBaseWorker>("parent's");
    worker->start();
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
    server->broadcast(1, "live", 4);
    EXPECT_EQ("live", client->broadcasts.waitFor(3).back());
    Client late(&clientWorker);
    late.connect(kUrl);
    EXPECT_EQ(2u, late.broadcasts.waitFor(2).size()) << "the service can still be found";
    worker->exit();
    worker->join();
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

}  // namespace

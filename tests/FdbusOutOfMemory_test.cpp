#include <common_base/fdbus.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>

#include "support/FailingNew.h"
#include "support/HostDir.h"
#include "support/Journal.h"

namespace {

constexpr char kUrl[] = "svc://test_service";
constexpr int kCode = 1;
constexpr int kSomeAllocations = 30;  // of a connection; each that fails costs a pause

class Job : public CBaseJob {
public:
    explicit Job(std::function<void()> task) : mTask(std::move(task)) {}
    void run(CBaseWorker*, Ptr&) override { mTask(); }

private:
    std::function<void()> mTask;
};

class Worker : public CBaseWorker {
public:
    Worker() { start(); }
    ~Worker() override {
        exit();
        join();
    }
    /// Of the allocations on its thread some succeed, and one fails.
    void runShort(int succeed) {
        sendSync(new Job([succeed] { allocationsLeft = succeed; }));
    }
};

/// In a callback memory is there again: what an application does without is its own affair.
class Server : public CBaseServer {
public:
    explicit Server(CBaseWorker* worker) : CBaseServer("test_service", worker) { bind(kUrl); }
    ~Server() override { prepareDestroy(); }

protected:
    void onSubscribe(CBaseJob::Ptr& job) override {
        const int left = std::exchange(allocationsLeft, -1);
        const std::uint8_t value = 5;
        broadcast(kCode, &value, 1);
        allocationsLeft = left;
        (void)job;
    }
};

class Client : public CBaseClient {
public:
    explicit Client(CBaseWorker* worker) : CBaseClient("test_client", worker) { connect(kUrl); }
    ~Client() override { prepareDestroy(); }

    qvn::test::Journal<int> values;

protected:
    void onOnline(FdbSessionId_t, bool) override {
        const int left = std::exchange(allocationsLeft, -1);
        CFdbMsgSubscribeList list;
        addNotifyItem(list, kCode);
        subscribe(list);
        allocationsLeft = left;
    }
    void onBroadcast(CBaseJob::Ptr& job) override {
        allocationsLeft = -1;
        values.add(*castToMessage<CFdbMessage*>(job)->getPayloadBuffer());
    }
};

}  // namespace

// Whatever allocation fails on the thread of a client or a server, they find each other again.
TEST(FdbusOutOfMemory, CostsNoConnection) {
    const HostDir host;
    FDB_CONTEXT->start();
    Worker clients;
    Worker servers;
    for (int succeed = 0; succeed < kSomeAllocations; ++succeed) {
        SCOPED_TRACE(succeed);
        Client early(&clients);
        clients.runShort(succeed);
        Server server(&servers);
        ASSERT_TRUE(early.values.waitForSize(1)) << "the client is short of memory when the service comes";
        servers.runShort(succeed);
        Client late(&clients);
        ASSERT_TRUE(late.values.waitForSize(1)) << "the server is short of memory when a client comes";
        clients.runShort(-1);
        servers.runShort(-1);
    }
}

#include "TestService.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "desk/DeskPlatform.h"
#include "desk/SignalNames.h"
#include "ipc_common_soc/CanServiceWire.h"
#include "ipc_common_soc/ServiceName.h"

namespace qvn::testing {

using sync::MutexLock;

class TestService::Server : public CBaseServer {
public:
    explicit Server(TestService& service) : CBaseServer(wire::kServiceName, &service.mWorker), mService(service) {}
    ~Server() override { prepareDestroy(); }

    void ask(FdbSessionId_t session) {
        can_service::BroadcastMessageStatus nothing;
        CFdbProtoMsgBuilder builder(nothing);
        invoke(session, 0, builder);
    }

protected:
    void onSubscribe(CBaseJob::Ptr& job) override {
        auto* const message = castToMessage<CFdbMessage*>(job);
        const MutexLock lock(mService.mMutex);
        std::vector<std::uint32_t> answered;
        for (const std::uint32_t code : tools::SignalStore::codesOf(*message)) {
            if (mService.mStore.answer(*message, code)) {
                answered.push_back(code);
            }
        }
        Client& client = mService.mClients[message->session()];
        client.subscription = job;
        client.unanswered.push_back({"`changed` or `status`", std::move(answered)});
        ask(message->session());
        mService.mChanged.notify_all();
    }

    void onStatus(CBaseJob::Ptr& job, std::int32_t, const char*) override {
        const MutexLock lock(mService.mMutex);
        const auto client = mService.mClients.find(castToMessage<CFdbMessage*>(job)->session());
        if (client != mService.mClients.end() && !client->second.unanswered.empty()) {
            client->second.unanswered.pop_front();
            mService.mChanged.notify_all();
        }
    }

    void onOffline(FdbSessionId_t session, bool) override {
        const MutexLock lock(mService.mMutex);
        mService.mClients.erase(session);
        mService.mChanged.notify_all();
    }

    void onInvoke(CBaseJob::Ptr& job) override {
        const auto* const message = castToMessage<CFdbMessage*>(job);
        can_service::SetSignalValueRequest request;
        if (wire::read(*message, request)) {
            const MutexLock lock(mService.mMutex);
            mService.mSets[static_cast<std::uint32_t>(message->code())].all.push_back(request.raw_value());
            mService.mChanged.notify_all();
        }
    }

private:
    TestService& mService;
};

void TestService::takeBus() {
    if (!FDB_CONTEXT->start()) {
        throw std::runtime_error(
            "the bus is in use already: something has called VehicleClient::getInstance(), or uses the bus itself, in "
            "the runtime directory from before the TestVehicle; make the TestVehicle first, as a member of the "
            "fixture");
    }
}

TestService::TestService() : mWorker("test-service") {
    mWorker.start();
}

TestService::~TestService() {
    goDown();
    mWorker.exit();
    mWorker.join();
}

void TestService::goUp() {
    if (mServer) {
        return;
    }
    auto server = std::make_unique<Server>(*this);
    server->bind(wire::serviceAddress(wire::kServiceName).c_str());
    std::string error;
    if (!tools::offersService(wire::kServiceName, &error)) {
        throw std::runtime_error(error);
    }
    mServer = std::move(server);
}

void TestService::goDown() {
    mServer.reset();
    const MutexLock lock(mMutex);
    mClients.clear();
}

void TestService::putSignal(std::uint32_t code, const std::string& raw) {
    mWorker.flush();  // the question behind the value before is on its way
    const MutexLock lock(mMutex);
    mStore.putSignal(code, {raw, std::nullopt});
    publish("`changed`", code, wire::signalMessage(raw));
}

void TestService::putMessageStatus(std::uint32_t code, std::uint32_t status) {
    mWorker.flush();
    const MutexLock lock(mMutex);
    mStore.putMessageStatus(code, status);
    publish(status == wire::kMessageOk ? "`status` or `changed`" : "`status`", code, wire::statusMessage(status));
}

/// To each client by itself: a broadcast would also reach one that is about to be answered, which then had the value
/// twice.
template <class Message>
void TestService::publish(const char* callback, std::uint32_t code, const Message& message) {
    for (auto& client : mClients) {
        tools::SignalStore::send(*castToMessage<CFdbMessage*>(client.second.subscription), code, message);
    }
    askAll({callback, {code}});
}

void TestService::askAll(const Question& question) {
    for (auto& [session, client] : mClients) {
        client.unanswered.push_back(question);
        mServer->ask(session);
    }
}

bool TestService::waitForClient(Deadline deadline) {
    MutexLock lock(mMutex);
    return mChanged.wait_until(lock.native(), deadline, [this]() QVN_REQUIRES(mMutex) { return !mClients.empty(); });
}

bool TestService::waitUntilHandled(Deadline deadline) {
    MutexLock lock(mMutex);
    askAll({});  // for what clients have set
    return mChanged.wait_until(lock.native(), deadline, [this]() QVN_REQUIRES(mMutex) {
        return std::all_of(mClients.begin(), mClients.end(),
                           [](const auto& client) { return client.second.unanswered.empty(); });
    });
}

std::string TestService::runningCallback() {
    const MutexLock lock(mMutex);
    for (const auto& client : mClients) {
        for (const Question& question : client.second.unanswered) {
            std::string names;
            for (const std::uint32_t code : question.codes) {
                names += (names.empty() ? "" : " or ") + tools::signalName(code);
            }
            if (!names.empty()) {
                return question.callback + " for " + names;
            }
        }
    }
    return {};
}

std::optional<std::string> TestService::lastSet(std::uint32_t code) {
    const MutexLock lock(mMutex);
    const auto sets = mSets.find(code);
    return sets == mSets.end() || sets->second.all.empty() ? std::nullopt : std::optional(sets->second.all.back());
}

std::optional<std::string> TestService::nextSet(std::uint32_t code, Deadline deadline) {
    MutexLock lock(mMutex);
    Sets& sets = mSets[code];
    const auto isThere = [&sets] { return sets.returned < sets.all.size(); };
    if (!mChanged.wait_until(lock.native(), deadline, isThere)) {
        return std::nullopt;
    }
    return sets.all[sets.returned++];
}

}  // namespace qvn::testing

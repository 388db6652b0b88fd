#include "TestService.h"

#include <algorithm>
#include <stdexcept>

#include "desk/DeskPlatform.h"
#include "ipc_common_soc/CanServiceWire.h"
#include "ipc_common_soc/ServiceName.h"

namespace qvn::testing {

using sync::MutexLock;

class TestService::Server : public CBaseServer {
public:
    explicit Server(TestService& service) : CBaseServer(wire::kServiceName, &service.mWorker), mService(service) {}
    ~Server() override { prepareDestroy(); }

protected:
    void onSubscribe(CBaseJob::Ptr& job) override {
        auto* const message = castToMessage<CFdbMessage*>(job);
        const MutexLock lock(mService.mMutex);
        const CFdbMsgSubscribeItem* item = nullptr;
        FDB_BEGIN_FOREACH_SIGNAL(message, item) {
            mService.answer(*message, static_cast<std::uint32_t>(item->msg_code()));
        }
        FDB_END_FOREACH_SIGNAL();
        mService.mUnanswered.emplace(message->session(), 0);
        mService.mChanged.notify_all();
    }

    void onStatus(CBaseJob::Ptr& job, std::int32_t, const char*) override {
        const MutexLock lock(mService.mMutex);
        const auto client = mService.mUnanswered.find(castToMessage<CFdbMessage*>(job)->session());
        if (client != mService.mUnanswered.end()) {
            --client->second;
            mService.mChanged.notify_all();
        }
    }

    void onOffline(FdbSessionId_t session, bool) override {
        const MutexLock lock(mService.mMutex);
        mService.mUnanswered.erase(session);
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

TestService::TestService() : mWorker("test-service") {
    if (!FDB_CONTEXT->start()) {
        throw std::runtime_error(
            "the bus is in use already: something has called VehicleClient::getInstance() before the TestVehicle was "
            "made; make the TestVehicle first, as a member of the fixture");
    }
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
    server->bind((std::string("svc://") + wire::kServiceName).c_str());
    std::string error;
    if (!tools::offersService(wire::kServiceName, &error)) {
        throw std::runtime_error(error);
    }
    mServer = std::move(server);
}

void TestService::goDown() {
    mServer.reset();
    const MutexLock lock(mMutex);
    mUnanswered.clear();
}

void TestService::putSignal(const std::string& name, std::uint32_t code, const std::string& raw) {
    const MutexLock lock(mMutex);
    mValues[code] = raw;
    publish(name, code, wire::signalMessage(raw));
}

void TestService::putMessageStatus(const std::string& name, std::uint32_t code, std::uint32_t status) {
    const MutexLock lock(mMutex);
    mStatuses[code] = status;
    publish(name, code, wire::statusMessage(status));
}

template <class Message>
void TestService::publish(const std::string& name, std::uint32_t code, const Message& message) {
    if (std::find(mUnhandled.begin(), mUnhandled.end(), name) == mUnhandled.end()) {
        mUnhandled.push_back(name);
    }
    if (mServer && !mUnanswered.empty()) {  // a client that is still to be answered gets the value then
        CFdbProtoMsgBuilder builder(message);
        mServer->broadcast(static_cast<FdbMsgCode_t>(code), builder);
    }
}

void TestService::answer(CFdbMessage& subscription, std::uint32_t code) {
    const auto send = [&](const auto& message) {
        CFdbProtoMsgBuilder builder(message);
        subscription.broadcast(static_cast<FdbMsgCode_t>(code), builder);
    };
    if (const auto value = mValues.find(code); value != mValues.end()) {
        send(wire::signalMessage(value->second));
    }
    if (const auto status = mStatuses.find(code); status != mStatuses.end()) {
        send(wire::statusMessage(status->second));
    }
}

bool TestService::waitForClient(Deadline deadline) {
    MutexLock lock(mMutex);
    return mChanged.wait_until(lock.native(), deadline, [this]() QVN_REQUIRES(mMutex) { return !mUnanswered.empty(); });
}

bool TestService::waitUntilHandled(Deadline deadline) {
    MutexLock lock(mMutex);
    for (auto& [session, unanswered] : mUnanswered) {
        can_service::BroadcastMessageStatus nothing;
        CFdbProtoMsgBuilder builder(nothing);
        ++unanswered;
        mServer->invoke(session, 0, builder);
    }
    const bool handled = mChanged.wait_until(lock.native(), deadline, [this]() QVN_REQUIRES(mMutex) {
        return std::all_of(mUnanswered.begin(), mUnanswered.end(),
                           [](const auto& client) { return client.second == 0; });
    });
    if (handled) {
        mUnhandled.clear();
    }
    return handled;
}

std::string TestService::unhandled() {
    const MutexLock lock(mMutex);
    std::string names;
    for (const std::string& name : mUnhandled) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
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

#include "can-service-sim/CanService.h"

#include <algorithm>
#include <utility>

#include "desk/DeskPlatform.h"
#include "ipc_common_soc/CanServiceWire.h"
#include "ipc_common_soc/ServiceName.h"
#include "tables/DecodingRules.h"
#include "tables/MessageCatalogue.h"

namespace qvn::tools {
namespace {

bool isKnown(std::uint32_t code) {
    const auto& messages = tables::kMessages;
    return tables::findDecodingRule(code) != nullptr ||
           std::any_of(messages.begin(), messages.end(), [&](const auto& message) { return message.code == code; });
}

}  // namespace

class CanService::Server : public CBaseServer {
public:
    explicit Server(CanService& service) : CBaseServer(service.mName.c_str(), &service.mWorker), mService(service) {}
    ~Server() override { prepareDestroy(); }

    std::vector<Client> clients() const {
        const sync::MutexLock lock(mService.mMutex);
        return mClients;
    }

    template <class Message>
    void publish(std::uint32_t code, const Message& message) {
        CFdbProtoMsgBuilder builder(message);
        broadcast(static_cast<FdbMsgCode_t>(code), builder);
    }

protected:
    void onOnline(FdbSessionId_t session, bool) override {
        const sync::MutexLock lock(mService.mMutex);
        mClients.push_back({session, std::chrono::system_clock::now()});
    }

    void onOffline(FdbSessionId_t session, bool) override {
        const sync::MutexLock lock(mService.mMutex);
        mClients.erase(
            std::remove_if(mClients.begin(), mClients.end(), [&](const Client& c) { return c.id == session; }),
            mClients.end());
    }

    void onSubscribe(CBaseJob::Ptr& job) override {
        auto* const subscription = castToMessage<CFdbMessage*>(job);
        const std::vector<std::uint32_t> codes = SignalStore::codesOf(*subscription);
        for (const std::uint32_t code : codes) {
            const sync::MutexLock lock(mService.mMutex);
            mService.mStore.answer(*subscription, code);
        }
        const auto known = std::count_if(codes.begin(), codes.end(), isKnown);
        mService.mObserver.onSubscribe(codes.size(), static_cast<std::size_t>(known));
    }

    void onInvoke(CBaseJob::Ptr& job) override {
        const auto* const message = castToMessage<CFdbMessage*>(job);
        can_service::SetSignalValueRequest request;
        if (wire::read(*message, request)) {
            mService.mObserver.onSet(static_cast<std::uint32_t>(message->code()), request.raw_value());
        }
    }

private:
    CanService& mService;
    std::vector<Client> mClients QVN_GUARDED_BY(mService.mMutex);  // gone with the server
};

CanService::CanService(std::string name, Observer observer)
    : mName(std::move(name)), mObserver(std::move(observer)), mWorker("can-service") {
    FDB_CONTEXT->start();
    mWorker.start();
}

CanService::~CanService() {
    goDown();
    // Both threads must end before their objects; the context is a static object of the bus.
    mWorker.exit();
    mWorker.join();
    FDB_CONTEXT->exit();
    FDB_CONTEXT->join();
}

bool CanService::goUp(std::string* error) {
    if (mServer) {
        return true;
    }
    auto server = std::make_unique<Server>(*this);
    // What bind() returns tells nothing: with a naming service the name is asked for in the background.
    server->bind(wire::serviceAddress(mName).c_str());
    if (!offersService(mName, error)) {
        return false;
    }
    mServer = std::move(server);
    return true;
}

void CanService::goDown() {
    mServer.reset();
}

void CanService::presetSignal(std::uint32_t code, const std::string& raw) {
    const sync::MutexLock lock(mMutex);
    mStore.putSignal(code, {raw, std::nullopt});
}

void CanService::putSignal(std::uint32_t code, const std::string& raw) {
    const sync::MutexLock lock(mMutex);
    mStore.putSignal(code, {raw, std::chrono::steady_clock::now()});
    if (mServer) {
        mServer->publish(code, wire::signalMessage(raw));
    }
}

void CanService::forgetSignal(std::uint32_t code) {
    const sync::MutexLock lock(mMutex);
    mStore.forgetSignal(code);
}

void CanService::putMessageStatus(std::uint32_t code, bool timedOut) {
    const sync::MutexLock lock(mMutex);
    const std::uint32_t status = timedOut ? wire::kMessageTimedOut : wire::kMessageOk;
    mStore.putMessageStatus(code, status);
    if (mServer) {
        mServer->publish(code, wire::statusMessage(status));
    }
}

std::optional<CanService::Value> CanService::signal(std::uint32_t code) const {
    const sync::MutexLock lock(mMutex);
    return mStore.signal(code);
}

bool CanService::isTimedOut(std::uint32_t code) const {
    const sync::MutexLock lock(mMutex);
    return mStore.messageStatus(code) == wire::kMessageTimedOut;
}

std::vector<CanService::Client> CanService::clients() const {
    return mServer ? mServer->clients() : std::vector<Client>();
}

}  // namespace qvn::tools

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
    explicit Server(CanService& service) : CBaseServer(service.name_.c_str(), &service.worker_), service_(service) {}
    ~Server() override { prepareDestroy(); }

    std::vector<Client> clients() const {
        const sync::MutexLock lock(service_.mutex_);
        return clients_;
    }

    template <class Message>
    void publish(std::uint32_t code, const Message& message) {
        CFdbProtoMsgBuilder builder(message);
        broadcast(static_cast<FdbMsgCode_t>(code), builder);
    }

protected:
    void onOnline(FdbSessionId_t session, bool) override {
        const sync::MutexLock lock(service_.mutex_);
        clients_.push_back({session, std::chrono::system_clock::now()});
    }

    void onOffline(FdbSessionId_t session, bool) override {
        const sync::MutexLock lock(service_.mutex_);
        clients_.erase(
            std::remove_if(clients_.begin(), clients_.end(), [&](const Client& c) { return c.id == session; }),
            clients_.end());
    }

    void onSubscribe(CBaseJob::Ptr& job) override {
        auto* const subscription = castToMessage<CFdbMessage*>(job);
        const std::vector<std::uint32_t> codes = SignalStore::codesOf(*subscription);
        for (const std::uint32_t code : codes) {
            const sync::MutexLock lock(service_.mutex_);
            service_.store_.answer(*subscription, code);
        }
        const auto known = std::count_if(codes.begin(), codes.end(), isKnown);
        service_.observer_.onSubscribe(codes.size(), static_cast<std::size_t>(known));
    }

    void onInvoke(CBaseJob::Ptr& job) override {
        const auto* const message = castToMessage<CFdbMessage*>(job);
        can_service::SetSignalValueRequest request;
        if (wire::read(*message, request)) {
            service_.observer_.onSet(static_cast<std::uint32_t>(message->code()), request.raw_value());
        }
    }

private:
    CanService& service_;
    std::vector<Client> clients_ QVN_GUARDED_BY(service_.mutex_);  // gone with the server
};

CanService::CanService(std::string name, Observer observer)
    : name_(std::move(name)), observer_(std::move(observer)), worker_("can-service") {
    FDB_CONTEXT->start();
    worker_.start();
}

CanService::~CanService() {
    goDown();
    // Both threads must end before their objects; the context is a static object of the bus.
    worker_.exit();
    worker_.join();
    FDB_CONTEXT->exit();
    FDB_CONTEXT->join();
}

bool CanService::goUp(std::string* error) {
    if (server_) {
        return true;
    }
    auto server = std::make_unique<Server>(*this);
    // What bind() returns tells nothing: with a naming service the name is asked for in the background.
    server->bind(wire::serviceAddress(name_).c_str());
    if (!offersService(name_, error)) {
        return false;
    }
    server_ = std::move(server);
    return true;
}

void CanService::goDown() {
    server_.reset();
}

void CanService::presetSignal(std::uint32_t code, const std::string& raw) {
    const sync::MutexLock lock(mutex_);
    store_.putSignal(code, {raw, std::nullopt});
}

void CanService::putSignal(std::uint32_t code, const std::string& raw) {
    const sync::MutexLock lock(mutex_);
    store_.putSignal(code, {raw, std::chrono::steady_clock::now()});
    if (server_) {
        server_->publish(code, wire::signalMessage(raw));
    }
}

void CanService::forgetSignal(std::uint32_t code) {
    const sync::MutexLock lock(mutex_);
    store_.forgetSignal(code);
}

void CanService::putMessageStatus(std::uint32_t code, bool timedOut) {
    const sync::MutexLock lock(mutex_);
    const std::uint32_t status = timedOut ? wire::kMessageTimedOut : wire::kMessageOk;
    store_.putMessageStatus(code, status);
    if (server_) {
        server_->publish(code, wire::statusMessage(status));
    }
}

std::optional<CanService::Value> CanService::signal(std::uint32_t code) const {
    const sync::MutexLock lock(mutex_);
    return store_.signal(code);
}

bool CanService::isTimedOut(std::uint32_t code) const {
    const sync::MutexLock lock(mutex_);
    return store_.messageStatus(code) == wire::kMessageTimedOut;
}

std::vector<CanService::Client> CanService::clients() const {
    return server_ ? server_->clients() : std::vector<Client>();
}

}  // namespace qvn::tools

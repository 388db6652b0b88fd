#pragma once

#include <common_base/fdbus.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/SignalStore.h"
#include "sync/Mutex.h"

namespace qvn::tools {

/// The CAN service as its clients see it: the current value of every signal and the status of every message. It keeps
/// them while it is off the bus, too. All members are called from one thread.
class CanService {
public:
    /// What clients do, told on the service's own thread.
    struct Observer {
        std::function<void(std::uint32_t code, const std::string& raw)> onSet;
        /// @param known how many of the codes are signals or messages that there are
        std::function<void(std::size_t codes, std::size_t known)> onSubscribe;
    };

    /// What is known of a signal; its time is that of the last putSignal().
    using Value = SignalStore::Value;

    /// A session of a client.
    struct Client {
        FdbSessionId_t id;
        std::chrono::system_clock::time_point since;
    };

    CanService(std::string name, Observer observer);
    ~CanService();
    CanService(const CanService&) = delete;
    CanService& operator=(const CanService&) = delete;

    /// Offers the service. False when that is known to have failed; `error` is one sentence for the user then.
    bool goUp(std::string* error);
    /// Withdraws the service; every client goes offline.
    void goDown();
    bool isUp() const { return mServer != nullptr; }

    /// Gives a signal a value that nobody has sent. Before the service is offered.
    void presetSignal(std::uint32_t code, const std::string& raw);
    /// Keeps a signal's value and broadcasts it.
    void putSignal(std::uint32_t code, const std::string& raw);
    /// Knows no value of a signal any more.
    void forgetSignal(std::uint32_t code);
    /// Keeps a message's status and broadcasts it.
    void putMessageStatus(std::uint32_t code, bool timedOut);

    /// The signal's present value, if it has one.
    std::optional<Value> signal(std::uint32_t code) const;
    /// Whether the message's last status was a time-out.
    bool isTimedOut(std::uint32_t code) const;
    /// Who is connected, the oldest first.
    std::vector<Client> clients() const;

private:
    class Server;

    std::string mName;
    Observer mObserver;
    mutable sync::Mutex mMutex;  // held while a value is kept and sent
    SignalStore mStore QVN_GUARDED_BY(mMutex);
    CBaseWorker mWorker;
    std::unique_ptr<Server> mServer;
};

}  // namespace qvn::tools

#pragma once

#include <common_base/fdbus.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/SignalStore.h"
#include "sync/Mutex.h"

namespace qvn::testing {

/// The CAN service as a test drives it: the current value of every signal, the status of every message, and what its
/// clients have set.
class TestService {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// Starts the process's bus, before anything of the process's environment is changed.
    /// @throws std::runtime_error when it runs already: something uses it in another runtime directory
    static void takeBus();

    TestService();
    ~TestService();
    TestService(const TestService&) = delete;
    TestService& operator=(const TestService&) = delete;

    void goUp();
    /// Clients lose what they have not read yet.
    void goDown();
    bool isUp() const { return mServer != nullptr; }

    void putSignal(std::uint32_t code, const std::string& raw);
    void putMessageStatus(std::uint32_t code, std::uint32_t status);

    /// Waits until a client has subscribed since the service came up.
    bool waitForClient(Deadline deadline);
    /// Waits until every client that has subscribed has handled all that it was sent. Clients that go meanwhile do not
    /// count.
    bool waitUntilHandled(Deadline deadline);
    /// The callback that a client is in at this moment, or is about to call: "`changed` for ESP_FD2_VehSpd". Empty when
    /// every client has handled all values.
    std::string runningCallback();

    std::optional<std::string> lastSet(std::uint32_t code);
    /// Each set once, in order.
    std::optional<std::string> nextSet(std::uint32_t code, Deadline deadline);

private:
    class Server;

    struct Sets {
        std::vector<std::string> all;
        std::size_t returned = 0;
    };

    /// A request behind what was sent, which a client answers when its callbacks for that have returned.
    struct Question {
        std::string callback;
        std::vector<std::uint32_t> codes;  ///< of what was sent since the question before
    };

    struct Client {
        CBaseJob::Ptr subscription;  ///< its message, by which the client can be sent something
        std::deque<Question> unanswered;
    };

    template <class Message>
    void publish(const char* callback, std::uint32_t code, const Message& message) QVN_REQUIRES(mMutex);
    void askAll(const Question& question) QVN_REQUIRES(mMutex);

    CBaseWorker mWorker;
    std::unique_ptr<Server> mServer;

    // Held while a value is kept and sent, so that each client gets each value once.
    sync::Mutex mMutex;
    std::condition_variable mChanged;
    tools::SignalStore mStore QVN_GUARDED_BY(mMutex);
    std::map<std::uint32_t, Sets> mSets QVN_GUARDED_BY(mMutex);
    std::map<FdbSessionId_t, Client> mClients QVN_GUARDED_BY(mMutex);  // that have subscribed
};

}  // namespace qvn::testing

#pragma once

#include <common_base/fdbus.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sync/Mutex.h"

namespace qvn::testing {

/// The CAN service as a test drives it: the current value of every signal, the status of every message, and what its
/// clients have set.
class TestService {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    TestService();
    ~TestService();
    TestService(const TestService&) = delete;
    TestService& operator=(const TestService&) = delete;

    void goUp();
    /// Clients lose what they have not read yet.
    void goDown();
    bool isUp() const { return mServer != nullptr; }

    /// @param name for the report of a callback that does not return
    void putSignal(const std::string& name, std::uint32_t code, const std::string& raw);
    void putMessageStatus(const std::string& name, std::uint32_t code, std::uint32_t status);

    /// Waits until a client has subscribed since the service came up.
    bool waitForClient(Deadline deadline);
    /// Waits until every client that has subscribed has handled all that it was sent. Clients that go meanwhile do not
    /// count.
    bool waitUntilHandled(Deadline deadline);
    /// What clients were sent since they had last handled everything: "ESP_FD2_VehSpd, HAP_FD3".
    std::string unhandled();

    std::optional<std::string> lastSet(std::uint32_t code);
    /// Each set once, in order.
    std::optional<std::string> nextSet(std::uint32_t code, Deadline deadline);

private:
    class Server;

    struct Sets {
        std::vector<std::string> all;
        std::size_t returned = 0;
    };

    template <class Message>
    void publish(const std::string& name, std::uint32_t code, const Message& message) QVN_REQUIRES(mMutex);
    void answer(CFdbMessage& subscription, std::uint32_t code) QVN_REQUIRES(mMutex);

    CBaseWorker mWorker;
    std::unique_ptr<Server> mServer;

    // Held while a value is kept and sent, so that each client gets each value once.
    sync::Mutex mMutex;
    std::condition_variable mChanged;
    std::map<std::uint32_t, std::string> mValues QVN_GUARDED_BY(mMutex);
    std::map<std::uint32_t, std::uint32_t> mStatuses QVN_GUARDED_BY(mMutex);
    std::map<std::uint32_t, Sets> mSets QVN_GUARDED_BY(mMutex);
    std::vector<std::string> mUnhandled QVN_GUARDED_BY(mMutex);        // names, each once
    std::map<FdbSessionId_t, int> mUnanswered QVN_GUARDED_BY(mMutex);  // requests to each client that has subscribed
};

}  // namespace qvn::testing

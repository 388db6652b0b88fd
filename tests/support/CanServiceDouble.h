#pragma once

#include <common_base/fdbus.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "support/Journal.h"

namespace qvn::test {

struct DoubleWorker {
    DoubleWorker() {
        FDB_CONTEXT->start();
        serviceWorker.start();
    }
    CBaseWorker serviceWorker;
};

/// A set request as it arrived.
struct SetRequest {
    int code;
    std::string raw;
};

inline bool operator==(const SetRequest& a, const SetRequest& b) {
    return a.code == b.code && a.raw == b.raw;
}
std::ostream& operator<<(std::ostream& out, const SetRequest& request);

/// A CAN service in the test's own process, on the real bus.
class CanServiceDouble : private DoubleWorker, public CBaseServer {
public:
    CanServiceDouble();
    ~CanServiceDouble() override;

    /// Waits until clients have subscribed that often; false after a long time.
    bool waitForSubscriptions(std::size_t count) { return subscriptions.waitForSize(count); }
    /// The value that a subscriber of the signal gets at once.
    void setInitialValue(std::uint32_t code, std::string raw);

    void signal(std::uint32_t code, const std::string& raw);
    void messageStatus(std::uint32_t code, std::uint32_t status);
    /// A payload of any bytes.
    void payload(std::uint32_t code, const std::string& bytes);

    /// The codes of every subscribe call, and every set request.
    Journal<std::vector<std::uint32_t>> subscriptions;
    Journal<SetRequest> requests;

protected:
    void onSubscribe(CBaseJob::Ptr& job) override;
    void onInvoke(CBaseJob::Ptr& job) override;

private:
    std::mutex mMutex;
    std::map<std::uint32_t, std::string> mInitialValues;
};

}  // namespace qvn::test

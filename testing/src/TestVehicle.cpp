#include "vehicle_testing/TestVehicle.h"

#include <vehicle/VehicleSession.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "MarkerLine.h"
#include "TestService.h"
#include "Watchdog.h"
#include "desk/BadInput.h"
#include "desk/DeskPlatform.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
#include "host/ServiceSocket.h"
#include "ipc_common_soc/CanServiceWire.h"
#include "ipc_common_soc/ServiceName.h"
#include "tables/DecodingRules.h"
#include "tables/SetCatalogue.h"

namespace qvn::testing {
namespace {

using Clock = std::chrono::steady_clock;
using tools::NameKind;

/// A frame of the bus has 16 MiB at most, and some of it is the message around the bytes.
constexpr std::size_t kMostBytes = std::size_t{15} * 1024 * 1024;

constexpr std::chrono::seconds kServicePatience(10);

const char kLineCallback[] = "`changed` for the reverse line";

/// What a developer has set for a desk would make a test's outcome depend on who runs it.
constexpr const char* kOfDeveloper[] = {"QVN_HOST_CONFIG", "QVN_HOST_QUEUE_MIB", "QVN_LOG_LEVEL", "QVN_LOG_FILE"};

/// The runtime directory, for as long as this lives.
class RuntimeDir {
public:
    RuntimeDir() : mPath((std::filesystem::temp_directory_path() / "qvn-vehicle-XXXXXX").string()) {
        if (::mkdtemp(mPath.data()) == nullptr) {
            throw std::runtime_error("cannot make the directory " + mPath + ": " + std::strerror(errno) +
                                     "; set TMPDIR to a folder that you can write to");
        }
        ::setenv("QVN_HOST_DIR", mPath.c_str(), 1);
        for (const char* const ofDeveloper : kOfDeveloper) {
            ::unsetenv(ofDeveloper);
        }
    }
    ~RuntimeDir() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    RuntimeDir(const RuntimeDir&) = delete;
    RuntimeDir& operator=(const RuntimeDir&) = delete;

private:
    std::string mPath;
};

void refuseSecondVehicle() {
    static std::atomic<bool> made{false};
    if (made.exchange(true)) {
        throw std::runtime_error(
            "there was a TestVehicle in this process already, and the application's client stays with the first one; "
            "run every test case in a process of its own, as ctest does with qvn_add_vehicle_test()");
    }
}

const tables::SetRow& settable(const std::string& signal) {
    const tables::SetRow* const row = tables::findSetSignal(tools::findCode(NameKind::Settable, signal));
    if (row == nullptr) {
        throw std::runtime_error("signal " + signal + " cannot be set; give the name of one that can");
    }
    return *row;
}

/// A wait, from now on.
struct Wait {
    explicit Wait(TestVehicle::Patience patience) : most(patience.duration()), end(Clock::now() + most) {}
    std::string after() const { return " after " + std::to_string(most.count()) + " ms"; }

    const TestVehicle::Duration most;
    const Clock::time_point end;
};

[[noreturn]] void throwHang(const std::string& callback, const Wait& wait) {
    throw std::runtime_error(
        (callback.empty() ? "the application's client has not answered" : callback + " has not returned") +
        wait.after() + "; look for what it waits for");
}

std::optional<int> decoded(const tables::SetRow& row, const std::optional<std::string>& raw) {
    return raw ? tools::decodeSet(row, *raw) : std::nullopt;
}

}  // namespace

class TestVehicle::Impl {
public:
    Impl() {
        if (!host::serviceSocketPath(wire::kServiceName, nullptr, nullptr)) {
            throw std::runtime_error(
                "the temporary folder's path is too long for a socket; set TMPDIR to a shorter one");
        }
        MarkerLine::instance().watch();
        mService.goUp();
        mWatchdog.emplace([this] { return whatHangs(); });
    }

    TestService& service() { return mService; }

    void reverse(bool engaged) {
        std::string error;
        if (tools::writeReverseLine(engaged, &error) != tools::LineWrite::Done) {
            throw std::runtime_error(error);
        }
        mLineMoved = true;
    }

    void serviceUp() {
        mService.goUp();
        if (mHadClient) {
            awaitClient(Wait(kServicePatience));
        }
    }

    void serviceDown() {
        if (mService.isUp()) {
            awaitCallbacks(Wait(kServicePatience));
            mHadClient = mHadClient || mService.waitForClient(Clock::now());
            mService.goDown();
        }
    }

    void settle(const Wait& wait) {
        if (mLineMoved && !MarkerLine::instance().waitUntilHandled(wait.end)) {
            throwHang(kLineCallback, wait);
        }
        mLineMoved = false;
        if (mService.isUp()) {
            awaitClient(wait);
            awaitCallbacks(wait);
        } else if (!platform::vehicle::VehicleSession::waitForService(false, wait.end)) {
            throwHang("", wait);
        }
        awaitSessions(wait);
    }

private:
    void awaitClient(const Wait& wait) {
        if (!mService.waitForClient(wait.end)) {
            throw std::runtime_error("no client has connected" + wait.after() +
                                     "; the application must call VehicleClient::getInstance(), and not before the "
                                     "TestVehicle is made");
        }
    }

    void awaitCallbacks(const Wait& wait) {
        if (!mService.waitUntilHandled(wait.end)) {
            throwHang(mService.runningCallback(), wait);
        }
    }

    /// What their handlers set is on its way to the service then.
    void awaitSessions(const Wait& wait) {
        const std::string handler = busyHandler(wait.end);
        if (!handler.empty()) {
            throwHang(handler, wait);
        }
        if (mService.isUp()) {
            awaitCallbacks(wait);
        }
    }

    /// The handler that a session is in at the deadline; empty when all have returned.
    static std::string busyHandler(Clock::time_point deadline) {
        std::string property;
        const bool idle = platform::vehicle::VehicleSession::waitUntilIdle(deadline, &property);
        return idle ? "" : "a session's handler for " + property;
    }

    /// For the watchdog, on its thread.
    std::string whatHangs() {
        const auto aMoment = Clock::now() + std::chrono::seconds(1);
        const bool lineHangs = mLineMoved && !MarkerLine::instance().waitUntilHandled(aMoment);
        const std::string client = lineHangs ? kLineCallback : mService.runningCallback();
        const std::string callback = client.empty() ? busyHandler(aMoment) : client;
        return callback.empty() ? "no callback of the application is running; look for what the test itself waits for"
                                : callback + " has not returned; look for what it waits for";
    }

    RuntimeDir mDirectory;
    TestService mService;
    std::atomic<bool> mLineMoved{false};  // since the last settle()
    bool mHadClient = false;              // when the service last went down
    std::optional<Watchdog> mWatchdog;
};

TestVehicle::TestVehicle() {
    refuseSecondVehicle();
    TestService::takeBus();
    mImpl = std::make_unique<Impl>();
}

TestVehicle::~TestVehicle() = default;

void TestVehicle::set(const std::string& signal, double value) {
    const std::uint32_t code = tools::findCode(NameKind::Received, signal);
    const tables::DecodingRow* const rule = tables::findDecodingRule(code);
    if (rule == nullptr) {
        throw std::runtime_error("signal " + signal + " has no rule for its value; use setRaw()");
    }
    try {
        mImpl->service().putSignal(code, tools::encodePhysical(*rule, value));
    } catch (const tools::BadInput& error) {
        throw std::runtime_error("signal " + signal + ": " + error.what());
    }
}

void TestVehicle::setRaw(const std::string& signal, const std::vector<std::uint8_t>& bytes) {
    const std::uint32_t code = tools::findCode(NameKind::Received, signal);
    if (bytes.size() > kMostBytes) {
        throw std::runtime_error("signal " + signal + ": " + std::to_string(bytes.size()) +
                                 " bytes are more than the bus carries; expected at most " +
                                 std::to_string(kMostBytes));
    }
    mImpl->service().putSignal(code, std::string(bytes.begin(), bytes.end()));
}

void TestVehicle::timeOut(const std::string& message) {
    mImpl->service().putMessageStatus(tools::findCode(NameKind::Message, message), wire::kMessageTimedOut);
}

void TestVehicle::recover(const std::string& message) {
    mImpl->service().putMessageStatus(tools::findCode(NameKind::Message, message), wire::kMessageOk);
}

void TestVehicle::reverse(bool engaged) {
    mImpl->reverse(engaged);
}

void TestVehicle::serviceDown() {
    mImpl->serviceDown();
}

void TestVehicle::serviceUp() {
    mImpl->serviceUp();
}

void TestVehicle::settle(Patience patience) {
    mImpl->settle(Wait(patience));
}

std::optional<int> TestVehicle::lastSet(const std::string& signal) {
    const tables::SetRow& row = settable(signal);
    return decoded(row, mImpl->service().lastSet(row.code));
}

std::optional<int> TestVehicle::waitForSet(const std::string& signal, Patience patience) {
    const tables::SetRow& row = settable(signal);
    return decoded(row, mImpl->service().nextSet(row.code, Wait(patience).end));
}

}  // namespace qvn::testing

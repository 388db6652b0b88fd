#include "vehicle_testing/TestVehicle.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "MarkerLine.h"
#include "TestService.h"
#include "Watchdog.h"
#include "desk/BadInput.h"
#include "desk/DeskPlatform.h"
#include "desk/PhysicalValue.h"
#include "desk/SignalNames.h"
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

/// The runtime directory, for as long as this lives.
class RuntimeDir {
public:
    RuntimeDir() : mPath((std::filesystem::temp_directory_path() / "qvn-vehicle-XXXXXX").string()) {
        if (::mkdtemp(mPath.data()) == nullptr) {
            throw std::runtime_error("cannot make the directory " + mPath + ": " + std::strerror(errno) +
                                     "; set TMPDIR to a folder that you can write to");
        }
        ::setenv("QVN_HOST_DIR", mPath.c_str(), 1);
        ::unsetenv("QVN_HOST_CONFIG");  // the developer's own variant
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

/// No test waits longer than a day, and the clock takes no more than some centuries.
Clock::time_point deadlineAfter(TestVehicle::Duration patience) {
    return Clock::now() + std::min<TestVehicle::Duration>(patience, std::chrono::hours(24));
}

std::optional<int> decoded(const tables::SetRow& row, const std::optional<std::string>& raw) {
    return raw ? tools::decodeSet(row, *raw) : std::nullopt;
}

}  // namespace

class TestVehicle::Impl {
public:
    Impl() {
        std::string error;
        if (!tools::prepareDesk(wire::kServiceName, &error)) {
            throw std::runtime_error(error);
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

    void settle(Duration patience) {
        const Clock::time_point deadline = deadlineAfter(patience);
        if (mLineMoved && !MarkerLine::instance().waitUntilHandled(deadline)) {
            throw std::runtime_error("a callback for the reverse line has not returned" + after(patience));
        }
        mLineMoved = false;
        if (!mService.isUp()) {
            return;
        }
        if (!mService.waitForClient(deadline)) {
            throw std::runtime_error("no client has connected" + after(patience) +
                                     "; the application must call VehicleClient::getInstance(), and not before the "
                                     "TestVehicle is made");
        }
        if (!mService.waitUntilHandled(deadline)) {
            throw std::runtime_error(whatHangs() + after(patience) + "; look for what it waits for");
        }
    }

private:
    std::string whatHangs() {
        const std::string names = mService.unhandled();
        return "a callback of the application has not returned" + (names.empty() ? "" : " for " + names);
    }
    static std::string after(Duration patience) { return " after " + std::to_string(patience.count()) + " ms"; }

    RuntimeDir mDirectory;
    TestService mService;
    bool mLineMoved = false;  // since the last settle()
    std::optional<Watchdog> mWatchdog;
};

TestVehicle::TestVehicle() {
    refuseSecondVehicle();
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
        mImpl->service().putSignal(signal, code, tools::encodePhysical(*rule, value));
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
    mImpl->service().putSignal(signal, code, std::string(bytes.begin(), bytes.end()));
}

void TestVehicle::timeOut(const std::string& message) {
    mImpl->service().putMessageStatus(message, tools::findCode(NameKind::Message, message), wire::kMessageTimedOut);
}

void TestVehicle::recover(const std::string& message) {
    mImpl->service().putMessageStatus(message, tools::findCode(NameKind::Message, message), wire::kMessageOk);
}

void TestVehicle::reverse(bool engaged) {
    mImpl->reverse(engaged);
}

void TestVehicle::serviceDown() {
    if (mImpl->service().isUp()) {
        mImpl->service().waitUntilHandled(Clock::now() + std::chrono::seconds(10));
        mImpl->service().goDown();
    }
}

void TestVehicle::serviceUp() {
    mImpl->service().goUp();
}

void TestVehicle::settle(Duration patience) {
    mImpl->settle(patience);
}

std::optional<int> TestVehicle::lastSet(const std::string& signal) {
    const tables::SetRow& row = settable(signal);
    return decoded(row, mImpl->service().lastSet(row.code));
}

std::optional<int> TestVehicle::waitForSet(const std::string& signal, Duration patience) {
    const tables::SetRow& row = settable(signal);
    return decoded(row, mImpl->service().nextSet(row.code, deadlineAfter(patience)));
}

}  // namespace qvn::testing

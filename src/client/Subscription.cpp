#include <algorithm>
#include <utility>
#include <vector>

#include "canservice/FdbusServiceManager.h"
#include "client/VehicleClientImpl.h"
#include "log/Log.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

constexpr int kClockFailedLine = 179;

/// Counts instead of stopping at the first one, which lets the compiler compare several at a time.
bool contains(const std::vector<int>& ids, int id) {
    int matches = 0;
    for (const int candidate : ids) {
        matches += candidate == id ? 1 : 0;
    }
    return matches != 0;
}

}  // namespace

/// Holds cacheMutex for a dispatch. An application may subscribe from inside its callback, which dispatches the reverse
/// line's level on the thread that holds the mutex already; that inner dispatch goes on under the outer one's lock.
/// The analysis does not follow the condition: to it the mutex is taken here in both cases.
class QVN_SCOPED_LOCK VehicleClientImpl::DispatchLock {
public:
    explicit DispatchLock(VehicleClientImpl& core) QVN_ACQUIRE(core.cacheMutex) QVN_UNCHECKED_LOCKING
        : mCore(core),
          mOutermost(core.dispatchThread.load(std::memory_order_relaxed) != std::this_thread::get_id()) {
        if (mOutermost) {
            mCore.cacheMutex.lock();
            mCore.dispatchThread.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
    }
    ~DispatchLock() QVN_RELEASE() QVN_UNCHECKED_LOCKING {
        if (mOutermost) {
            mCore.dispatchThread.store(std::thread::id(), std::memory_order_relaxed);
            mCore.cacheMutex.unlock();
        }
    }
    DispatchLock(const DispatchLock&) = delete;
    DispatchLock& operator=(const DispatchLock&) = delete;

private:
    VehicleClientImpl& mCore;
    const bool mOutermost;
};

bool VehicleClientImpl::subscribe(PropertyChangedCallback changed, std::vector<int> properties,
                                  SetErrorCallback status) {
    if (!serviceManager) {
        QVN_LOG(Error, "[%s][%d]vehicle client is not initialized, subscribe refused!");
        return false;
    }
    std::uint64_t number = 0;
    {
        const sync::MutexLock state(stateMutex);
        propertyChangedCallback = changed;
        setErrorCallback = status;
        subscribedIds = std::move(properties);
        number = ++subscriptionNumber;
    }
    // Of two subscriptions at once each of these places must keep the same one: the one with the higher number.
    serviceManager->registerErrSignalCallback(status, number);
    serviceManager->registerAvailableSignalCallabck(
        [this](VehicleProperty property) { availableSignalCallback(property); });
    return true;
}

bool VehicleClientImpl::unsubscribe(PropertyChangedCallback, std::vector<int>) {
    const sync::MutexLock lock(cacheMutex);
    const sync::MutexLock state(stateMutex);
    propertyChangedCallback = nullptr;
    setErrorCallback = nullptr;
    subscribedIds.clear();
    return true;
}

void VehicleClientImpl::dispatchSingal(VehiclePropValue value, PropertyType type) {
    const DispatchLock lock(*this);
    if (!getTimestamp(value.timestamp)) {
        value.timestamp = 0;
        QVN_LOG_AT(Error, kClockFailedLine, "[%s][%d]get time failed, set default timestamp = [0]!");
    }

    PropertyChangedCallback callback = nullptr;
    {
        const sync::MutexLock state(stateMutex);
        const auto matches = [&value](const VehicleClientProperty& record) {
            return record.propValue.prop == value.prop;
        };
        for (auto record = std::find_if(propertyCache.begin(), propertyCache.end(), matches);
             record != propertyCache.end(); record = std::find_if(record + 1, propertyCache.end(), matches)) {
            record->propValue = value;
            record->propertyType = type;
        }
        if (contains(subscribedIds, value.prop)) {
            callback = propertyChangedCallback;
        }
    }
    if (callback != nullptr) {
        callback(value, type);
    }
}

void VehicleClientImpl::availableSignalCallback(VehicleProperty property) {
    PropertyChangedCallback callback = nullptr;
    VehicleClientProperty copy;
    {
        const sync::MutexLock state(stateMutex);
        const auto record = std::find_if(
            propertyCache.begin(), propertyCache.end(),
            [property](const VehicleClientProperty& candidate) { return candidate.propValue.prop == property; });
        if (record == propertyCache.end() || propertyChangedCallback == nullptr) {
            return;
        }
        callback = propertyChangedCallback;
        copy = *record;
    }
    callback(std::move(copy.propValue), copy.propertyType);
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

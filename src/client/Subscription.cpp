#include <algorithm>
#include <utility>
#include <vector>

#include "canservice/FdbusServiceManager.h"
#include "client/CoreLocks.h"
#include "client/VehicleClientImpl.h"
#include "log/Log.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

// Log analysis knows the line by this function and number.
const char kDispatchFunction[] = "dispatchSingal";
constexpr int kClockFailedLine = 179;

/// Counts instead of stopping at the first one, which lets the compiler compare several at a time.
bool contains(const std::vector<int>& ids, int id) {
    int matches = 0;
    for (const int candidate : ids) {
        matches += candidate == id ? 1 : 0;
    }
    return matches != 0;
}

// On a thread inside subscribe, which must not wait for a callback that runs on another one: the application may hold
// what that callback needs.
thread_local bool insideSubscribe = false;

class InsideSubscribe {
public:
    InsideSubscribe() : mBefore(insideSubscribe) { insideSubscribe = true; }
    ~InsideSubscribe() { insideSubscribe = mBefore; }
    InsideSubscribe(const InsideSubscribe&) = delete;
    InsideSubscribe& operator=(const InsideSubscribe&) = delete;

private:
    const bool mBefore;
};

}  // namespace

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
    const InsideSubscribe inside;
    // Of two subscriptions at once each of these places must keep the same one: the one with the higher number.
    serviceManager->registerErrSignalCallback(status, number);
    serviceManager->registerAvailableSignalCallabck(
        [this](VehicleProperty property) { availableSignalCallback(property); });
    return true;
}

bool VehicleClientImpl::unsubscribe(PropertyChangedCallback, std::vector<int>) {
    const CacheLock lock(*this);
    const sync::MutexLock state(stateMutex);
    propertyChangedCallback = nullptr;
    setErrorCallback = nullptr;
    subscribedIds.clear();
    return true;
}

void VehicleClientImpl::dispatchSingal(VehiclePropValue value, PropertyType type) {
    DispatchTurn::Delivery delivery{std::move(value), type};
    if (dispatchTurn.isMine()) {
        deliver(delivery);  // for an application that subscribes inside its callback
        return;
    }
    if (!insideSubscribe) {
        dispatchTurn.take();
    } else if (!dispatchTurn.takeOrLeave(delivery)) {
        return;
    }
    Telling telling(*this);
    const DispatchLock lock(*this, telling);
    deliver(delivery);
}

void VehicleClientImpl::deliver(DispatchTurn::Delivery& delivery) {
    VehiclePropValue& value = delivery.value;
    if (!getTimestamp(value.timestamp)) {
        value.timestamp = 0;
        qvn::log::print(lgk::LogLevel::Error, kDispatchFunction, kClockFailedLine,
                        "[%s][%d]get time failed, set default timestamp = [0]!");
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
            record->propertyType = delivery.type;
        }
        if (contains(subscribedIds, value.prop)) {
            callback = propertyChangedCallback;
        }
        if (observer != nullptr) {
            willTell(value, delivery.type);
        }
    }
    if (callback != nullptr) {
        callback(std::move(value), delivery.type);
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

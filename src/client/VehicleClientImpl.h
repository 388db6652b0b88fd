#ifndef CLIENT_VEHICLE_CLIENT_IMPL_H
#define CLIENT_VEHICLE_CLIENT_IMPL_H

#include <common_base/fdbus.h>
#include <vehicle/VehicleProperty.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "canservice/ServiceObserver.h"
#include "client/DispatchTurn.h"
#include "client/VehicleObserver.h"
#include "sync/Mutex.h"

class FdbusServiceManager;

namespace qvn {
namespace platform {
namespace vehicle {

/// The client core behind VehicleClient, and the FDBus worker that the CAN service connection runs on.
///
/// One thread at a time dispatches: see DispatchTurn. Two locks: cacheMutex is held by getters, unsubscribe and
/// dispatch, there also while the application's callback runs: it keeps them apart from each other. stateMutex is a
/// leaf: it guards the cache and the few words that subscribe, the replay and the set path share with a dispatch, and
/// is never held across a call out.
class VehicleClientImpl : public CBaseWorker {
public:
    VehicleClientImpl();
    /// Must not run on the worker itself or inside a callback.
    ~VehicleClientImpl() override;

    /// Starts the worker, chooses the function and connects. Called once. If the variant cannot be read, the core
    /// stays without cache and connection.
    /// @throws std::system_error when the system has no thread to give, or no file descriptor to read the variant with
    void init();
    void deinit();
    /// One byte of variant configuration; 0 if it cannot be read.
    unsigned char readKey(const char* key);
    bool initVariant();
    void initSignalTable(FUNCTION_TYPE type);
    /// CLOCK_MONOTONIC in ns; on failure `out` is left alone.
    bool getTimestamp(long& out);

    bool getPropValue(int property, VehiclePropValue* out);
    PropertyType getPropertyType(int property);
    bool getBoolProperty(int property, bool& out);
    bool getInt32Property(int property, std::vector<int>& out);
    bool getInt64Property(int property, std::vector<long>& out);
    bool getFloatProperty(int property, std::vector<float>& out);
    bool getByteProperty(int property, std::vector<unsigned char>& out);
    bool getStringProperty(int property, std::string& out);

    bool subscribe(PropertyChangedCallback changed, std::vector<int> properties, SetErrorCallback status);
    bool unsubscribe(PropertyChangedCallback changed, std::vector<int> properties);
    /// Stamps, caches and delivers a value; on the worker, on the GPIO thread or inside subscribe. The first two wait
    /// while another thread dispatches; inside subscribe the value is left to that thread, which delivers it next.
    void dispatchSingal(VehiclePropValue value, PropertyType type);
    /// Delivers the cached value of a property again, subscribed or not.
    void availableSignalCallback(VehicleProperty property);

    bool setPropValue(int property, VehiclePropValue* value);
    bool setBoolProperty(int property, bool& value);
    bool setInt32Property(int property, std::vector<int>& value);
    bool setInt64Property(int property, std::vector<long>& value);
    bool setFloatProperty(int property, std::vector<float>& value);
    bool setByteProperty(int property, std::vector<unsigned char>& value);
    bool setStringProperty(int property, std::string& value);

    /// Has everything that is received from now on told to the observer, in place of the one before; null: to nobody.
    /// Calls to the one before may still be running.
    VehicleSnapshot observe(VehicleObserver* newObserver);
    void endObservation();
    /// Tells the observer of the reverse line, too, until the service has been reached; the present level at once.
    void observeReverseLine();

    // How the traffic of a process that exits is ended; see T21CanServiceFdbusClient.
    void stop();
    bool endCallbacks(std::chrono::steady_clock::time_point deadline);
    void leaveBus(bool callbackRuns);
    bool isInsideCallback();
    bool hasLostThread();

private:
    class CacheLock;
    class DispatchLock;
    class Telling;

    /// Told by the connection's threads. An object of its own, since those may be at it while the core's destruction
    /// begins.
    class Connection : public ServiceObserver {
    public:
        explicit Connection(VehicleClientImpl& core) : mCore(core) {}
        void serviceChanged(bool there) override { mCore.serviceChanged(there); }
        void statusReported(int property, VehiclePropertyStatus status) override {
            mCore.statusReported(property, status);
        }
        void reverseLineRead(int property, int number, long time) override {
            mCore.reverseLineRead(property, number, time);
        }

    private:
        VehicleClientImpl& mCore;
    };

    void deliver(DispatchTurn::Delivery& delivery);

    // For the observer: a value is noted while it is dispatched, taken by the thread that gives the turn back, and told
    // when that has given the locks back, too.
    void willTell(const VehiclePropValue& value, PropertyType type) QVN_REQUIRES(stateMutex);
    void takeDispatched(std::vector<PropertyState>& states) QVN_REQUIRES(cacheMutex);
    void tell(std::vector<PropertyState>& states);

    void serviceChanged(bool there);
    void statusReported(int property, VehiclePropertyStatus status);
    void reverseLineRead(int property, int number, long time);

    template <class Payload>
    bool readPayload(int property, Payload VehiclePropValue::RawValue::*payload, Payload& out);
    template <class T>
    bool sendFirst(int property, const std::vector<T>& values);
    /// False when there is no value; whether the one that there is could be sent is not told.
    template <class Sent, class Given>
    bool offerFirst(int property, const std::vector<Given>& values);
    template <class T>
    bool send(int property, T value);
    std::vector<PropertyType> cachedTypes(int property);

protected:
    PropertyChangedCallback propertyChangedCallback QVN_GUARDED_BY(stateMutex) = nullptr;
    std::vector<VehicleClientProperty> propertyCache QVN_GUARDED_BY(stateMutex);
    sync::Mutex cacheMutex;
    SetErrorCallback setErrorCallback QVN_GUARDED_BY(stateMutex) = nullptr;
    FUNCTION_TYPE functionType = FUNCTION_TYPE_NONE;
    const VehilceClientInfo* signalTable = nullptr;
    std::shared_ptr<FdbusServiceManager> serviceManager;
    std::vector<int> subscribedIds QVN_GUARDED_BY(stateMutex);

    sync::Mutex stateMutex;
    std::uint64_t subscriptionNumber QVN_GUARDED_BY(stateMutex) = 0;
    bool workerStarted = false;
    DispatchTurn dispatchTurn;

    Connection connection{*this};
    // Changed under stateMutex, so that an observer misses nothing between its snapshot and what it is told.
    std::atomic<VehicleObserver*> observer{nullptr};
    std::vector<PropertyState> dispatched QVN_GUARDED_BY(stateMutex);  // and not taken yet
    ServiceState service QVN_GUARDED_BY(stateMutex);
    std::set<int> timedOut QVN_GUARDED_BY(stateMutex);
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // CLIENT_VEHICLE_CLIENT_IMPL_H

#ifndef VEHICLE_VEHICLE_CLIENT_H
#define VEHICLE_VEHICLE_CLIENT_H

#include <vehicle/VehicleProperty.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace qvn {
namespace platform {
namespace vehicle {

class VehicleClientImpl;

/// The vehicle as an application sees it: read the last known value of a property, be told of new values, set one.
///
/// Threads: every member may be called from any thread. Callbacks run on the library's own threads (see subscribe).
/// Errors: members return false on failure, and log why they refuse a subscription or a value to set. std::bad_alloc
/// passes through; nothing else is thrown but by getInstance. If the platform's persistency is not available, the
/// instance exists but serves nothing: getters find no property, subscribe and the typed setters return false.
///
/// The end: a process may return from main, or call exit() on any thread and inside a callback. The traffic of every
/// client is ended then, before objects that were constructed before the process's first client are destroyed: a
/// callback that is running is waited for, about two seconds at most, no further one is called, and setters return
/// false. A client that is made after that serves nothing.
class QVN_VEHICLE_API VehicleClient {
public:
    /// The process's client; the first call creates it, connects in the background and returns without waiting for
    /// the CAN service. It lives until the process ends and must not be deleted.
    /// @throws std::system_error when the system is short of threads or file descriptors; it may be called again
    static VehicleClient* getInstance();

    /// A client of the application's own, beside the process's; as getInstance otherwise.
    VehicleClient();
    /// Must not run on one of the library's threads, that is, not inside a callback.
    virtual ~VehicleClient();

    VehicleClient(const VehicleClient&) = delete;
    VehicleClient& operator=(const VehicleClient&) = delete;

    /// Registers the process's only subscriber; a further call replaces both callbacks and the list. Either callback
    /// may be null. Identifiers are not checked: unknown ones just never report. Values that arrived before are not
    /// repeated: getPropValue has them. Nothing is waited for, whatever lock of its own the application holds: the
    /// earlier subscriber's callbacks may still be running when it returns.
    ///
    /// `changed` runs for each value received for a listed property, on the library's worker thread, or, before the CAN
    /// service was first reached, on the GPIO library's thread when the reverse line moves. `status` runs on the worker
    /// thread for every property of a CAN message that stops being received (VEHICLE_PROPERTY_STATUS_TIMEOUT) or is
    /// received again (VEHICLE_PROPERTY_STATUS_AVAILABLE), listed or not; in the second case `changed` then repeats the
    /// property's last value, with timestamp 0 and an empty payload where none was received yet.
    ///
    /// The reverse line's present level is reported through the new `changed`, too: on the calling thread before
    /// subscribe returns, or, when `changed` is running on another thread at that moment, on that thread next. A
    /// callback that subscribes every time would therefore call itself without end.
    ///
    /// Inside a callback every member may be called. A callback holds up all reception while it runs; what it throws is
    /// logged (level 1, with its text) and goes no further. Only getters and unsubscribe wait for a `changed` that runs
    /// on another thread: do not call them while holding a lock that `changed` takes.
    bool subscribe(PropertyChangedCallback changed, std::vector<int> properties, SetErrorCallback status);

    /// Ends the delivery of values; the arguments are not looked at. Returns true. When it returns, no `changed` is
    /// running for a received value, unless it was called inside that one. `status` goes on reporting time-outs until
    /// another subscribe replaces it.
    bool unsubscribe(PropertyChangedCallback changed, std::vector<int> properties);

    /// Copies the last known value. True if the property is served, even when no value has arrived yet (timestamp 0,
    /// empty payload). `out` must not be null.
    bool getPropValue(int property, VehiclePropValue* out);
    PropertyType getPropertyType(int property);

    /// Typed getters: true, and `out` filled, once a value of that kind has arrived. They return false while there is
    /// no subscription at all. getBoolProperty reads integer properties: true when the value is not 0.
    bool getBoolProperty(int property, bool& out);
    bool getInt32Property(int property, std::vector<int>& out);
    bool getInt64Property(int property, std::vector<long>& out);
    bool getFloatProperty(int property, std::vector<float>& out);
    bool getByteProperty(int property, std::vector<unsigned char>& out);
    bool getStringProperty(int property, std::string& out);

    /// Setters: send the first element towards the vehicle, once per CAN signal that the property feeds. True means
    /// handed to the bus, not obeyed: nothing is reported back, and while the CAN service is away the request is
    /// lost. The property's own value changes only when the vehicle reports it, usually as another property. Only a
    /// value's low bits are sent, as many as the signal has; a float is cut toward zero first, and sends 0 if it is
    /// below that or not a number. False for a property that cannot be set or an empty vector.
    bool setBoolProperty(int property, bool& value);
    bool setInt32Property(int property, std::vector<int>& value);
    bool setInt64Property(int property, std::vector<long>& value);
    bool setFloatProperty(int property, std::vector<float>& value);
    bool setByteProperty(int property, std::vector<unsigned char>& value);
    /// No property carries text: always false.
    bool setStringProperty(int property, std::string& value);
    /// Sends the member of `value` that getPropertyType names. True for every property that is served, also when it
    /// is one that cannot be set; false if unknown, if `value` is null or if that member is empty.
    bool setPropValue(int property, VehiclePropValue* value);

    /// No effect; values and states arrive through the callbacks of subscribe.
    void onPorpertyChanged(int property, const VehiclePropValue& value, int type);
    void onPropSetError(int property, VehiclePropertyStatus status);
    void onClientOnLine(bool online);

private:
    std::unique_ptr<VehicleClientImpl> mImpl;
    void* mReserved[2];  // part of the object's size, otherwise unused

    static std::atomic<VehicleClient*> mVehicleClient;
};

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

#endif  // VEHICLE_VEHICLE_CLIENT_H

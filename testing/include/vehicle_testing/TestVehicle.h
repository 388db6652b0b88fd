#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#define QVN_TESTING_API __attribute__((visibility("default")))

namespace qvn::testing {

/// The vehicle around an application that is under test: the CAN service and the reverse line, in the test's own
/// process, on a runtime directory of its own.
///
/// Make it before the first VehicleClient::getInstance(), and one in a process: the application's client stays as long
/// as the process does. qvn_add_vehicle_test() gives every test case a process.
///
/// The vehicle's variant is the built-in one. What the environment says about the host platform (QVN_HOST_CONFIG,
/// QVN_HOST_DIR, QVN_HOST_QUEUE_MIB, QVN_LOG_LEVEL, QVN_LOG_FILE) is the developer's own and taken out of the process.
///
/// Names are those of the signals and messages, such as "ESP_FD2_VehSpd" and "HAP_FD3". All members are called from one
/// thread, and not inside an application's callback. What is wrong about a name or a value, or does not come about, is
/// thrown as a std::runtime_error; its text is for the writer of the test.
class QVN_TESTING_API TestVehicle {
public:
    using Duration = std::chrono::milliseconds;

    /// How long to wait at most: any duration, up to hours::max(). What is longer than a day is a day, and what is
    /// negative is nothing.
    class Patience {
    public:
        template <class Rep, class Period>
        Patience(std::chrono::duration<Rep, Period> duration)  // NOLINT(google-explicit-constructor)
            : mDuration(limited(duration)) {}
        Duration duration() const { return mDuration; }

    private:
        template <class Rep, class Period>
        static Duration limited(std::chrono::duration<Rep, Period> duration) {
            using Real = std::chrono::duration<double>;  // no largest duration overflows it
            const Duration most = std::chrono::hours(24);
            const Real real = duration;
            return real >= most          ? most
                   : real > Real::zero() ? std::chrono::duration_cast<Duration>(duration)
                                         : Duration::zero();
        }

        Duration mDuration;
    };

    /// With the service up and no values yet.
    /// @throws std::runtime_error also when a VehicleClient was made before, or the bus was used in another way
    TestVehicle();
    /// The service goes down, the directory is removed. QVN_HOST_DIR still names it, so that the application's client
    /// finds no other service.
    ~TestVehicle();
    TestVehicle(const TestVehicle&) = delete;
    TestVehicle& operator=(const TestVehicle&) = delete;

    /// Sends a signal with this physical value: km/h for a speed, the number of a state; the nearest one that the
    /// signal's bytes can carry. A client that connects later gets the latest value of each signal once.
    void set(const std::string& signal, double value);
    /// The same with bytes as they stand on the bus, whatever they mean; 15 MiB at most.
    void setRaw(const std::string& signal, const std::vector<std::uint8_t>& bytes);

    /// Reports a whole message as no longer received, or as received again.
    void timeOut(const std::string& message);
    void recover(const std::string& message);

    /// Engages or releases the reverse line. An application hears of an edge only until its client has reached the
    /// service for the first time: call serviceDown() before the client is made.
    void reverse(bool engaged);

    /// Takes the service off the bus, once connected clients have handled what was sent before. Values that are put in
    /// while it is down are kept, and sent when it is up.
    /// @throws std::runtime_error when a callback has not returned after 10 s
    void serviceDown();
    /// Where a client was connected before, waits until one is again, so that nothing that is set from now on is lost.
    /// @throws std::runtime_error when none is after 10 s
    void serviceUp();

    /// Waits until the application's callbacks, and the handlers of its VehicleSessions, have returned for everything
    /// that was put in before, and what they, or this thread, have set is seen by lastSet(), also when that was before
    /// the client was connected. While the service is up it first waits for the application's client to connect; while
    /// it is down only the reverse line can have reached anybody. It cannot see what the application hands over to
    /// threads of its own, nor what waits in the executor of a session.
    ///
    /// Nothing is guessed from time: the client answers a request that comes to it behind everything else.
    /// @throws std::runtime_error when that takes longer than `patience`: no client, or a callback that does not
    /// return,
    ///         which the text names
    void settle(Patience patience = std::chrono::seconds(10));

    /// The number that the application has set a signal to last, if it has.
    std::optional<int> lastSet(const std::string& signal);
    /// The oldest set of the signal that no call of this has returned yet; waits for one, and returns nothing when
    /// `patience` is over.
    std::optional<int> waitForSet(const std::string& signal, Patience patience = std::chrono::seconds(10));

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

}  // namespace qvn::testing

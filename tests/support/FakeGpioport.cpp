#include "support/FakeGpioport.h"

#include <gpioport/gpioport_client.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace qvn::test::fake_gpio {

namespace {

struct Registration {
    void (*callback)(void*);
    void* context;
};

std::mutex mutex;
// Held while callbacks run: exit waits for them.
std::mutex running;
std::atomic<int> level{1};
std::deque<Registration> registrations;
std::vector<std::string> journal;
bool registrationFails = false;
std::atomic<bool> fluttering{false};
std::function<void()> actionAtRegistration;
std::function<void()> actionAtRead;

void note(std::string call) {
    const std::lock_guard<std::mutex> lock(mutex);
    journal.push_back(std::move(call));
}

}  // namespace

void reset() {
    const std::lock_guard<std::mutex> lock(mutex);
    level = 1;
    registrations.clear();
    journal.clear();
    registrationFails = false;
    fluttering = false;
    actionAtRegistration = nullptr;
    actionAtRead = nullptr;
}

void setLevel(int newLevel) {
    level = newLevel;
}

Registration* registrationAt(std::size_t index) {
    const std::lock_guard<std::mutex> lock(mutex);
    return index < registrations.size() ? &registrations[index] : nullptr;
}

void interrupt() {
    const std::lock_guard<std::mutex> run(running);
    for (std::size_t i = 0; const Registration* const found = registrationAt(i); ++i) {
        const Registration target = *found;
        target.callback(target.context);
    }
}

void edge(int newLevel) {
    level = newLevel;
    std::thread(&interrupt).join();
}

void flutter() {
    fluttering = true;
}

void failRegistrations() {
    registrationFails = true;
}

void beforeRegistration(std::function<void()> action) {
    actionAtRegistration = std::move(action);
}

void afterRead(std::function<void()> action) {
    const std::lock_guard<std::mutex> lock(mutex);
    actionAtRead = std::move(action);
}

std::vector<std::string> calls() {
    const std::lock_guard<std::mutex> lock(mutex);
    return journal;
}

int add(int line, int mode, Registration registration) {
    note("register " + std::to_string(line) + " " + std::to_string(mode));
    if (const auto action = std::exchange(actionAtRegistration, nullptr)) {
        action();
    }
    const std::lock_guard<std::mutex> lock(mutex);
    if (registrationFails) {
        return -1;
    }
    for (const Registration& known : registrations) {
        if (known.context == registration.context) {
            return 0;
        }
    }
    registrations.push_back(registration);
    return 0;
}

void close() {
    note("exit");
    {
        const std::lock_guard<std::mutex> lock(mutex);
        registrations.clear();
    }
    const std::lock_guard<std::mutex> run(running);
}

int levelOf(int line) {
    if (fluttering) {
        level = 1 - level;
    }
    const int read = line == 87 ? level.load() : -1;
    std::unique_lock<std::mutex> lock(mutex);
    const auto action = std::exchange(actionAtRead, nullptr);
    lock.unlock();
    if (action) {
        action();
    }
    return read;
}

void request(int port) {
    note("request " + std::to_string(port));
}

}  // namespace qvn::test::fake_gpio

namespace fake = qvn::test::fake_gpio;

extern "C" __attribute__((visibility("default"))) int gpioport_request(int port) {
    fake::request(port);
    return 0;
}

extern "C" __attribute__((visibility("default"))) int gpioport_get_inout_value(int line) {
    return fake::levelOf(line);
}

extern "C" __attribute__((visibility("default"))) int gpioport_irq_func_register(int line, int mode,
                                                                                 void (*callback)(void*),
                                                                                 void* context) {
    return fake::add(line, mode, {callback, context});
}

extern "C" __attribute__((visibility("default"))) int gpioport_exit() {
    fake::close();
    return 0;
}

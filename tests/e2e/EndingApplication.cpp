// An application that ends in one of many ways; its argument says how. See ways below.

#include <common_base/fdbus.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vehicle/VehicleClient.h>
#include <vehicle/VehicleSession.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

using namespace qvn::platform::vehicle;

namespace {

constexpr int kDoor = 0x21400E20;
constexpr int kSpeed = 0x21600E1F;
constexpr int kCommand = 0x21403033;
constexpr int kExitCode = 7;

using Callback = void (*)(VehiclePropValue, PropertyType);

std::promise<void>& firstValue = *new std::promise<void>;    // a thread may outlive the static objects
std::promise<void>& mainHasEnded = *new std::promise<void>;  // nobody fulfils it
std::promise<int> childsStatus;
std::atomic<int> valuesSeen{0};

bool setCommand() {
    std::vector<int> value = {1};
    return VehicleClient::getInstance()->setInt32Property(kCommand, value);
}

void tell(VehiclePropValue, PropertyType) {
    if (valuesSeen++ == 0) {
        firstValue.set_value();
    }
}

void exitInCallback(VehiclePropValue, PropertyType) {
    std::exit(kExitCode);
}

void beSlow(VehiclePropValue value, PropertyType type) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    tell(std::move(value), type);
}

void waitForMain(VehiclePropValue value, PropertyType type) {
    tell(std::move(value), type);
    mainHasEnded.get_future().wait();
}

/// Values arrive at this callback until the process ends, and it must see none after.
void subscribe(Callback changed, bool waits = true) {
    VehicleClient::getInstance()->subscribe(changed, {kDoor, kSpeed}, nullptr);
    if (waits) {
        firstValue.get_future().wait();
    }
}

int exitOnThread() {
    subscribe(&tell);
    std::thread([] { std::exit(kExitCode); }).detach();
    return pause();
}

int exitInACallback() {
    subscribe(&exitInCallback, false);
    return pause();
}

/// The callback holds what subscribe waits for.
int exitInACallbackBesideSubscribe() {
    for (;;) {
        subscribe(&exitInCallback, false);
    }
}

/// An object of the application's own on the bus, without a worker: its callbacks run on the bus's own thread.
class OwnClient : public CBaseClient {
public:
    OwnClient() : CBaseClient("own") {}

protected:
    void onOnline(FdbSessionId_t, bool) override { std::exit(kExitCode); }
};

int exitOnTheBussThread() {
    subscribe(&tell);
    static OwnClient& client = *new OwnClient;
    client.connect("svc://fdbus_can_service");
    for (;;) {
        pause();
    }
}

/// As a shell does it, for a program that is not there.
int forkAChildThatCannotExec() {
    const pid_t child = fork();
    if (child == 0) {
        execl("/nonexistent", "nonexistent", nullptr);
        std::exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 127 ? kExitCode : 1;
}

int leaveManySetsOnTheWay() {
    subscribe(&tell);
    std::puts("ready");  // time to stop the service
    std::fflush(stdout);
    std::getchar();
    for (int i = 0; i < 20000; ++i) {
        setCommand();
    }
    return kExitCode;
}

/// Returning from the callback in the child would leave it in the bus, on its parent's connection.
void forkAndReturn(VehiclePropValue value, PropertyType type) {
    static const pid_t child = fork();
    tell(std::move(value), type);
    if (child > 0 && valuesSeen == 2) {
        int status = 0;
        waitpid(child, &status, 0);
        childsStatus.set_value(status);
    }
}

int forkInACallback() {
    subscribe(&forkAndReturn);
    const int status = childsStatus.get_future().get();
    return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE ? kExitCode : 1;
}

void endTheThread(VehiclePropValue value, PropertyType type) {
    tell(std::move(value), type);
    pthread_exit(nullptr);
}

/// The rest of the library stays usable, for as long as the application needs it.
int endTheThreadInACallback() {
    VehicleClient client;
    client.subscribe(&endTheThread, {kDoor, kSpeed}, nullptr);
    firstValue.get_future().wait();
    VehiclePropValue value;
    bool served = client.getPropValue(kDoor, &value) && client.unsubscribe(nullptr, {});
    setCommand();
    return served ? kExitCode : 1;
}

/// Neither a client on the heap nor one that is deleted too late may be met by a callback, or end the bus twice.
std::unique_ptr<VehicleClient> ownClient;
struct NothingArrivesAfterMe {
    ~NothingArrivesAfterMe() { alive = false; }
    std::atomic<bool> alive{true};
} nothingArrivesAfterMe;

void tellWhileAlive(VehiclePropValue value, PropertyType type) {
    if (!nothingArrivesAfterMe.alive) {
        std::abort();
    }
    tell(std::move(value), type);
}

int haveAClientOfItsOwn() {
    ownClient = std::make_unique<VehicleClient>();
    ownClient->subscribe(&tellWhileAlive, {kDoor, kSpeed}, nullptr);
    subscribe(&tellWhileAlive);
    return kExitCode;
}

/// Ends while another thread is anywhere between the beginning of getInstance and the first value.
int exitBesideGetInstance() {
    std::thread([] { subscribe(&tell); }).detach();
    std::this_thread::sleep_for(std::chrono::microseconds(std::random_device()() % 3000));
    return kExitCode;
}

/// The log's reader stands still: from the next line on, whoever writes one waits for ever. That is a thread of the
/// application's own, and with QVN_LOG_LEVEL=3 every value, too. What the application printed is not lost.
int leaveALogThatNobodyReads() {
    subscribe(&tell);
    std::ios_base::sync_with_stdio(false);
    std::cout << "one, ";
    std::fputs("two", stdout);
    int ends[2] = {};
    if (pipe(ends) != 0 || fcntl(ends[1], F_SETFL, O_NONBLOCK) != 0) {
        return 1;
    }
    while (write(ends[1], "x", 1) == 1) {
    }
    fcntl(ends[1], F_SETFL, 0);
    dup2(ends[1], STDERR_FILENO);
    std::thread(&setCommand).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // a few values
    return kExitCode;
}

/// Made before the client, so gone after it.
struct SetterInADestructor {
    ~SetterInADestructor() {
        if (atTheEnd && setCommand()) {
            std::abort();  // there is no bus any more that could take it
        }
    }
    bool atTheEnd = false;
} setterInADestructor;

int setInADestructor() {
    subscribe(&tell);
    setterInADestructor.atTheEnd = true;
    return kExitCode;
}

/// A session that lasts as long as the process does: destroyed before the client's traffic ends.
VehicleSession& staticSession() {
    static VehicleSession session;
    return session;
}

/// Values arrive at this handler until the process ends, and it must see none after.
void subscribeSession(VehicleSession& session, const VehicleSession::Handler& handler) {
    static std::vector<Subscription> subscriptions;
    subscriptions.push_back(session.subscribe({kDoor, kSpeed}, handler));
    firstValue.get_future().wait();
}

void tellState(const PropertyState&) {
    if (!nothingArrivesAfterMe.alive) {
        std::abort();
    }
    tell({}, PROPERTY_TYPE_UNKNOWN);
}

int leaveASessionOnTheHeap() {
    subscribeSession(*new VehicleSession, &tellState);
    return kExitCode;
}

int exitInAHandler() {
    subscribeSession(staticSession(), &tellState);
    const Subscription exiting = staticSession().subscribe({kDoor}, [](const PropertyState&) { std::exit(kExitCode); });
    return pause();
}

int exitInAHandlerInPlace() {
    static VehicleSession session([](const VehicleSession::Task& task) { task(); });
    const Subscription exiting = session.subscribe({kDoor}, [](const PropertyState&) { std::exit(kExitCode); });
    return pause();
}

int endASessionsThread() {
    auto session = std::make_unique<VehicleSession>();
    subscribeSession(*session, [](const PropertyState& state) {
        tellState(state);
        pthread_exit(nullptr);
    });
    session.reset();
    return kExitCode;
}

/// The next update gets a thread of its own again.
int endAnExecutorsThreads() {
    std::promise<void> second;
    std::atomic<int> calls{0};
    VehicleSession session([](const VehicleSession::Task& task) { std::thread(task).detach(); });
    const Subscription door = session.subscribe({kDoor}, [&](const PropertyState&) {
        if (++calls == 2) {
            second.set_value();
        }
        pthread_exit(nullptr);
    });
    second.get_future().wait();
    return kExitCode;
}

/// The child's copies of static sessions have no threads.
int forkBesideASession() {
    subscribeSession(staticSession(), &tellState);
    return forkAChildThatCannotExec();
}

int forkInAHandler() {
    subscribeSession(staticSession(), [](const PropertyState&) { forkAndReturn({}, PROPERTY_TYPE_UNKNOWN); });
    const int status = childsStatus.get_future().get();
    return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE ? kExitCode : 1;
}

int waitForAnEffectOnAThread() {
    subscribeSession(staticSession(), &tellState);
    auto& effect =
        *new std::future<SetOutcome>(staticSession().setAndAwait(kCommand, 1, kDoor, 99, std::chrono::hours(1)));
    std::thread([&effect] { effect.wait(); }).detach();
    return kExitCode;
}

int waitForAnEffectInAHandler() {
    subscribeSession(staticSession(), [](const PropertyState& state) {
        tellState(state);
        staticSession().setAndAwait(kCommand, 1, kDoor, 99, std::chrono::hours(1)).wait();
    });
    return kExitCode;
}

int hangInAHandler() {
    subscribeSession(staticSession(), [](const PropertyState& state) {
        tellState(state);
        mainHasEnded.get_future().wait();
    });
    return kExitCode;
}

/// Its destructor is registered when it has been made: after its subscription.
struct Component {
    VehicleSession session;
    const Subscription values = session.subscribe({kDoor, kSpeed}, [](const PropertyState& state) {
        tellState(state);
        mainHasEnded.get_future().wait();
    });
};

int hangInAComponentsHandler() {
    static Component component;
    firstValue.get_future().wait();
    return kExitCode;
}

const std::map<std::string, int (*)()> ways = {
    {"return", [] { return subscribe(&tell), kExitCode; }},
    {"return-without-service", [] { return subscribe(&tell, false), kExitCode; }},
    {"exit-on-thread", &exitOnThread},
    {"exit-in-callback", &exitInACallback},
    {"exit-in-callback-beside-subscribe", &exitInACallbackBesideSubscribe},
    {"exit-on-bus-thread", &exitOnTheBussThread},
    {"slow-callback", [] { return subscribe(&beSlow), kExitCode; }},
    {"callback-waits-for-main", [] { return subscribe(&waitForMain), kExitCode; }},
    {"fork-and-fail-to-exec", [] { return subscribe(&tell), forkAChildThatCannotExec(); }},
    {"fork-in-callback", &forkInACallback},
    {"own-client", &haveAClientOfItsOwn},
    {"exit-beside-get-instance", &exitBesideGetInstance},
    {"end-thread-in-callback", &endTheThreadInACallback},
    {"session-static", [] { return subscribeSession(staticSession(), &tellState), kExitCode; }},
    {"session-on-heap", &leaveASessionOnTheHeap},
    {"session-exit-in-handler", &exitInAHandler},
    {"session-exit-in-place", &exitInAHandlerInPlace},
    {"session-end-thread", &endASessionsThread},
    {"session-end-executors-thread", &endAnExecutorsThreads},
    {"session-fork", &forkBesideASession},
    {"session-fork-in-handler", &forkInAHandler},
    {"session-awaits", &waitForAnEffectOnAThread},
    {"session-awaits-in-handler", &waitForAnEffectInAHandler},
    {"session-handler-waits-for-main", &hangInAHandler},
    {"session-component-waits-for-main", &hangInAComponentsHandler},
    {"log-nobody-reads", &leaveALogThatNobodyReads},
    {"many-sets", &leaveManySetsOnTheWay},
    {"set-in-destructor", &setInADestructor},
};

}  // namespace

int main(int argc, char** argv) {
    const auto way = argc == 2 ? ways.find(argv[1]) : ways.end();
    if (way == ways.end()) {
        std::fputs("usage: ending_application WAY, one of:", stderr);
        for (const auto& known : ways) {
            std::fprintf(stderr, " %s", known.first.c_str());
        }
        std::fputs("\n", stderr);
        return 2;
    }
    return way->second();
}

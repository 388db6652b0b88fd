#include "gpioport/gpioport_client.h"

#include <host/Log.h>

#include <exception>

#include "GpioPort.h"

namespace {

constexpr int kOk = 0;
constexpr int kFailed = -1;

/// Never destroyed: a process may end with the port open.
qvn::host::GpioPort& port() {
    static qvn::host::GpioPort& instance = *new qvn::host::GpioPort;
    return instance;
}

template <class Function>
int guarded(Function function) {
    try {
        return function();
    } catch (const std::exception& problem) {
        lgklog_print(qvn::host::kLogError, "gpioport: %s", problem.what());
        return kFailed;
    }
}

}  // namespace

int gpioport_request(int /*port*/) {
    return guarded([] { return port().open() ? kOk : kFailed; });
}

int gpioport_get_inout_value(int line) {
    return line < 0 ? kFailed : guarded([line] { return qvn::host::GpioPort::level(line); });
}

int gpioport_irq_func_register(int line, int mode, void (*callback)(void*), void* context) {
    using qvn::host::GpioPort;
    if (line < 0 || mode < GpioPort::kRising || mode > GpioPort::kBoth || callback == nullptr) {
        return kFailed;
    }
    return guarded([&] { return port().watchLine(line, mode, callback, context) ? kOk : kFailed; });
}

int gpioport_exit(void) {
    return guarded([] {
        port().close();
        return kOk;
    });
}

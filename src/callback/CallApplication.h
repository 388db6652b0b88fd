#ifndef CALLBACK_CALL_APPLICATION_H
#define CALLBACK_CALL_APPLICATION_H

#include <exception>

#include "callback/ForcedUnwind.h"
#include "log/Log.h"

namespace qvn {
namespace callback {

/// Runs a call that ends in an application's callback. What that throws must not reach the bus, which would drop the
/// values that wait behind it, nor the GPIO thread, which it would end with the process.
template <class Call>
void callApplication(Call call) {
    try {
        call();
    } catch (const ForcedUnwind&) {
        throw;
    } catch (const std::exception& error) {
        QVN_LOG(Error, "[%s][%d]a callback of the application threw: %s", error.what());
    } catch (...) {
        QVN_LOG(Error, "[%s][%d]a callback of the application threw something that is no std::exception");
    }
}

}  // namespace callback
}  // namespace qvn

#endif  // CALLBACK_CALL_APPLICATION_H

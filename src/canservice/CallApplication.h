#ifndef CANSERVICE_CALL_APPLICATION_H
#define CANSERVICE_CALL_APPLICATION_H

#include <exception>

#include "canservice/ForcedUnwind.h"
#include "log/Log.h"

namespace qvn {
namespace canservice {

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

}  // namespace canservice
}  // namespace qvn

#endif  // CANSERVICE_CALL_APPLICATION_H

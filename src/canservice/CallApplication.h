#ifndef CANSERVICE_CALL_APPLICATION_H
#define CANSERVICE_CALL_APPLICATION_H

#include <exception>

#ifdef __GLIBCXX__
#include <cxxabi.h>
#endif

#include "log/Log.h"

namespace qvn {
namespace canservice {

/// Runs a call that ends in an application's callback. What that throws must not reach the bus, which would drop the
/// values that wait behind it, nor the GPIO thread, which it would end with the process.
template <class Call>
void callApplication(Call call) {
    try {
        call();
#ifdef __GLIBCXX__
    } catch (const abi::__forced_unwind&) {
        // pthread_exit, or a cancellation: the process would end if it did not pass.
        QVN_LOG(Error, "[%s][%d]a callback of the application ended its thread, which was the library's!");
        throw;
#endif
    } catch (const std::exception& error) {
        QVN_LOG(Error, "[%s][%d]a callback of the application threw: %s", error.what());
    } catch (...) {
        QVN_LOG(Error, "[%s][%d]a callback of the application threw something that is no std::exception");
    }
}

}  // namespace canservice
}  // namespace qvn

#endif  // CANSERVICE_CALL_APPLICATION_H

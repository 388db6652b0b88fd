#include <unistd.h>

#include <new>

#include "callback/ForcedUnwind.h"
#include "callback/ForkGuard.h"
#include "canservice/T21CanServiceFdbusClient.h"
#include "log/Log.h"

using qvn::callback::ForcedUnwind;

namespace {

/// The bus would not survive that its thread ends. So the thread stays, with everything destroyed that a callback and
/// this library had on it.
[[noreturn]] void stay() {
    for (;;) {
        ::pause();
    }
}

}  // namespace

void T21CanServiceFdbusClient::onLibraryThread(const char* what, const std::function<void()>& task) {
    const qvn::callback::ForkGuard forkGuard;
    try {
        const CallbackGate::Passage passage(gate);
        if (passage) {
            try {
                task();
            } catch (const ForcedUnwind&) {
                threadLost = true;  // before the gate is left: who waits there looks at it next
                throw;
            }
        }
    } catch (const std::bad_alloc&) {
        QVN_LOG(Error, "[%s][%d]out of memory, %s is lost!", what);
    } catch (const ForcedUnwind&) {
        QVN_LOG(Error, "[%s][%d]a callback ended its thread, which is the library's: nothing is received any more!");
        stay();
    }
}

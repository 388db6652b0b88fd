#include "MarkerLine.h"

#include <gpioport/gpioport_client.h>

#include <fstream>
#include <stdexcept>

#include "host/RuntimeDir.h"
#include "ipc_common_soc/ReverseLine.h"

namespace qvn::testing {

using sync::MutexLock;

namespace {

constexpr int kLine = 1087;  // no line of the vehicle

}  // namespace

MarkerLine& MarkerLine::instance() {
    static MarkerLine& line = *new MarkerLine;
    return line;
}

void MarkerLine::watch() {
    if (gpioport_irq_func_register(kLine, wire::kBothEdges, &MarkerLine::onEdge, this) != 0) {
        throw std::runtime_error("the test's GPIO lines cannot be watched; the log says why");
    }
    mPath = host::runtimeDir() + "/gpio/" + std::to_string(kLine);
}

bool MarkerLine::waitUntilHandled(std::chrono::steady_clock::time_point deadline) {
    // The library reads all lines, calls back for each that has changed, and reads them again. The first edge shows
    // that it has read what was there before, the second one that it has called back for it.
    return waitForEdge(deadline) && waitForEdge(deadline);
}

bool MarkerLine::waitForEdge(std::chrono::steady_clock::time_point deadline) {
    MutexLock lock(mMutex);
    // Two edges between two readings are none, so one that a wait has given up on is seen before the next is made.
    if (!mChanged.wait_until(lock.native(), deadline, [&]() QVN_REQUIRES(mMutex) { return mSeen == mMade; })) {
        return false;
    }
    const int edge = ++mMade;
    std::ofstream(mPath) << (edge % 2 == 0 ? 1 : 0);
    return mChanged.wait_until(lock.native(), deadline, [&]() QVN_REQUIRES(mMutex) { return mSeen >= edge; });
}

void MarkerLine::onEdge(void* context) {
    auto& line = *static_cast<MarkerLine*>(context);
    const MutexLock lock(line.mMutex);
    ++line.mSeen;
    line.mChanged.notify_all();
}

}  // namespace qvn::testing

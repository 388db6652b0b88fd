#ifndef CANSERVICE_FORCED_UNWIND_H
#define CANSERVICE_FORCED_UNWIND_H

#include <exception>

#ifdef __GLIBCXX__
#include <cxxabi.h>
#endif

namespace qvn {
namespace canservice {

/// What unwinds the stack of a thread that is cancelled or calls pthread_exit. Who catches it without throwing it on,
/// or catches everything, ends the process.
#ifdef __GLIBCXX__
using ForcedUnwind = abi::__forced_unwind;
#else
class ForcedUnwind {};  // here the stack is not unwound
#endif

}  // namespace canservice
}  // namespace qvn

#endif  // CANSERVICE_FORCED_UNWIND_H

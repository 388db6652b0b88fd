#ifndef CALLBACK_FORCED_UNWIND_H
#define CALLBACK_FORCED_UNWIND_H

#include <exception>

#ifdef __GLIBCXX__
#include <cxxabi.h>
#endif

namespace qvn {
namespace callback {

/// What unwinds the stack of a thread that is cancelled or calls pthread_exit. Who catches it without throwing it on,
/// or catches everything, ends the process.
#ifdef __GLIBCXX__
using ForcedUnwind = abi::__forced_unwind;
#else
class ForcedUnwind {};  // here the stack is not unwound
#endif

}  // namespace callback
}  // namespace qvn

#endif  // CALLBACK_FORCED_UNWIND_H

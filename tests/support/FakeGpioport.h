#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qvn::test {

/// The GPIO port as a test drives it: stands in for gpioport_client in the test program that links it.
namespace fake_gpio {

/// Level 1, no registrations, no calls.
void reset();
/// Sets the level without an interrupt; a negative one is a read error.
void setLevel(int level);
/// Every reading gives the other level than the one before.
void flutter();
/// Sets the level and runs the registered callbacks on a thread of their own, waiting for their end.
void edge(int level);
/// Runs the registered callbacks on the calling thread, without a change of the level.
void interrupt();
/// From now on a registration fails.
void failRegistrations();
/// Called by the next registration, before it takes effect.
void beforeRegistration(std::function<void()> action);
/// Called by the next read of the level, before its result is returned.
void afterRead(std::function<void()> action);
/// Every call but level reads: "request 0", "register 87 3", "exit".
std::vector<std::string> calls();

}  // namespace fake_gpio

}  // namespace qvn::test

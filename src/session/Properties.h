#ifndef SESSION_PROPERTIES_H
#define SESSION_PROPERTIES_H

#include <vehicle/VehicleSession.h>

#include <string>
#include <vector>

namespace qvn {
namespace session {

/// "ESP_FD2_VehSpd", or "property 0x12345678" where there is none.
std::string nameOf(int property);

/// Whether the vehicle reports a property.
bool isReported(int property);

/// @throws std::invalid_argument, with its name, when one is not reported or there is none
void requireReported(const std::vector<int>& properties);

/// What is wrong with a set, as far as the tables tell.
platform::vehicle::SetResult checkSet(int property, double number);

}  // namespace session
}  // namespace qvn

#endif  // SESSION_PROPERTIES_H

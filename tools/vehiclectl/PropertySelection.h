#pragma once

#include <string>
#include <vector>

#include "desk/PropertyNames.h"

namespace qvn::tools {

/// The properties that the user named, each of which must be one that the vehicle reports. A pattern with * or ?
/// (HAP_FD3_RPAS_*) stands for all of these whose signals match. Each comes once, where it is named first. No names:
/// all that the vehicle reports.
/// @throws BadInput
std::vector<const PropertyInfo*> receivedProperties(const std::vector<std::string>& names = {});

}  // namespace qvn::tools

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvn::tools {

/// The candidates that a misspelt name most likely meant, best first, at most three; upper and lower case count alike.
std::vector<std::string> closestNames(std::string_view name, const std::vector<std::string>& candidates);

/// "; did you mean A, B or C?", or nothing when no candidate is close.
std::string suggestionText(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace qvn::tools

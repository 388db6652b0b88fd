#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace qvn::tools {

/// Its objects keep the order in which their members came. Who looks into it includes <nlohmann/json.hpp>; its reader
/// and its writer, of which each file would compile templates of its own, are called in Json.cpp only.
using Json = nlohmann::ordered_json;

/// In one line, without its end. What is no UTF-8, as the name of a file may be, is replaced.
std::string jsonText(const Json& value);

/// The number of a text such as "4.05", which shows with these digits, as a float would not; null for an empty text.
Json jsonNumber(const std::string& digits);

/// @throws BadInput with what is wrong, and where: "error at line 1, column 2: ..."
Json parseJson(std::string_view text);

}  // namespace qvn::tools

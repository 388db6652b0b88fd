#include "desk/Json.h"

#include <nlohmann/json.hpp>
#include <string>

#include "desk/BadInput.h"

namespace qvn::tools {

std::string jsonText(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json jsonNumber(const std::string& digits) {
    return digits.empty() ? Json() : Json::parse(digits);
}

namespace {

// What nests deeper is not a file of ours, and would be taken apart by one call within another.
constexpr int kDeepest = 100;

}  // namespace

Json parseJson(std::string_view text) {
    const auto keep = [](int depth, Json::parse_event_t, Json&) {
        if (depth > kDeepest) {
            throw BadInput("it nests more than " + std::to_string(kDeepest) + " levels deep");
        }
        return true;
    };
    try {
        return Json::parse(text, keep);
    } catch (const Json::exception& error) {  // a number beyond a double is no error of syntax
        const std::string what = error.what();
        const std::size_t place = what.find("at line");
        throw BadInput("error " + what.substr(place == std::string::npos ? what.find(' ') + 1 : place));
    }
}

}  // namespace qvn::tools

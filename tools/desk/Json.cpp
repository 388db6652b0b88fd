#include "desk/Json.h"

#include <nlohmann/json.hpp>

#include "desk/BadInput.h"

namespace qvn::tools {

std::string jsonText(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json jsonNumber(const std::string& digits) {
    return digits.empty() ? Json() : parseJson(digits);
}

Json parseJson(std::string_view text) {
    try {
        return Json::parse(text);
    } catch (const Json::exception& error) {  // a number beyond a double is no error of syntax
        const std::string what = error.what();
        const std::size_t place = what.find("at line");
        throw BadInput("error " + what.substr(place == std::string::npos ? what.find(' ') + 1 : place));
    }
}

}  // namespace qvn::tools

#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "desk/BadInput.h"
#include "desk/Number.h"
#include "desk/Text.h"

namespace qvn::tools {

/// Checks the number of an option. CLI11's own check lets a NaN pass, which compares with no limit.
inline CLI::Validator numberFrom(double low, double high) {
    const std::string what = "a number from " + formatNumber(low) + " to " + formatNumber(high);
    const auto check = [low, high, what](const std::string& text) -> std::string {
        try {
            const double number = parseNumber(text, what);
            return number >= low && number <= high ? "" : tools::quoted(text) + " is out of range; expected " + what;
        } catch (const BadInput& error) {
            return error.what();
        }
    };
    return CLI::Validator(check, "");
}

}  // namespace qvn::tools

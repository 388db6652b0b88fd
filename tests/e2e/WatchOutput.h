#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "e2e/Process.h"

namespace qvn::e2e {

/// A word signal, and a byte signal that is early in the list which a client subscribes.
const std::string kWord = "HAP_FD2_AVM_3DAngSts";
const std::string kByte = "PLG_1_PLG_Sts";

/// Trace lines that give kWord the values from first to last; more bytes than two follow each and mean nothing.
inline std::string wordLines(int first, int last, int bytes = 2) {
    std::string lines;
    for (int value = first; value <= last; ++value) {
        char digits[5];
        std::snprintf(digits, sizeof digits, "%04X", static_cast<unsigned>(value) & 0xFFFFU);
        lines += kWord + "#" + digits + std::string(static_cast<std::size_t>(2 * bytes - 4), '0') + "\n";
    }
    return lines;
}

inline std::string wordLine(int value) {
    return wordLines(value, value);
}

/// One line of a watch, without its time.
inline std::string shown(const std::string& property, const std::string& value,
                         const std::string& status = "available") {
    char text[80];
    std::snprintf(text, sizeof text, "  %-36s %-12s %s\n", property.c_str(), value.c_str(), status.c_str());
    return text;
}

/// The values that a watch has shown of a property, in order.
inline std::vector<int> valuesOf(const std::string& output, const std::string& property) {
    std::vector<int> values;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = output.find('\n', begin)) != std::string::npos; begin = end + 1) {
        const std::string line = output.substr(begin, end - begin);  // sscanf measures all of its text at each call
        char name[64];
        int value = 0;
        if (std::sscanf(line.c_str(), "%*f %63s %d", name, &value) == 2 && name == property) {
            values.push_back(value);
        }
    }
    return values;
}

/// Waits until a watch shows a line, after the first `from` bytes of its output. Looks at what is new only, which makes
/// a flood affordable.
inline bool waitForLine(Process& watch, const std::string& line, std::size_t from = 0) {
    return watch.waitForOutput([&](const std::string& output) {
        const bool found = output.find(line, from) != std::string::npos;
        from = std::max(from, output.size() - std::min(output.size(), line.size()));
        return found;
    });
}

inline bool waitForValue(Process& watch, const std::string& property, int value, std::size_t from = 0) {
    return waitForLine(watch, shown(property, std::to_string(value)), from);
}

/// From first to last, without a gap.
inline std::vector<int> range(int first, int last) {
    std::vector<int> values;
    for (int value = first; value <= last; ++value) {
        values.push_back(value);
    }
    return values;
}

}  // namespace qvn::e2e

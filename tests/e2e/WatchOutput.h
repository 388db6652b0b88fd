#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "e2e/Process.h"

namespace qvn::e2e {

/// A word signal, and a byte signal that is early in the list which a client subscribes.
constexpr char kWord[] = "HAP_FD2_AVM_3DAngSts";
constexpr char kByte[] = "BCM1_DrvDoorSts";

/// A trace line that gives kWord a value of 0 to 65535; more bytes than two follow it and mean nothing.
inline std::string wordLine(int value, int bytes = 2) {
    char digits[5];
    std::snprintf(digits, sizeof digits, "%04X", static_cast<unsigned>(value) & 0xFFFFU);
    return std::string(kWord) + "#" + digits + std::string(static_cast<std::size_t>(2 * bytes - 4), '0') + "\n";
}

/// One line of a watch, without its time.
inline std::string shown(const char* property, int value) {
    char text[80];
    std::snprintf(text, sizeof text, "  %-36s %-12d available\n", property, value);
    return text;
}

/// The values that a watch has shown of a property, in order.
inline std::vector<int> valuesOf(const std::string& output, const char* property) {
    std::vector<int> values;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = output.find('\n', begin)) != std::string::npos; begin = end + 1) {
        char name[64];
        int value = 0;
        if (std::sscanf(output.c_str() + begin, "%*f %63s %d", name, &value) == 2 && std::string(name) == property) {
            values.push_back(value);
        }
    }
    return values;
}

/// Waits until a watch shows a value, after the first `from` bytes of its output. Looks at what is new only, which
/// makes a flood affordable.
inline bool waitForValue(Process& watch, const char* property, int value, std::size_t from = 0) {
    const std::string line = shown(property, value);
    return watch.waitForOutput([&](const std::string& output) {
        const bool found = output.find(line, from) != std::string::npos;
        from = std::max(from, output.size() - std::min(output.size(), line.size()));
        return found;
    });
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

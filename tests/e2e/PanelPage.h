#pragma once

#include <string>

#include "e2e/Process.h"

namespace qvn::e2e {

/// Where a simulator that was started with --panel shows it: http://ADDRESS:PORT
inline std::string panelUrl(Process& simulator) {
    std::string url;
    simulator.waitForOutput([&](const std::string& output) {
        const std::size_t begin = output.find("http://");
        const std::size_t end = output.find("/\n", begin);
        if (begin == std::string::npos || end == std::string::npos) {
            return false;
        }
        url = output.substr(begin, end - begin);
        return true;
    });
    return url;
}

inline std::string portOf(const std::string& url) {
    return url.substr(url.rfind(':') + 1);
}

}  // namespace qvn::e2e

#include "can-service-sim/Journal.h"

#include <cstdio>

namespace qvn::tools {

void Journal::error(const std::string& text) {
    std::fprintf(stderr, "can-service-sim: %s\n", text.c_str());
}

void Journal::print(Detail least, const std::string& text) const {
    if (detail_ < least) {
        return;
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    output_.print("%9.3f  %s\n", elapsed.count(), text.c_str());
}

}  // namespace qvn::tools

#pragma once

#include <map>
#include <string>
#include <vector>

namespace qvn::test {

/// The persistency service as a test wants it: stands in for psis_client in the test program that links it.
struct FakePsis {
    int initResult = 0;
    /// Keys of namespace "config_qvn"; any other key, or namespace, cannot be read.
    std::map<std::string, unsigned char> keys;
    /// Every key asked for as it should be: as one byte of the vehicle's own profile.
    std::vector<std::string> asked;

    static FakePsis& instance();
    static void reset() { instance() = {}; }
};

}  // namespace qvn::test

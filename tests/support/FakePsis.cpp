#include "support/FakePsis.h"

#include <psis/psis_client.h>

namespace qvn::test {

FakePsis& FakePsis::instance() {
    static FakePsis psis;
    return psis;
}

}  // namespace qvn::test

using qvn::test::FakePsis;

extern "C" __attribute__((visibility("default"))) int psisInitClient() {
    return FakePsis::instance().initResult;
}

extern "C" __attribute__((visibility("default"))) int psisReadKey(const char* ns, const char* key, int user,
                                                                  void* buffer, int size) {
    FakePsis& psis = FakePsis::instance();
    if (user == -1 && size == 1) {
        psis.asked.push_back(std::string(ns) + "/" + key);
    }
    const auto found = psis.keys.find(key);
    if (std::string(ns) != "config_qvn" || found == psis.keys.end()) {
        return -2;
    }
    *static_cast<unsigned char*>(buffer) = found->second;
    return 0;
}

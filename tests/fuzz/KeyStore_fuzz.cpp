// The vehicle's configuration: the input is the text of a vehicle.json.

#include <KeyStore.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using qvn::fuzz::require;
    const qvn::host::KeyStore before = {{"config", {{"KEY", 1}}}};
    qvn::host::KeyStore store = before;
    std::string error;
    if (qvn::host::parseKeyStore(std::string(data, data + size), &store, &error)) {
        require(error.empty());
    } else {
        require(store == before && !error.empty());
        require(std::none_of(error.begin(), error.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }));
    }
    return 0;
}

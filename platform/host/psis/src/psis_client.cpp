#include "psis/psis_client.h"

#include <host/Log.h>
#include <sync/Mutex.h>

#include <cstring>
#include <exception>
#include <optional>

#include "KeyStore.h"

namespace {

constexpr int kOk = 0;
constexpr int kFailed = -1;

qvn::sync::Mutex storeMutex;
std::optional<qvn::host::KeyStore> loadedStore QVN_GUARDED_BY(storeMutex);  // empty until initialised

}  // namespace

int psisInitClient(void) {
    const qvn::sync::MutexLock lock(storeMutex);
    loadedStore.reset();
    try {
        qvn::host::KeyStore store;
        std::string error;
        if (!qvn::host::loadKeyStore(&store, &error)) {
            lgklog_print(qvn::host::kLogFatal, "psis: %s", error.c_str());
            return kFailed;
        }
        loadedStore = std::move(store);
        return kOk;
    } catch (const std::exception& problem) {
        lgklog_print(qvn::host::kLogFatal, "psis: %s", problem.what());
        return kFailed;
    }
}

int psisReadKey(const char* ns, const char* key, int /*user*/, void* buffer, int size) {
    if (ns == nullptr || key == nullptr || buffer == nullptr || size < 1) {
        return kFailed;
    }
    try {
        const qvn::sync::MutexLock lock(storeMutex);
        if (!loadedStore) {
            return kFailed;
        }
        const auto keys = loadedStore->find(ns);
        if (keys == loadedStore->end()) {
            return kFailed;
        }
        const auto value = keys->second.find(key);
        if (value == keys->second.end()) {
            return kFailed;
        }
        std::memset(buffer, 0, static_cast<std::size_t>(size));
        *static_cast<std::uint8_t*>(buffer) = value->second;
        return kOk;
    } catch (const std::exception&) {
        return kFailed;
    }
}

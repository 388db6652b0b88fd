/// Persistency client: read access to the vehicle's persistent configuration.
///
/// On a Linux host the store is a JSON file of namespace -> key -> byte:
///
///     {"config_qvn": {"OMNIVIEW_SYSTEM_VEHICLE_CONFIGURATION_INFORMATION": 3, "REVERSE_VIDEO": 0}}
///
/// It is the file that $QVN_HOST_CONFIG names, else vehicle.json in the runtime directory, else a built-in
/// store with exactly the two keys above (a vehicle with automatic parking).
///
/// All functions may be called from any thread.
#ifndef PSIS_PSIS_CLIENT_H
#define PSIS_PSIS_CLIENT_H

#if defined(__GNUC__)
#define PSIS_API __attribute__((visibility("default")))
#else
#define PSIS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Opens the store. A repeated call reads it again; when that fails, no key can be read until a call succeeds.
///
/// @return 0 on success. Non-zero when the store is missing, unreadable or malformed: one log line names the file,
///         the place and what was expected.
PSIS_API int psisInitClient(void);

/// Copies the value of a key into the caller's buffer.
///
/// @param ns      namespace of the key
/// @param key     name of the key
/// @param user    user profile; -1 is the vehicle's own. The host store has one profile and ignores it.
/// @param buffer  receives the value: its byte first, the rest filled with zero. Untouched on failure.
/// @param size    size of the buffer in bytes, at least 1
/// @return 0 on success; non-zero when the client is not initialised, the key is unknown or an argument is unusable.
PSIS_API int psisReadKey(const char* ns, const char* key, int user, void* buffer, int size);

#ifdef __cplusplus
}
#endif

#endif

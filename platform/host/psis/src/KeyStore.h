#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace qvn::host {

/// The persistent configuration: namespace -> key -> one byte.
using KeyStore = std::map<std::string, std::map<std::string, std::uint8_t>>;

/// Reads a store from JSON text.
///
/// @param error  receives the place and what was expected there, on failure
/// @return whether the whole text was sound; the store is changed only then
bool parseKeyStore(const std::string& text, KeyStore* store, std::string* error);

/// Loads the store that the environment selects: the file $QVN_HOST_CONFIG, else vehicle.json in the runtime directory
/// where it exists, else the built-in variant.
///
/// @param error  receives one sentence that begins with the file's name, on failure
bool loadKeyStore(KeyStore* store, std::string* error);

}  // namespace qvn::host

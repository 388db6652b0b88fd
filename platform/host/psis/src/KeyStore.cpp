#include "KeyStore.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/RuntimeDir.h"

namespace qvn::host {
namespace {

using nlohmann::json;

/// A vehicle with automatic parking, the variant that serves the most functions.
const KeyStore kBuiltInStore = {
    {"config_qvn", {{"OMNIVIEW_SYSTEM_VEHICLE_CONFIGURATION_INFORMATION", 3}, {"REVERSE_VIDEO", 0}}},
};

bool fail(std::string* error, const std::string& text) {
    *error = text;
    return false;
}

bool isByte(const json& value) {
    return value.is_number_unsigned() && value.get<std::uint64_t>() <= 255;
}

/// A name of the file as one line of text.
std::string printable(std::string name) {
    const auto isControl = [](unsigned char c) { return c < ' ' || c == '\x7F'; };
    std::replace_if(name.begin(), name.end(), isControl, '?');
    return name;
}

/// The parser's own text, from the place on where it names one: "parse error at line 3, column 7: ...".
std::string describe(const json::exception& problem) {
    const std::string text = problem.what();
    const std::size_t bracket = text.find("] ");
    return bracket == std::string::npos ? text : text.substr(bracket + 2);
}

}  // namespace

bool parseKeyStore(const std::string& text, KeyStore* store, std::string* error) {
    json document;
    try {
        document = json::parse(text);
    } catch (const json::exception& problem) {
        return fail(error, describe(problem));
    }
    if (!document.is_object()) {
        return fail(error, "expected an object of namespaces");
    }
    KeyStore result;
    for (const auto& [name, keys] : document.items()) {
        if (!keys.is_object()) {
            return fail(error, printable(name) + ": expected an object of keys");
        }
        auto& values = result[name];
        for (const auto& [key, value] : keys.items()) {
            if (!isByte(value)) {
                return fail(error, printable(name + "." + key) + ": expected an integer from 0 to 255");
            }
            values[key] = value.get<std::uint8_t>();
        }
    }
    *store = std::move(result);
    return true;
}

bool loadKeyStore(KeyStore* store, std::string* error) {
    const char* named = std::getenv("QVN_HOST_CONFIG");
    const bool isNamed = named != nullptr && *named != '\0';
    const std::string path = isNamed ? std::string(named) : runtimeDir() + "/vehicle.json";

    struct stat status = {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (!exists && errno == ENOENT && !isNamed) {
        *store = kBuiltInStore;
        return true;
    }
    if (exists && !S_ISREG(status.st_mode)) {
        return fail(error, path + ": not a file; expected a readable JSON file");  // a FIFO may have no writer
    }
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) {
        return fail(error, path + ": " + std::strerror(errno) + "; expected a readable JSON file");
    }
    std::ostringstream text;
    text << file.rdbuf();
    if (!parseKeyStore(text.str(), store, error)) {
        error->insert(0, path + ": ");
        return false;
    }
    return true;
}

}  // namespace qvn::host

#include "can-service-sim/console/InputLines.h"

#include <algorithm>
#include <cctype>

#include "desk/BadInput.h"
#include "desk/Text.h"

namespace qvn::tools {
namespace {

constexpr std::size_t kMostBytes = 64;  // of a CAN FD frame

}  // namespace

std::ifstream openFile(const std::string& name) {
    std::ifstream file(name);
    if (!file) {
        throw BadInput("cannot open " + name);
    }
    return file;
}

void readLines(std::istream& input, const std::string& name, const std::function<void(const std::string&)>& onLine) {
    std::string line;
    for (int number = 1; std::getline(input, line); ++number) {
        try {
            onLine(line);
        } catch (const BadInput& error) {
            throw BadInput(name + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (input.bad()) {
        throw BadInput(name + " cannot be read");
    }
}

std::string readHexBytes(std::string_view text) {
    const auto isHex = [](unsigned char c) { return std::isxdigit(c) != 0; };
    if (text.size() % 2 != 0 || text.size() > 2 * kMostBytes || !std::all_of(text.begin(), text.end(), isHex)) {
        throw BadInput(quoted(text) + " are no raw bytes; expected pairs of hexadecimal digits, at most 64 bytes");
    }
    std::string raw;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        raw += static_cast<char>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16));
    }
    return raw;
}

}  // namespace qvn::tools

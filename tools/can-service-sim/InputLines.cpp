#include "can-service-sim/InputLines.h"

#include "desk/BadInput.h"

namespace qvn::tools {

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

}  // namespace qvn::tools

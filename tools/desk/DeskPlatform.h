#pragma once

#include <string>
#include <vector>

namespace qvn::tools {

/// What differs between a host and a bench with the head unit's own platform libraries.

/// Checks that a service of this name can be offered and reached here at all. On failure `error` is one sentence for
/// the user.
bool prepareDesk(const std::string& service, std::string* error);

/// Whether clients find a service that this process has bound. A bus with a naming service tells that later or never:
/// there the answer is always yes. On failure `error` is one sentence for the user.
bool offersService(const std::string& name, std::string* error);

enum class LineWrite {
    Done,
    RealHardware,  ///< the line cannot be moved from here
    Failed
};

/// Moves the reverse line; engaged is low. Unless it is done, `error` is one sentence for the user.
LineWrite writeReverseLine(bool engaged, std::string* error);

/// What was found of one thing that the desk needs.
struct Finding {
    enum State { Good, Wrong };

    State state;
    std::string what;
    std::string text;
    std::string remedy;  ///< of what is wrong
};

/// Looks at the way to the service: where it would be, and who offers it.
std::vector<Finding> examineDesk(const std::string& service);

}  // namespace qvn::tools

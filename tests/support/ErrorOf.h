#pragma once

#include <string>

#include "desk/BadInput.h"

namespace qvn::tools {

/// What the tools tell the user who asks for this; "accepted" when there is nothing wrong with it.
template <class Action>
std::string errorOf(const Action& action) {
    try {
        action();
    } catch (const BadInput& error) {
        return error.what();
    }
    return "accepted";
}

}  // namespace qvn::tools

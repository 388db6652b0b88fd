#pragma once

#include <stdexcept>

namespace qvn::tools {

/// Something that the user wrote is wrong; what() is one sentence for the user. Ends a tool with kUsage.
class BadInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace qvn::tools

#pragma once

#include <functional>
#include <istream>
#include <stdexcept>
#include <string>

#include "dbc/Database.h"

namespace qvn::dbc {

/// Why a file is of no use; what() is "NAME:LINE: ..." with the word that is wrong and what is expected.
class SyntaxError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Whether a signal matters to the caller.
using Wanted = std::function<bool(const std::string& signal)>;

/// Reads a signal database. Sections that say nothing of messages and their signals are passed over, and so is what is
/// said of messages and signals that are not there. A signal, a message or a statement that is wrong is left out.
/// @throws SyntaxError for the first one that is wrong and concerns a wanted signal, for a text without an end, and
/// where nothing is right
Database readDatabase(
    std::istream& input, const std::string& name, const Wanted& wanted = [](const std::string&) { return true; });

}  // namespace qvn::dbc

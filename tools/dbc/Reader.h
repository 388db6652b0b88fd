#pragma once

#include <functional>
#include <istream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "dbc/Database.h"

namespace qvn::dbc {

/// What is wrong in a file; what() is "NAME:LINE: ..." with the word that is wrong and what is expected.
class SyntaxError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a signal database. Sections that say nothing of messages and their signals are passed over, and so is what is
/// said of messages and signals that are not there. What is wrong is left out, a signal, a message or a section, as
/// long as it is not about a signal that somebody wants; Database::leftOut tells what, the first of each kind with its
/// line.
/// @param isWanted whether a signal of this name matters
/// @throws SyntaxError for the first thing that is wrong about one that does, or about the file as a whole
Database readDatabase(
    std::istream& input, const std::string& name,
    std::function<bool(std::string_view)> isWanted = [](std::string_view) { return true; });

}  // namespace qvn::dbc

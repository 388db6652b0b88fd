#pragma once

#include <istream>
#include <stdexcept>
#include <string>

#include "dbc/Database.h"

namespace qvn::dbc {

/// What is wrong in a file; what() is "NAME:LINE: ..." with the word that is wrong and what is expected.
class SyntaxError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a signal database. Sections that say nothing of messages and their signals are passed over, and so is what is
/// said of messages and signals that are not there.
/// @throws SyntaxError for the first thing that is wrong
Database readDatabase(std::istream& input, const std::string& name);

}  // namespace qvn::dbc

#pragma once

#include <string>

#include "dbc/Database.h"
#include "desk/SignalNotes.h"

namespace qvn::tools {

/// Reads a signal database (DBC file).
/// @throws BadInput for a file that cannot be read, or for what is wrong in it and concerns a signal of the schema
dbc::Database readDatabaseFile(const std::string& path);

/// The warning that something is wrong, one line; empty: nothing is.
std::string leftOutText(const dbc::Database& database);

/// Adds the units and value names that a database has for signals of the schema. A name becomes one word; a unit that
/// is not of plain ASCII characters is left out, since a database does not tell its encoding.
void addNotes(SignalNotes& notes, const dbc::Database& database);

}  // namespace qvn::tools

#pragma once

#include "dbc/Tokens.h"

namespace qvn::dbc {

/// Whether this is the keyword of a section, or of a signal inside one.
bool isSectionBegin(const Token& token);

}  // namespace qvn::dbc

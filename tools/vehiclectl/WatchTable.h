#pragma once

#include <string>
#include <vector>

#include "desk/Output.h"
#include "vehiclectl/PropertyState.h"

namespace qvn::tools {

/// A table of properties that is drawn over itself on a terminal, which standard output is. When the terminal is too
/// low for all of them it shows those that changed last. Nothing of it is left in the way when it goes.
class WatchTable {
public:
    WatchTable(Output& output, const PropertyStates& states, std::vector<const PropertyInfo*> properties);
    ~WatchTable();
    WatchTable(const WatchTable&) = delete;
    WatchTable& operator=(const WatchTable&) = delete;

    void draw();

private:
    std::vector<const PropertyState*> shown(std::size_t most) const;

    Output& output_;
    const PropertyStates& states_;
    std::vector<const PropertyInfo*> properties_;
    std::size_t drawnLines_ = 0;
};

}  // namespace qvn::tools

#pragma once

#include <string>
#include <vector>

#include "desk/Output.h"
#include "vehiclectl/PropertyState.h"

namespace qvn::tools {

/// A table of properties on standard output, a terminal; each picture is drawn over the last. When the terminal has too
/// few lines it shows the properties that changed last. At the end the terminal is as before, below the table.
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

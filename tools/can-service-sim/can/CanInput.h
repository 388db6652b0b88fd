#pragma once

#include <memory>
#include <string>
#include <vector>

#include "can-service-sim/Journal.h"
#include "can-service-sim/can/CanDecoder.h"
#include "can-service-sim/trace/TraceEvents.h"
#include "desk/CommandLine.h"

namespace qvn::tools {

/// Frames of a CAN bus as an input: what the command line says of them, and the files that it names.
class CanInput {
public:
    void declare(CommandLine& line);

    bool given() const { return !log_.empty() || !interface_.empty(); }
    const std::string& log() const { return log_; }
    /// The interface to receive from; empty: none.
    const std::string& interface() const { return interface_; }

    /// Reads the files; does nothing when none is given.
    /// @throws BadInput for the first thing that is wrong in them
    void read();

    /// Tells how much of the files is known to the schema.
    void describe(const Journal& journal) const;

    /// The frames of the log, as a trace; empty after the call.
    std::vector<TraceEvent> takeTrace();
    /// Null when no frames are given.
    CanDecoder* decoder() const { return decoder_.get(); }

private:
    void readDatabase();
    void readLog();

    std::string log_;
    std::string interface_;
    std::string database_;
    std::unique_ptr<CanDecoder> decoder_;
    std::string warning_;               // of what is wrong in the database
    std::vector<std::string> leftOut_;  // all of it
    std::vector<TraceEvent> trace_;
    std::size_t framesInLog_ = 0;
    std::size_t framesKnown_ = 0;
};

}  // namespace qvn::tools

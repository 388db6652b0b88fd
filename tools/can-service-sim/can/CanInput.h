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

    bool given() const { return !mLog.empty() || !mInterface.empty(); }
    const std::string& log() const { return mLog; }
    /// The interface to receive from; empty: none.
    const std::string& interface() const { return mInterface; }

    /// Reads the files; does nothing when none is given.
    /// @throws BadInput for the first thing that is wrong in them
    void read();

    /// Tells how much of the files is known to the schema.
    void describe(const Journal& journal) const;

    /// The frames of the log, as a trace; empty after the call.
    std::vector<TraceEvent> takeTrace();
    /// Null when no frames are given.
    CanDecoder* decoder() const { return mDecoder.get(); }

private:
    void readDatabase();
    void readLog();

    std::string mLog;
    std::string mInterface;
    std::string mDatabase;
    std::unique_ptr<CanDecoder> mDecoder;
    std::string mWarning;               // of what is wrong in the database
    std::vector<std::string> mLeftOut;  // all of it
    std::vector<TraceEvent> mTrace;
    std::size_t mFramesInLog = 0;
    std::size_t mFramesKnown = 0;
};

}  // namespace qvn::tools

#include "can-service-sim/can/CanInput.h"

#include <fstream>
#include <utility>

#include "can-service-sim/can/CandumpReader.h"
#include "can-service-sim/console/InputLines.h"
#include "desk/BadInput.h"
#include "desk/DatabaseNotes.h"

namespace qvn::tools {

void CanInput::declare(CommandLine& line) {
    line.option("--dbc FILE", mDatabase, "Signal database by which CAN frames are decoded");
    line.option("--candump FILE", mLog, "Log of CAN frames to play, as 'candump -l' writes it").needs("--dbc");
    line.option("--can IFACE", mInterface, "CAN interface to receive frames from, such as can0 or vcan0")
        .needs("--dbc")
        .excludes("--speed");
}

void CanInput::read() {
    if (!given()) {
        if (!mDatabase.empty()) {
            throw BadInput("--dbc tells what frames mean; add --candump LOG or --can IFACE, where they come from");
        }
        return;
    }
    readDatabase();
    if (!mLog.empty()) {
        readLog();
    }
}

void CanInput::readDatabase() {
    dbc::Database database = readDatabaseFile(mDatabase);
    mWarning = leftOutText(database);
    mLeftOut = std::move(database.leftOut);
    addNotes(SignalNotes::instance(), database);
    mDecoder = std::make_unique<CanDecoder>(std::move(database));
    if (mDecoder->knownSignals() == 0) {
        throw BadInput(mDatabase + ": none of its " + std::to_string(mDecoder->signals()) +
                       " signals is known to the schema; expected names such as ESP_FD2_VehSpd, --list shows them all" +
                       (mLeftOut.empty() ? "" : "; " + mLeftOut.front()));
    }
}

void CanInput::readLog() {
    std::ifstream file = openFile(mLog);
    mTrace = readCandump(file, mLog, [this](const CanFrame& frame) {
        ++mFramesInLog;
        return mDecoder->knows(frame);
    });
    mFramesKnown = mTrace.size();
    if (mFramesKnown == 0) {
        throw BadInput(mLog + ": none of its " + std::to_string(mFramesInLog) + " data frames is a message of " +
                       mDatabase + " with a signal of the schema");
    }
}

void CanInput::describe(const Journal& journal) const {
    if (!mDecoder) {
        return;
    }
    journal.note(mDatabase + ": " + std::to_string(mDecoder->messages()) + " messages, " +
                 std::to_string(mDecoder->signals()) + " signals; " + std::to_string(mDecoder->knownSignals()) +
                 " of them known to the schema");
    if (!mWarning.empty()) {
        journal.note(mWarning);
    }
    for (const std::string& wrong : mLeftOut) {
        journal.detail("wrong: " + wrong);
    }
    for (const std::string& unknown : mDecoder->unknownSignals()) {
        journal.detail("unknown to the schema: " + unknown);
    }
    if (!mLog.empty()) {
        journal.note(mLog + ": " + std::to_string(mFramesInLog) + " data frames; " + std::to_string(mFramesKnown) +
                     " of them carry such signals");
    }
}

std::vector<TraceEvent> CanInput::takeTrace() {
    return std::exchange(mTrace, {});
}

}  // namespace qvn::tools

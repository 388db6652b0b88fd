#include "can-service-sim/can/CanInput.h"

#include <fstream>
#include <utility>

#include "can-service-sim/can/CandumpReader.h"
#include "can-service-sim/console/InputLines.h"
#include "desk/BadInput.h"
#include "desk/DatabaseNotes.h"

namespace qvn::tools {

void CanInput::declare(CommandLine& line) {
    line.option("--dbc FILE", database_, "Signal database by which CAN frames are decoded");
    line.option("--candump FILE", log_, "Log of CAN frames to play, as 'candump -l' writes it").needs("--dbc");
    line.option("--can IFACE", interface_, "CAN interface to receive frames from, such as can0 or vcan0")
        .needs("--dbc")
        .excludes("--speed");
}

void CanInput::read() {
    if (!given()) {
        if (!database_.empty()) {
            throw BadInput("--dbc tells what frames mean; add --candump LOG or --can IFACE, where they come from");
        }
        return;
    }
    readDatabase();
    if (!log_.empty()) {
        readLog();
    }
}

void CanInput::readDatabase() {
    dbc::Database database = readDatabaseFile(database_);
    warning_ = leftOutText(database);
    leftOut_ = std::move(database.leftOut);
    addNotes(SignalNotes::instance(), database);
    decoder_ = std::make_unique<CanDecoder>(std::move(database));
    if (decoder_->knownSignals() == 0) {
        throw BadInput(database_ + ": none of its " + std::to_string(decoder_->signals()) +
                       " signals is known to the schema; expected names such as ESP_FD2_VehSpd, --list shows them all" +
                       (leftOut_.empty() ? "" : "; " + leftOut_.front()));
    }
}

void CanInput::readLog() {
    std::ifstream file = openFile(log_);
    trace_ = readCandump(file, log_, [this](const CanFrame& frame) {
        ++framesInLog_;
        return decoder_->knows(frame);
    });
    framesKnown_ = trace_.size();
    if (framesKnown_ == 0) {
        throw BadInput(log_ + ": none of its " + std::to_string(framesInLog_) + " data frames is a message of " +
                       database_ + " with a signal of the schema");
    }
}

void CanInput::describe(const Journal& journal) const {
    if (!decoder_) {
        return;
    }
    journal.note(database_ + ": " + std::to_string(decoder_->messages()) + " messages, " +
                 std::to_string(decoder_->signals()) + " signals; " + std::to_string(decoder_->knownSignals()) +
                 " of them known to the schema");
    if (!warning_.empty()) {
        journal.note(warning_);
    }
    for (const std::string& wrong : leftOut_) {
        journal.detail("wrong: " + wrong);
    }
    for (const std::string& unknown : decoder_->unknownSignals()) {
        journal.detail("unknown to the schema: " + unknown);
    }
    if (!log_.empty()) {
        journal.note(log_ + ": " + std::to_string(framesInLog_) + " data frames; " + std::to_string(framesKnown_) +
                     " of them carry such signals");
    }
}

std::vector<TraceEvent> CanInput::takeTrace() {
    return std::exchange(trace_, {});
}

}  // namespace qvn::tools

#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "can-service-sim/Simulation.h"
#include "can-service-sim/trace/TraceReader.h"
#include "dbc/Reader.h"
#include "desk/SignalNames.h"
#include "desk/Text.h"

namespace qvn::tools {

inline std::vector<TraceEvent> traceOf(const std::string& text) {
    std::istringstream input(text);
    return readTrace(input, "a.trace");
}

constexpr char kBenchDatabase[] =
    "BO_ 1 A: 2 E\n SG_ Mux M : 0|8@1+ (1,0) [0|0] \"\" X\n SG_ PLG_1_PLG_Sts m1 : 8|8@1+ (1,0) [0|0] \"\" X\n"
    " SG_ HAP_FD1_APS_ProcBar m2 : 8|8@1+ (1,0) [0|0] \"\" X\nBA_ \"GenMsgCycleTime\" BO_ 1 100;\n";

/// A simulation with a clock by hand, and what it tells: what happens, and what clients then see.
class Bench : private Vehicle::Observer {
public:
    explicit Bench(double speed = 1.0, bool initialValues = true)
        : mDecoder([] {
              std::istringstream text(kBenchDatabase);
              return dbc::readDatabase(text, "a.dbc");
          }()),
          simulation([this] { return mNow; }, speed, *this, initialValues, &mDecoder) {
        for (const auto& [signal, raw] : simulation.vehicle().values()) {
            mSeen[signalName(signal)] = hexBytes(raw);
        }
    }

    void start(std::vector<TraceEvent> trace, bool loop = false, std::optional<double> startAt = {}) {
        Playback::AtEnd atEnd;
        atEnd.loop = loop;
        simulation.start(std::move(trace), std::move(atEnd), startAt);
    }

    void say(const std::string& line) { simulation.apply(readTraceLine(line)->action); }

    /// Lets that many seconds pass.
    void pass(double seconds) {
        const Clock::time_point end =
            mNow + std::chrono::round<Clock::duration>(std::chrono::duration<double>(seconds));
        for (auto next = simulation.next(); next && *next <= end; next = simulation.next()) {
            mNow = std::max(mNow, *next);
            simulation.run();
        }
        mNow = end;
        simulation.run();
    }

    /// What clients were told since the last call, with the seconds of the trace.
    std::string told() { return std::exchange(mTold, {}); }
    /// What clients see.
    std::string seen(const std::string& what) const {
        const auto found = mSeen.find(what);
        return found == mSeen.end() ? "-" : found->second;
    }
    /// What they see that is not zero.
    std::string everything() const {
        std::string all;
        for (const auto& [what, value] : mSeen) {
            all += value.find_first_not_of('0') == std::string::npos ? "" : what + "=" + value + " ";
        }
        return all + std::to_string(mSeen.size());
    }

private:
    void onGiven(std::uint32_t, const std::string&) override {}
    void onStop(std::uint32_t) override {}
    void onFault(const FaultEvent&) override {}
    void onComplaint(const std::string& text) override { ADD_FAILURE() << text; }
    void onValue(std::uint32_t signal, const std::string& raw) override { see(signalName(signal), hexBytes(raw)); }
    void onNoValue(std::uint32_t signal) override { mSeen.erase(signalName(signal)); }
    void onStatus(std::uint32_t message, bool timedOut) override { see(signalName(message), timedOut ? "lost" : "ok"); }
    void onReverse(bool engaged) override { see("reverse", engaged ? "1" : "0"); }
    void onService(bool up) override { see("service", up ? "up" : "down"); }

    void see(const std::string& what, const std::string& value) {
        std::ostringstream line;
        line << std::round(simulation.playback().position(simulation.time()) * 1e6) / 1e6 << " " << what << "=" << value
             << "; ";
        mTold += line.str();
        mSeen[what] = value;
        if (value == "ok" || value == "down" || (what == "reverse" && value == "0")) {
            mSeen.erase(what);  // as if it had never been otherwise
        }
    }

    Clock::time_point mNow{};
    CanDecoder mDecoder;
    std::map<std::string, std::string> mSeen;
    std::string mTold;

public:
    Simulation simulation;
};

}  // namespace qvn::tools

// Frames on their way to the schema's signals: the input is a log of a CAN bus.

#include <cstdint>
#include <sstream>
#include <string>

#include "Require.h"
#include "can-service-sim/can/CanDecoder.h"
#include "can-service-sim/can/CandumpReader.h"
#include "dbc/Reader.h"
#include "desk/BadInput.h"

namespace {

using namespace qvn::tools;
using qvn::fuzz::require;

const char kDatabase[] =
    "BO_ 1 A: 8 E\n"
    " SG_ ESP_FD2_VehSpd : 7|32@0- (1,0) [0|0] \"\" X\n"
    " SG_ BCM1_DrvDoorSts M : 32|8@1- (1,0) [0|0] \"\" X\n"
    " SG_ CSA2_SteerWheelAng m1 : 40|23@1+ (0.1,-5) [0|0] \"\" X\n"
    "BO_ 2147483649 B: 64 E\n"
    " SG_ HAP_FD2_AVM_3DAngSts : 448|64@1- (1,0) [0|0] \"\" X\n"
    "SIG_VALTYPE_ 1 ESP_FD2_VehSpd : 1;\nSIG_VALTYPE_ 2147483649 HAP_FD2_AVM_3DAngSts : 2;\n";

void requireSound(const DecodedFrame& decoded) {
    for (const DecodedFrame::Value& value : decoded.values) {
        const auto* const row = qvn::tables::findDecodingRule(value.code);
        require(row && value.raw.size() == row->bytes);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream database(kDatabase);
    CanDecoder decoder(qvn::dbc::readDatabase(database, "dbc"));
    std::istringstream input(std::string(data, data + size));
    try {
        double last = 0.0;
        for (const TraceEvent& event : readCandump(input, "log", [](const CanFrame&) { return true; })) {
            require(*event.time >= last && *event.time <= 1e6);
            last = *event.time;
            requireSound(decoder.decode(std::get<FrameEvent>(event.action).frame));
        }
    } catch (const BadInput& error) {
        const std::string text = error.what();
        require(text.rfind("log:", 0) == 0 && text.find('\n') == std::string::npos);
    }
    return 0;
}

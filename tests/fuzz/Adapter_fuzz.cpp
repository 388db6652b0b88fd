// The decoding of a signal: the input chooses a signal table, a code, and gives the raw bytes.

#include <cstdint>
#include <iterator>

#include "Input.h"
#include "Require.h"
#include "adapter/T21CanSignalAdapter.h"
#include "tables/SignalTable.h"

namespace {

using qvn::fuzz::require;

constexpr int kLargestWord = 0xFFFF;
constexpr float kLargestScaledWord = 6553.5F;

const VehilceClientInfo* const kTables[] = {hap_signal_table, avm_signal_table, rvc_signal_table,
                                            dms_signal_table, oms_signal_table, nullptr};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static auto* const adapter = new T21CanSignalAdapter;
    qvn::fuzz::Input input(data, size);
    const VehilceClientInfo* const table = kTables[input.byte() % std::size(kTables)];
    const std::int32_t code = input.code();
    VehicleClientProperty property;
    const bool decoded = adapter->signalAdapter(code, input.rest(), table, property);

    const auto& value = property.propValue.value;
    require(decoded ? table != nullptr : value.int32Values.empty() && value.floatValues.empty());
    require(!decoded || value.int32Values.empty() != value.floatValues.empty());
    for (const int number : value.int32Values) {
        require(number >= 0 && number <= kLargestWord);
    }
    for (const float number : value.floatValues) {
        require(number >= 0.0F && number <= kLargestScaledWord);
    }
    return 0;
}

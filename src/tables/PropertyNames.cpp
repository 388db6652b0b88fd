#include <vehicle/PropertyIds.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

struct NameRow {
    const char* code;  ///< with its prefix QVN_GET_ or QVN_SET_
    int property;

    const char* signal() const { return code + sizeof("QVN_GET_") - 1; }
};

#define int32(code, property) \
    { #code, property }
#define float32(code, property) \
    { #code, property }

constexpr NameRow kNames[] = {
#include "tables/SignalTableRows.inc"
};

#undef float32
#undef int32

template <class Matches>
const NameRow* find(Matches matches) {
    const NameRow* const row = std::find_if(std::begin(kNames), std::end(kNames), matches);
    return row == std::end(kNames) ? nullptr : row;
}

}  // namespace

int propertyId(const char* signal) {
    const NameRow* const row =
        signal == nullptr ? nullptr : find([signal](const NameRow& r) { return std::strcmp(r.signal(), signal) == 0; });
    return row == nullptr ? 0 : row->property;
}

const char* propertyName(int id) {
    const NameRow* const row = find([id](const NameRow& r) { return r.property == id; });
    return row == nullptr ? nullptr : row->signal();
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

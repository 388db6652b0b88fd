#include "can-service-sim/Faults.h"

#include <algorithm>

#include "can-service-sim/trace/TraceCommands.h"
#include "desk/Number.h"

namespace qvn::tools {
namespace {

using Kind = FaultEvent::Kind;

}  // namespace

std::optional<std::string> Faults::apply(const FaultEvent& fault, const std::optional<std::string>& currentValue) {
    switch (fault.kind) {
        case Kind::Silence:
            mPresent[{fault.kind, fault.code}] = {};
            return std::nullopt;
        case Kind::Freeze:
            if (currentValue) {
                mPresent.insert({{fault.kind, fault.code}, {0.0, *currentValue, {}}});
            }
            return std::nullopt;
        case Kind::Thaw:
            return thaw(fault.code);
        case Kind::Delay:
            if (fault.seconds > 0.0) {
                mPresent[{fault.kind, fault.code}].seconds = fault.seconds;
            } else {
                mPresent.erase({fault.kind, fault.code});
            }
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::string> Faults::thaw(std::uint32_t signal) {
    const auto frozen = mPresent.find({Kind::Freeze, signal});
    if (frozen == mPresent.end()) {
        return std::nullopt;
    }
    std::optional<std::string> latest = std::move(frozen->second.latest);
    mPresent.erase(frozen);
    return latest;
}

const std::string& Faults::shown(std::uint32_t signal, const std::string& raw) {
    const auto frozen = mPresent.find({Kind::Freeze, signal});
    if (frozen == mPresent.end()) {
        return raw;
    }
    frozen->second.latest = raw;
    return frozen->second.shown;
}

std::map<std::uint32_t, std::string> Faults::end() {
    std::map<std::uint32_t, std::string> hidden;
    for (const auto& [what, fault] : mPresent) {
        if (fault.latest) {
            hidden[what.second] = *fault.latest;
        }
    }
    mPresent.clear();
    return hidden;
}

std::map<std::uint32_t, std::string> Faults::describe() const {
    std::map<std::uint32_t, std::string> faults;
    for (const auto& [what, fault] : mPresent) {
        const TraceCommand& command = traceCommand(what.first);
        std::string& all = faults[what.second];
        all += (all.empty() ? "" : ", ") + std::string(command.state);
        all += command.takesSeconds() ? " " + formatNumber(fault.seconds) + " s" : "";
    }
    return faults;
}

double Faults::delayOf(std::uint32_t signal, std::optional<std::uint32_t> message) const {
    const auto seconds = [this](std::uint32_t code) {
        const auto found = mPresent.find({Kind::Delay, code});
        return found == mPresent.end() ? 0.0 : found->second.seconds;
    };
    return std::max(seconds(signal), message ? seconds(*message) : 0.0);
}

}  // namespace qvn::tools

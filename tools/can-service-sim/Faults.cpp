#include "can-service-sim/Faults.h"

#include <algorithm>
#include <utility>

#include "desk/Number.h"

namespace qvn::tools {

std::optional<std::string> Faults::apply(const FaultEvent& fault, const std::optional<std::string>& currentValue) {
    switch (fault.kind) {
        case FaultEvent::Kind::Silence:
            silent_.insert(fault.code);
            break;
        case FaultEvent::Kind::Freeze:
            if (currentValue) {
                frozen_.insert({fault.code, {*currentValue, {}}});
            }
            break;
        case FaultEvent::Kind::Thaw:
            if (const auto frozen = frozen_.find(fault.code); frozen != frozen_.end()) {
                std::optional<std::string> latest = std::move(frozen->second.latest);
                frozen_.erase(frozen);
                return latest;
            }
            break;
        case FaultEvent::Kind::Delay:
            if (fault.seconds > 0.0) {
                delays_[fault.code] = fault.seconds;
            } else {
                delays_.erase(fault.code);
            }
            break;
    }
    return std::nullopt;
}

const std::string& Faults::shown(std::uint32_t signal, const std::string& raw) {
    const auto frozen = frozen_.find(signal);
    if (frozen == frozen_.end()) {
        return raw;
    }
    frozen->second.latest = raw;
    return frozen->second.shown;
}

std::map<std::uint32_t, std::string> Faults::end() {
    std::map<std::uint32_t, std::string> hidden;
    for (const auto& [signal, frozen] : frozen_) {
        if (frozen.latest) {
            hidden[signal] = *frozen.latest;
        }
    }
    *this = {};
    return hidden;
}

std::map<std::uint32_t, std::string> Faults::describe() const {
    std::map<std::uint32_t, std::string> faults;
    const auto add = [&faults](std::uint32_t code, const std::string& text) {
        std::string& all = faults[code];
        all += (all.empty() ? "" : ", ") + text;
    };
    for (const std::uint32_t message : silent_) {
        add(message, "silent");
    }
    for (const auto& [signal, frozen] : frozen_) {
        add(signal, "frozen");
    }
    for (const auto& [code, seconds] : delays_) {
        add(code, "late by " + formatNumber(seconds) + " s");
    }
    return faults;
}

double Faults::delayOf(std::uint32_t signal, std::optional<std::uint32_t> message) const {
    const auto seconds = [this](std::uint32_t code) {
        const auto found = delays_.find(code);
        return found == delays_.end() ? 0.0 : found->second;
    };
    return std::max(seconds(signal), message ? seconds(*message) : 0.0);
}

}  // namespace qvn::tools

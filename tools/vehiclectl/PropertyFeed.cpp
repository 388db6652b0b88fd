#include "vehiclectl/PropertyFeed.h"

#include <utility>

#include "desk/MonotonicTime.h"

namespace qvn::tools {

using namespace platform::vehicle;

namespace {

Update valueUpdate(VehiclePropValue value) {
    const auto origin = value.areaId == 0 ? Update::Origin::ReverseLine : Update::Origin::Service;
    const int property = value.prop;
    return {Update::Kind::Value, origin, property, std::move(value)};
}

}  // namespace

PropertyFeed& PropertyFeed::instance() {
    // Never destroyed: the client's threads may report until the process has ended.
    static auto* const feed = new PropertyFeed;
    return *feed;
}

bool PropertyFeed::subscribe(const std::vector<int>& properties) {
    const auto changed = [](VehiclePropValue value, PropertyType) { instance().push(valueUpdate(std::move(value))); };
    const auto statusChanged = [](int property, VehiclePropertyStatus status) {
        const bool good = status == VEHICLE_PROPERTY_STATUS_AVAILABLE;
        instance().push({Update::Kind::Status, Update::Origin::Service, property, {}, good});
    };
    VehicleClient& client = *VehicleClient::getInstance();
    if (!client.subscribe(changed, properties, statusChanged)) {
        return false;
    }
    // The client connects when it is made. What it received before it knew the callbacks is in its cache only.
    for (const int property : properties) {
        VehiclePropValue value;
        if (client.getPropValue(property, &value) && value.timestamp != 0) {
            push(valueUpdate(std::move(value)));
        }
    }
    return true;
}

std::vector<Update> PropertyFeed::take() {
    std::vector<Update> updates;
    const sync::MutexLock lock(mutex_);
    wakeUp_.clear();
    updates.swap(updates_);
    return updates;
}

void PropertyFeed::push(Update update) {
    update.at = update.value.timestamp != 0 ? update.value.timestamp : monotonicNow();
    const sync::MutexLock lock(mutex_);
    updates_.push_back(std::move(update));
    if (updates_.size() == 1) {
        wakeUp_.notify();
    }
}

}  // namespace qvn::tools

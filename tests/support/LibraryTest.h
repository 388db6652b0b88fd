#pragma once

#include <gtest/gtest.h>
#include <vehicle/VehicleProperty.h>

#include <functional>
#include <string>
#include <vector>

#include "support/HostDir.h"
#include "support/Journal.h"

namespace qvn::test {

using platform::vehicle::PropertyType;
using platform::vehicle::VehicleProperty;
using platform::vehicle::VehiclePropertyStatus;
using platform::vehicle::VehiclePropValue;

struct Change {
    VehiclePropValue value;
    PropertyType type;
};

struct StatusChange {
    int property;
    VehiclePropertyStatus status;
};

inline bool operator==(const StatusChange& a, const StatusChange& b) {
    return a.property == b.property && a.status == b.status;
}

/// The subscriber's two callbacks, and what they got.
struct Application {
    static void changed(VehiclePropValue value, PropertyType type);
    static void status(int property, VehiclePropertyStatus status);

    static Journal<Change> changes;
    static Journal<StatusChange> statuses;
    /// What the application does inside its callbacks, after the entry into the journal.
    static std::function<void(const Change&)> onChange;
    static std::function<void(const StatusChange&)> onStatus;

    static void reset();
};

/// A runtime directory of its own for the host bus, and all doubles as new: a HAP vehicle, reverse released.
class LibraryTest : public ::testing::Test {
protected:
    LibraryTest();

private:
    HostDir mHostDir;
};

}  // namespace qvn::test

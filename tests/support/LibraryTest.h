#pragma once

#include <gtest/gtest.h>
#include <vehicle/VehicleProperty.h>

#include <functional>
#include <mutex>
#include <string>
#include <utility>
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

/// What an application does inside a callback; a test may change it while callbacks run.
template <class Entry>
class Reaction {
public:
    void operator=(std::function<void(const Entry&)> reaction) {  // NOLINT(misc-unconventional-assign-operator)
        const std::lock_guard<std::mutex> lock(mMutex);
        mReaction = std::move(reaction);
    }
    void operator()(const Entry& entry) {
        std::unique_lock<std::mutex> lock(mMutex);
        const std::function<void(const Entry&)> reaction = mReaction;
        lock.unlock();
        if (reaction) {
            reaction(entry);
        }
    }

private:
    std::mutex mMutex;
    std::function<void(const Entry&)> mReaction;
};

/// The subscriber's two callbacks, and what they got.
struct Application {
    static void changed(VehiclePropValue value, PropertyType type);
    static void status(int property, VehiclePropertyStatus status);

    static Journal<Change> changes;
    static Journal<StatusChange> statuses;
    /// After the entry into the journal.
    static Reaction<Change> onChange;
    static Reaction<StatusChange> onStatus;

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

#pragma once

#include <memory>

#include "client/VehicleClientImpl.h"
#include "support/CanServiceDouble.h"
#include "support/FakeGpioport.h"
#include "support/FakePsis.h"
#include "support/LibraryTest.h"
#include "support/LogRecorder.h"

namespace qvn::test {

using platform::vehicle::VehicleClientImpl;

/// A core whose choice of function and cache can be seen.
class TestCore : public VehicleClientImpl {
public:
    using VehicleClientImpl::functionType;
    using VehicleClientImpl::signalTable;

    /// Without its locks: nothing else may be using the core.
    std::vector<VehicleClientProperty>& cache() QVN_UNCHECKED_LOCKING { return propertyCache; }
};

inline VehiclePropValue intValue(int property, int number) {
    VehiclePropValue value;
    value.prop = property;
    value.areaId = 0x01000000;
    value.value.int32Values = {number};
    return value;
}

/// A core that has its variant and its connection; the CAN service is there on demand.
class CoreTest : public LibraryTest {
protected:
    void startCore() {
        core = std::make_unique<TestCore>();
        core->init();
    }
    void startCoreWithService() {
        server = std::make_unique<CanServiceDouble>();
        startCore();
        ASSERT_TRUE(server->waitForSubscriptions(1));
    }
    /// As an application does it, with the reverse line's present level out of the way.
    bool subscribe(std::vector<int> properties) {
        const bool done = core->subscribe(&Application::changed, std::move(properties), &Application::status);
        Application::changes.clear();
        return done;
    }

    std::unique_ptr<CanServiceDouble> server;
    std::unique_ptr<TestCore> core;
};

}  // namespace qvn::test

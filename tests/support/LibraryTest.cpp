#include "support/LibraryTest.h"

#include "support/FakeGpioport.h"
#include "support/FakePsis.h"
#include "support/LogRecorder.h"

namespace qvn::test {

Journal<Change> Application::changes;
Journal<StatusChange> Application::statuses;
Reaction<Change> Application::onChange;
Reaction<StatusChange> Application::onStatus;

void Application::changed(VehiclePropValue value, PropertyType type) {
    changes.add({value, type});
    onChange({value, type});
}

void Application::status(int property, VehiclePropertyStatus status) {
    statuses.add({property, status});
    onStatus({property, status});
}

void Application::reset() {
    changes.clear();
    statuses.clear();
    onChange = nullptr;
    onStatus = nullptr;
}

LibraryTest::LibraryTest() {
    Application::reset();
    log_recorder::reset();
    fake_gpio::reset();
    FakePsis::reset();
    FakePsis::instance().keys = {{"OMNIVIEW_SYSTEM_VEHICLE_CONFIGURATION_INFORMATION", 3}, {"REVERSE_VIDEO", 0}};
}

}  // namespace qvn::test

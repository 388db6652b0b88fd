#include "client/VehicleClientImpl.h"

#include <fcntl.h>
#include <psis/psis_client.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "canservice/FdbusServiceManager.h"
#include "client/ProcessEnd.h"
#include "log/Log.h"
#include "sync/MonotonicTime.h"
#include "tables/SignalTable.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

const char kConfigNamespace[] = "config_qvn";
const char kOmniviewKey[] = "OMNIVIEW_SYSTEM_VEHICLE_CONFIGURATION_INFORMATION";
const char kReverseVideoKey[] = "REVERSE_VIDEO";
constexpr int kVehicleProfile = -1;

constexpr unsigned char kOmniviewAround = 2;
constexpr unsigned char kOmniviewAroundAndParking = 3;
constexpr unsigned char kReverseVideoFirst = 1;
constexpr unsigned char kReverseVideoLast = 3;

constexpr int kInitFailedLine = 40;
constexpr int kPersistencyStartLine = 51;
constexpr int kPersistencyFailedLine = 54;
constexpr int kDefaultVariantLine = 78;
constexpr int kPersistencyDoneLine = 81;
constexpr int kKeyFailedLine = 92;

[[noreturn]] void fail(int error, const char* what) {
    throw std::system_error(error, std::generic_category(), what);
}

/// A lack of file descriptors passes, while a variant that cannot be read for another reason stays so.
void throwIfOutOfDescriptors() {
    const int descriptor = ::open("/dev/null", O_RDONLY);
    if (descriptor >= 0) {
        ::close(descriptor);
    } else if (errno == EMFILE || errno == ENFILE) {
        fail(errno, "vehicle client: cannot read the vehicle's variant");
    }
}

}  // namespace

VehicleClientImpl::VehicleClientImpl() : CBaseWorker("", 0, 0) {}

VehicleClientImpl::~VehicleClientImpl() {
    const ProcessEnd::CoreChange destruction(*this, ProcessEnd::CoreChange::kDestroyed);
    // Values may be flowing, and callbacks may set properties: they end first, so that none meets a half-destroyed
    // core.
    stop();
    serviceManager.reset();
    if (workerStarted) {
        exit();
        join();
    }
}

void VehicleClientImpl::init() {
    const ProcessEnd::CoreChange beginning(*this, ProcessEnd::CoreChange::kMade);
    if (!beginning) {
        QVN_LOG(Error, "[%s][%d]the process is ending, a vehicle client that is made now serves nothing!");
        return;
    }
    if (!ProcessEnd::startBus()) {
        fail(EAGAIN, "vehicle client: cannot start the FDBus context");
    }
    workerStarted = start(FDB_WORKER_DEFAULT);
    if (!workerStarted) {
        fail(EAGAIN, "vehicle client: cannot start its worker thread");
    }
    if (!initVariant()) {
        QVN_LOG_AT(Error, kInitFailedLine, "[%s][%d]vehicle client initialize error!\n");
        throwIfOutOfDescriptors();
        return;
    }
    initSignalTable(functionType);

    {
        const sync::MutexLock state(stateMutex);
        getTimestamp(service.since);
    }
    serviceManager = std::make_shared<FdbusServiceManager>(this);
    serviceManager->setObserver(&connection);
    serviceManager->setSignalTable(signalTable);
    serviceManager->setFuncType(functionType);
    // A lambda with one pointer fits into std::function, so that copying it on the receive path allocates nothing.
    serviceManager->registerSignalCallback(
        [this](VehiclePropValue&& value, PropertyType type) { dispatchSingal(std::move(value), type); });
    serviceManager->init();
}

void VehicleClientImpl::deinit() {}

unsigned char VehicleClientImpl::readKey(const char* key) {
    unsigned char value = 0;
    if (psisReadKey(kConfigNamespace, key, kVehicleProfile, &value, sizeof(value)) != 0) {
        QVN_LOG_AT(Error, kKeyFailedLine, "[%s][%d]Unable to get key value!Error[%d], set default vaule = [0]!\n", 1);
    }
    return value;
}

bool VehicleClientImpl::initVariant() {
    QVN_LOG_AT(Error, kPersistencyStartLine, "[%s][%d]Init persistency client.\n");
    if (psisInitClient() != 0) {
        QVN_LOG_AT(Error, kPersistencyFailedLine, "[%s][%d]Unable to initialize persistency!\n");
        return false;
    }

    const unsigned char omniview = readKey(kOmniviewKey);
    const unsigned char reverse = readKey(kReverseVideoKey);
    if (omniview == kOmniviewAroundAndParking) {
        functionType = FUNCTION_TYPE_HAP;
    } else if (omniview == kOmniviewAround) {
        functionType = FUNCTION_TYPE_AVM;
    } else if (reverse >= kReverseVideoFirst && reverse <= kReverseVideoLast) {
        functionType = FUNCTION_TYPE_RVC;
    } else {
        functionType = FUNCTION_TYPE_AVM;
        QVN_LOG_AT(Error, kDefaultVariantLine,
                   "[%s][%d]not get AVM,RVC,HAP config words, error! so set use AVM as default config words!\n");
    }
    QVN_LOG_AT(Info, kPersistencyDoneLine, "[%s][%d]Init persistency client finished.\n");
    return true;
}

void VehicleClientImpl::initSignalTable(FUNCTION_TYPE type) {
    switch (type) {
        case FUNCTION_TYPE_AVM:
            signalTable = avm_signal_table;
            break;
        case FUNCTION_TYPE_RVC:
            signalTable = rvc_signal_table;
            break;
        case FUNCTION_TYPE_HAP:
            signalTable = hap_signal_table;
            break;
        case FUNCTION_TYPE_DMS:
            signalTable = dms_signal_table;
            break;
        case FUNCTION_TYPE_OMS:
            signalTable = oms_signal_table;
            break;
        case FUNCTION_TYPE_NONE:
            break;
    }
    if (signalTable == nullptr) {
        return;
    }

    const sync::MutexLock cache(cacheMutex);
    const sync::MutexLock state(stateMutex);
    propertyCache.reserve(propertyCache.size() + tables::kSignalTableRows);
    for (std::size_t i = 0; i < tables::kSignalTableRows; ++i) {
        const VehilceClientInfo& row = signalTable[i];
        VehicleClientProperty record;
        record.propValue.areaId = static_cast<std::int32_t>(row.areaId);
        record.propValue.prop = static_cast<std::int32_t>(row.property);
        record.propValue.status = row.status;
        record.propertyType = static_cast<PropertyType>(row.propertyType);
        propertyCache.push_back(std::move(record));
    }
}

bool VehicleClientImpl::getTimestamp(long& out) {
    const long now = sync::monotonicTime();
    if (now == 0) {
        return false;
    }
    out = now;
    return true;
}

void VehicleClientImpl::stop() {
    if (serviceManager) {
        serviceManager->stop();
    }
}

bool VehicleClientImpl::endCallbacks(std::chrono::steady_clock::time_point deadline) {
    return !serviceManager || serviceManager->endCallbacks(deadline);
}

void VehicleClientImpl::leaveBus(bool callbackRuns) {
    if (serviceManager) {
        serviceManager->leaveBus(callbackRuns);
    }
}

bool VehicleClientImpl::isInsideCallback() {
    return serviceManager && serviceManager->isInsideCallback();
}

bool VehicleClientImpl::hasLostThread() {
    return serviceManager && serviceManager->hasLostThread();
}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

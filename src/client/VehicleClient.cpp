#include <vehicle/VehicleClient.h>

#include <chrono>
#include <utility>

#include "client/ProcessCore.h"
#include "client/ProcessEnd.h"
#include "client/VehicleClientImpl.h"
#include "sync/Mutex.h"

namespace qvn {
namespace platform {
namespace vehicle {

namespace {

constexpr std::chrono::hours kForAsLongAsItTakes(24);

sync::Mutex gSingletonMutex;
std::atomic<VehicleClientImpl*> gProcessCore{nullptr};

}  // namespace

std::atomic<VehicleClient*> VehicleClient::mVehicleClient{nullptr};

VehicleClient* VehicleClient::getInstance() {
    VehicleClient* client = mVehicleClient;
    if (client == nullptr) {
        const sync::MutexLock lock(gSingletonMutex);
        client = mVehicleClient;
        if (client == nullptr) {
            client = new VehicleClient;
            gProcessCore = client->mImpl.get();
            mVehicleClient = client;
        }
    }
    return client;
}

VehicleClientImpl* processCore() {
    return gProcessCore;
}

VehicleClient::VehicleClient() : mImpl(new VehicleClientImpl) {
    mReserved[0] = mReserved[1] = nullptr;
    mImpl->init();
}

VehicleClient::~VehicleClient() {
    {
        const sync::MutexLock lock(gSingletonMutex);
        VehicleClient* self = this;
        if (mVehicleClient.compare_exchange_strong(self, nullptr)) {
            gProcessCore = nullptr;
        }
    }
    const ProcessEnd::CoreChange destruction(*mImpl, ProcessEnd::CoreChange::kDestroyed);
    mImpl->endCallbacks(std::chrono::steady_clock::now() + kForAsLongAsItTakes);
    mImpl->endObservation();
    if (destruction && !mImpl->hasLostThread()) {
        mImpl.reset();
    } else {
        mImpl.release();  // NOLINT(bugprone-unused-return-value): there is no bus, or no thread, to take leave of
    }
}

bool VehicleClient::subscribe(PropertyChangedCallback changed, std::vector<int> properties, SetErrorCallback status) {
    return mImpl->subscribe(changed, std::move(properties), status);
}

bool VehicleClient::unsubscribe(PropertyChangedCallback changed, std::vector<int> properties) {
    return mImpl->unsubscribe(changed, std::move(properties));
}

bool VehicleClient::getPropValue(int property, VehiclePropValue* out) {
    return mImpl->getPropValue(property, out);
}

PropertyType VehicleClient::getPropertyType(int property) {
    return mImpl->getPropertyType(property);
}

bool VehicleClient::getBoolProperty(int property, bool& out) {
    return mImpl->getBoolProperty(property, out);
}

bool VehicleClient::getInt32Property(int property, std::vector<int>& out) {
    return mImpl->getInt32Property(property, out);
}

bool VehicleClient::getInt64Property(int property, std::vector<long>& out) {
    return mImpl->getInt64Property(property, out);
}

bool VehicleClient::getFloatProperty(int property, std::vector<float>& out) {
    return mImpl->getFloatProperty(property, out);
}

bool VehicleClient::getByteProperty(int property, std::vector<unsigned char>& out) {
    return mImpl->getByteProperty(property, out);
}

bool VehicleClient::getStringProperty(int property, std::string& out) {
    return mImpl->getStringProperty(property, out);
}

bool VehicleClient::setPropValue(int property, VehiclePropValue* value) {
    return mImpl->setPropValue(property, value);
}

bool VehicleClient::setBoolProperty(int property, bool& value) {
    return mImpl->setBoolProperty(property, value);
}

bool VehicleClient::setInt32Property(int property, std::vector<int>& value) {
    return mImpl->setInt32Property(property, value);
}

bool VehicleClient::setInt64Property(int property, std::vector<long>& value) {
    return mImpl->setInt64Property(property, value);
}

bool VehicleClient::setFloatProperty(int property, std::vector<float>& value) {
    return mImpl->setFloatProperty(property, value);
}

bool VehicleClient::setByteProperty(int property, std::vector<unsigned char>& value) {
    return mImpl->setByteProperty(property, value);
}

bool VehicleClient::setStringProperty(int property, std::string& value) {
    return mImpl->setStringProperty(property, value);
}

void VehicleClient::onPorpertyChanged(int, const VehiclePropValue&, int) {}

void VehicleClient::onPropSetError(int, VehiclePropertyStatus) {}

void VehicleClient::onClientOnLine(bool) {}

}  // namespace vehicle
}  // namespace platform
}  // namespace qvn

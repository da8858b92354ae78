#include "platform/hal/HardwareSystem.h"

#include "platform/hal/CurrentObjects.h"
#include "platform/hal/core/ObjectTable.h"

namespace cantorel::hal {

namespace {
HardwareSystem *gSystem = nullptr;
ObjectTable *gObjects = nullptr;
} // namespace

HardwareSystem::HardwareSystem(std::unique_ptr<HardwareBackend> backend, const QString &stateFolder)
    : mBackend(std::move(backend)), mObjects(std::make_unique<ObjectTable>(*mBackend, stateFolder)) {
    gSystem = this;
    gObjects = mObjects.get();
}

HardwareSystem::~HardwareSystem() {
    if (gSystem == this) {
        gSystem = nullptr;
        gObjects = nullptr;
    }
}

HardwareBackend *HardwareSystem::backend() { return gSystem ? gSystem->mBackend.get() : nullptr; }

foundation::Clock &HardwareSystem::clock() {
    static foundation::WallClock wall;
    return gSystem ? gSystem->mBackend->clock() : wall;
}

foundation::Result<void> HardwareSystem::reach(foundation::Clock::Duration patience) {
    return gSystem ? gSystem->mBackend->reach(patience) : foundation::Result<void>();
}

OSStatus HardwareSystem::borrowDefault(Direction direction, AudioObjectID device) {
    return gObjects ? gObjects->borrowDefault(direction, device) : OSStatus(kAudioHardwareNotRunningError);
}

void HardwareSystem::giveBackDefault(Direction direction, AudioObjectID otherwise) {
    if (gObjects)
        gObjects->giveBackDefault(direction, otherwise);
}

AudioObjectID HardwareSystem::displacedDefault(Direction direction) {
    return gObjects ? gObjects->displacedDefault(direction) : kAudioObjectUnknown;
}

LeftDefault HardwareSystem::leftDefault(Direction direction) {
    return gObjects ? gObjects->leftDefault(direction) : LeftDefault::Nothing;
}

void HardwareSystem::deliverChanges() { mObjects->deliver(); }

ObjectTable *currentObjects() { return gObjects; }

} // namespace cantorel::hal

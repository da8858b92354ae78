#include "audio_device/ZQAudioKextKit.h"

#include "audio_device/AudioKextTools.h"
#include "audio_device/ZQAudioKextLog.h"

#include <memory>

namespace cantorel {

namespace {

std::unique_ptr<ZQAudioKextKit> gKit;

} // namespace

ZQAudioKextKit &ZQAudioKextKit::shared() {
    if (!gKit)
        gKit.reset(new ZQAudioKextKit); // Its constructor is private.
    return *gKit;
}

void ZQAudioKextKit::end() { gKit.reset(); }

void ZQAudioKextKit::setLogPath(const QString &path) { ZQAudioKextLog::initWithLogPath(path); }

bool ZQAudioKextKit::availableSVAD() { return shared().mAudioDeviceEngine.availableSVAD(); }

bool ZQAudioKextKit::activateSVAD() { return shared().mAudioDeviceEngine.activateSVAD(); }

std::optional<media::CaptureDevice> ZQAudioKextKit::getTheCaptureDeviceWithName(const QString &name) {
    return shared().mAudioDevicesManager.getTheCaptureDeviceWithName(name);
}

void ZQAudioKextKit::destroyAggregateDevice() { shared().mAudioDeviceEngine.destroyAggregateDevice(); }

bool ZQAudioKextKit::loadAudioKext() { return shared().mAudioDeviceLoader.loadAudioDeviceWithSH(); }

bool ZQAudioKextKit::unloadAudioKext() { return shared().mAudioDeviceLoader.unloadAudioDeviceWithSH(); }

QString ZQAudioKextKit::getDefaultAudioInputName() { return shared().mAudioDeviceEngine.defaultInputDevice(); }

QString ZQAudioKextKit::getDefaultAudioOutputName() { return shared().mAudioDeviceEngine.defaultOutputDevice(); }

bool ZQAudioKextKit::setVolume(float volume, const QString &forDeviceName) {
    return shared().mAudioDeviceEngine.setVolume(volume, forDeviceName);
}

float ZQAudioKextKit::getVolumeValueFromDeviceName(const QString &name) {
    return shared().mAudioDeviceEngine.getVolumeValueFromDeviceName(name);
}

QString ZQAudioKextKit::getSystemSoundDeviceName() { return shared().mAudioDeviceEngine.getSystemSoundDeviceName(); }

void ZQAudioKextKit::resetDefaultAudioDevice() { shared().mAudioDeviceEngine.resetDefaultAudioDevice(); }

void ZQAudioKextKit::addSystemAudioDeviceChangeListener() {
    shared().mAudioDeviceEngine.addSystemAudioDeviceChangeListener();
}

QStringList ZQAudioKextKit::audioDevices() { return gKit ? gKit->mAudioDevicesManager.audioDevices() : QStringList(); }

bool ZQAudioKextKit::isAggregateDeviceChanged(const QVariantMap &saved) {
    return gKit && gKit->mAudioDeviceEngine.isAggregateDeviceChanged(saved);
}

std::optional<media::CaptureDevice> ZQAudioKextKit::systemSoundDevice() {
    return gKit ? gKit->mAudioDeviceEngine.systemSoundDevice() : std::nullopt;
}

QVariantMap ZQAudioKextKit::createAggregateDevice() {
    return gKit ? gKit->mAudioDeviceEngine.createAggregateDevice() : QVariantMap();
}

QVariantMap ZQAudioKextKit::renewAggregateDevice(const QVariantMap &saved) {
    return gKit ? gKit->mAudioDeviceEngine.renewAggregateDevice(saved) : QVariantMap();
}

bool ZQAudioKextKit::setSVAD() { return gKit && gKit->mAudioDeviceEngine.setSVAD(); }

void ZQAudioKextKit::unsetSVAD() {
    if (gKit)
        gKit->mAudioDeviceEngine.unsetSVAD();
}

void ZQAudioKextKit::keepRouting(bool keep) {
    if (gKit)
        gKit->mAudioDeviceEngine.keepRouting(keep);
}

bool ZQAudioKextKit::isRoutingKept() { return gKit && gKit->mAudioDeviceEngine.isRoutingKept(); }

QStringList ZQAudioKextKit::getAllAudioInputDeviceNames() {
    return gKit ? gKit->mAudioDeviceEngine.getAllAudioInputDeviceNames() : QStringList();
}

QStringList ZQAudioKextKit::getAllAudioOutputDeviceNames() {
    return gKit ? gKit->mAudioDeviceEngine.getAllAudioOutputDeviceNames() : QStringList();
}

bool ZQAudioKextKit::changeAudioInputDeviceWithName(const QString &name) {
    return gKit && gKit->mAudioDeviceEngine.changeAudioInputDeviceWithName(name);
}

bool ZQAudioKextKit::changeAudioOutputDeviceWithName(const QString &name) {
    return gKit && gKit->mAudioDeviceEngine.changeAudioOutputDeviceWithName(name);
}

bool ZQAudioKextKit::borrowAudioInputDeviceWithName(const QString &name) {
    return gKit && gKit->mAudioDeviceEngine.borrowAudioInputDeviceWithName(name);
}

void ZQAudioKextKit::giveBackAudioInputDevice() {
    if (gKit)
        gKit->mAudioDeviceEngine.giveBackAudioInputDevice();
}

void ZQAudioKextKit::removeSystemAudioDeviceChangeListener() {
    if (gKit)
        gKit->mAudioDeviceEngine.removeSystemAudioDeviceChangeListener();
}

foundation::Sentence ZQAudioKextKit::loaderFailure() {
    return gKit ? gKit->mAudioDeviceLoader.failure() : foundation::Sentence();
}

bool ZQAudioKextKit::isMacVersionGreatThan1010() { return AudioKextTools::isMacVersionGreatThan1010(); }

bool ZQAudioKextKit::isMacVersionGreatThan1008() { return AudioKextTools::isMacVersionGreatThan1008(); }

} // namespace cantorel

#include "audio_device/AudioDeviceEngine.h"

#include "audio_device/AudioDevices.h"
#include "audio_device/AudioProperty.h"
#include "platform/hal/HardwareSystem.h"

#include <algorithm>
#include <utility>

namespace cantorel {

foundation::Guarded<QString> AudioDeviceEngine::_systemDeviceName;

namespace {

constexpr AudioObjectPropertyAddress kDefaultInput = {kAudioHardwarePropertyDefaultInputDevice,
                                                      kAudioObjectPropertyScopeGlobal, 0};
constexpr AudioObjectPropertyAddress kDefaultOutput = {kAudioHardwarePropertyDefaultOutputDevice,
                                                       kAudioObjectPropertyScopeGlobal, 0};
constexpr AudioObjectPropertyAddress kDevices = {kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal, 0};
constexpr AudioObjectPropertyAddress kServer = {kAudioHardwarePropertyServiceRestarted, kAudioObjectPropertyScopeGlobal,
                                                0};

// When an output that is there is tried again.
constexpr std::chrono::milliseconds kRetry(500);

const QString kVirtualName = QLatin1String(kTessolarAudioDeviceName);
const QString kAggregateName = QLatin1String(kTessolarAggregateDeviceName);
const QString kOlderVirtualName = QLatin1String(kOlderVirtualDeviceName);
const QString kAirplay = QStringLiteral("airplay");

AudioDeviceID systemDevice(AudioObjectPropertySelector selector) {
    AudioDeviceID device = kAudioObjectUnknown;
    std::uint32_t size = sizeof device;
    CHECK_ERR(PDAudioHardwareGetProperty(selector, &size, &device), "Couldn't get default input device");
    return device;
}

bool setSystemDevice(AudioObjectPropertySelector selector, AudioDeviceID device) {
    const OSStatus status = PDAudioHardwareSetProperty(selector, sizeof device, &device);
    CHECK_ERR(status, "Couldn't change default output device");
    return status == kAudioHardwareNoError;
}

std::vector<AudioDeviceID> allDevices() {
    std::uint32_t size = 0;
    CHECK_ERR(PDAudioHardwareGetPropertyInfo(kAudioHardwarePropertyDevices, &size, nullptr),
              "Couldn't get playback devices info");
    std::vector<AudioDeviceID> devices(size / sizeof(AudioDeviceID));
    const OSStatus status = PDAudioHardwareGetProperty(kAudioHardwarePropertyDevices, &size, devices.data());
    CHECK_ERR(status, "Couldn't get playback devices");
    devices.resize(status == kAudioHardwareNoError ? size / sizeof(AudioDeviceID) : 0);
    return devices;
}

bool hasInputBuffers(AudioDeviceID device) { return buffersOfSide(device, true).value_or(0) > 0; }

// The virtual device and the name that it is known by; the product's own wins whatever stands before it in the list.
std::pair<AudioDeviceID, QString> findVirtualDevice() {
    const std::vector<AudioDeviceID> devices = allDevices();
    const QStringList passes[] = {{kVirtualName}, {kOlderVirtualName, QLatin1String(kSoundflowerDeviceName)}};
    for (const QStringList &names : passes) {
        for (const AudioDeviceID device : devices) {
            char buffer[64] = {};
            AudioDevice record;
            record.deviceID = device;
            const QString name = QString::fromUtf8(record.GetName(buffer, sizeof buffer));
            if (names.contains(name))
                return {device, name};
        }
    }
    return {kAudioObjectUnknown, QString()};
}

QString uidOf(const std::optional<media::CaptureDevice> &device) { return device ? device->uniqueID : QString(); }

AudioObjectID aggregatePlugIn() {
    const QString bundle = QStringLiteral("com.apple.audio.CoreAudio");
    CFStringRef input = &bundle;
    AudioObjectID plugIn = kAudioObjectUnknown;
    AudioValueTranslation translation = {&input, kReferenceSize, &plugIn, sizeof plugIn};
    std::uint32_t size = sizeof translation;
    const OSStatus status = PDAudioHardwareGetProperty(kAudioHardwarePropertyPlugInForBundleID, &size, &translation);
    return status == kAudioHardwareNoError ? plugIn : kAudioObjectUnknown;
}

// Gives the hardware time to publish a change. The hardware layer's clock runs meanwhile, and nothing else of the
// program.
void letHardwareSettle() { hal::HardwareSystem::clock().sleepFor(std::chrono::milliseconds(100)); }

QVariantMap defaultDeviceInfo(AudioObjectPropertySelector selector) {
    std::uint32_t size = 0;
    if (PDAudioHardwareGetPropertyInfo(selector, &size, nullptr) != kAudioHardwareNoError || size == 0)
        return {};
    const AudioDeviceID device = systemDevice(selector);
    return device == kAudioObjectUnknown ? QVariantMap() : GetDeviceInfo(device);
}

} // namespace

AudioDeviceEngine::~AudioDeviceEngine() {
    keepRouting(false);
    removeSystemAudioDeviceChangeListener();
    watchRouting(false);
    mAudioThreEngine.reset();
    _systemDeviceName.with([](QString &name) { name.clear(); });
}

QStringList AudioDeviceEngine::virtualDeviceNames() {
    return {kVirtualName, kOlderVirtualName, QLatin1String(kSoundflowerDeviceName)};
}

QString AudioDeviceEngine::getSystemSoundDeviceName() const {
    return _systemDeviceName.with([](const QString &name) { return name; });
}

AudioDeviceID AudioDeviceEngine::getTheDeviceIDFromName(const QString &name) const {
    for (const AudioDeviceID device : allDevices()) {
        if (getDevice_Name_FromDevice(device) == name)
            return device;
    }
    return kAudioObjectUnknown;
}

AudioDeviceID AudioDeviceEngine::getCurrentAudioInputDevice() const {
    return getTheDeviceIDFromName(defaultInputDevice());
}

AudioDeviceID AudioDeviceEngine::getCurrentAudioOutputDevice() const {
    return getTheDeviceIDFromName(defaultOutputDevice());
}

QString AudioDeviceEngine::defaultInputDevice() const {
    return getDevice_Name_FromDevice(systemDevice(kAudioHardwarePropertyDefaultInputDevice));
}

QString AudioDeviceEngine::defaultOutputDevice() const {
    if (mUnsetIsKept)
        return getDevice_Name_FromDevice(mOutputDeviceID);
    return getDevice_Name_FromDevice(systemDevice(kAudioHardwarePropertyDefaultOutputDevice));
}

QStringList AudioDeviceEngine::getAllAudioInputDeviceNames() const {
    QStringList names;
    for (const AudioDeviceID device : allDevices()) {
        const QString name = getDevice_Name_FromDevice(device);
        if (hasInputBuffers(device) && name != getSystemSoundDeviceName() && name != kAggregateName
            && name != kVirtualName)
            names.append(name);
    }
    return names;
}

QStringList AudioDeviceEngine::getAllAudioOutputDeviceNames() const {
    QStringList names;
    for (const AudioDeviceID device : allDevices()) {
        // Devices without input streams deliberately count as outputs: a loopback is none, whatever its output side.
        if (hasInputBuffers(device))
            continue;
        const QString name = getDevice_Name_FromDevice(device);
        // The last comparison deliberately can't match because of the capitals.
        if (name == getSystemSoundDeviceName() || name == kAggregateName || name.toLower() == kAirplay
            || name.toLower() == kVirtualName)
            continue;
        names.append(name);
    }
    return names;
}

bool AudioDeviceEngine::changeDevice(AudioObjectPropertySelector selector, const QString &name) {
    const AudioDeviceID device = getTheDeviceIDFromName(name);
    if (device == kAudioObjectUnknown || !setSystemDevice(selector, device))
        return false;
    if (selector == kAudioHardwarePropertyDefaultInputDevice)
        mInputDeviceID = device;
    else
        mOutputDeviceID = device;
    return true;
}

bool AudioDeviceEngine::changeAudioInputDeviceWithName(const QString &name) {
    return changeDevice(kAudioHardwarePropertyDefaultInputDevice, name);
}

bool AudioDeviceEngine::changeAudioOutputDeviceWithName(const QString &name) {
    return changeDevice(kAudioHardwarePropertyDefaultOutputDevice, name);
}

bool AudioDeviceEngine::borrowAudioInputDeviceWithName(const QString &name) {
    const AudioDeviceID device = getTheDeviceIDFromName(name);
    if (device == kAudioObjectUnknown
        || hal::HardwareSystem::borrowDefault(hal::Direction::Input, device) != kAudioHardwareNoError)
        return false;
    mInputDeviceID = device;
    return true;
}

void AudioDeviceEngine::giveBackAudioInputDevice() { hal::HardwareSystem::giveBackDefault(hal::Direction::Input); }

bool AudioDeviceEngine::availableSVAD() const { return findVirtualDevice().first != kAudioObjectUnknown; }

bool AudioDeviceEngine::activateSVAD() {
    mSVADDeviceID = kAudioObjectUnknown;
    mInputDeviceID = getCurrentAudioInputDevice();
    mOutputDeviceID = getCurrentAudioOutputDevice();
    const auto [device, found] = findVirtualDevice();
    mSystemSoundDeviceID =
        device == kAudioObjectUnknown ? PDAudioDeviceGetObjectID(QLatin1String(hal::kOutputMonitorUid)) : device;
    if (device == kAudioObjectUnknown)
        return false;
    _systemDeviceName.with([&found = found](QString &known) { known = found; });
    mSVADDeviceID = device;
    return true;
}

std::optional<media::CaptureDevice> AudioDeviceEngine::systemSoundDevice() const {
    return media::captureDeviceWithUniqueID(getDevice_UID_FromDevice(mSystemSoundDeviceID));
}

bool AudioDeviceEngine::isOwnDevice(AudioDeviceID device) const {
    return device == mSVADDeviceID || device == getTheDeviceIDFromName(kAggregateName)
           || device == getTheDeviceIDFromName(kVirtualName);
}

AudioDeviceID AudioDeviceEngine::replacementOutput() const {
    for (const QString &name : getAllAudioOutputDeviceNames()) {
        if (name != getSystemSoundDeviceName() && name != kAggregateName && name.toLower() != kAirplay
            && name != kVirtualName)
            return getTheDeviceIDFromName(name);
    }
    return kAudioObjectUnknown;
}

// What is heard is whatever real device the person has chosen by now, also where the news of a choice made while the
// sound is routed is still on its way.
void AudioDeviceEngine::rememberRealOutput() {
    const AudioDeviceID chosen = systemDevice(kAudioHardwarePropertyDefaultOutputDevice);
    if (chosen != kAudioObjectUnknown && !isOwnDevice(chosen))
        mOutputDeviceID = chosen;
}

void AudioDeviceEngine::displaceOutput() {
    CHECK_ERR(setSystemDevice(kAudioHardwarePropertyDefaultOutputDevice, mSVADDeviceID) ? 0 : -1,
              "Couldn't change default output device");
    // What the server fell back on while the virtual device was away is no choice of the person's.
    if (const AudioDeviceID displaced = hal::HardwareSystem::displacedDefault(hal::Direction::Output);
        displaced != kAudioObjectUnknown && !isOwnDevice(displaced))
        mOutputDeviceID = displaced;
}

bool AudioDeviceEngine::setSVAD() {
    if (mSVADDeviceID == kAudioObjectUnknown)
        return false;
    if (mUnsetIsKept) {
        if (isRouted()) {
            mUnsetIsKept = false;
            return true;
        }
        giveBack();
    }
    watchRouting(false);
    rememberRealOutput();
    displaceOutput();
    mAudioThreEngine = std::make_unique<AudioThruEngine>();
    mAudioThreEngine->SetInputDevice(mSVADDeviceID);
    if (mOutputDeviceID == kAudioObjectUnknown || isOwnDevice(mOutputDeviceID)) {
        if (const AudioDeviceID replacement = replacementOutput(); replacement != kAudioObjectUnknown)
            mOutputDeviceID = replacement;
    }
    mIsHeard = true;
    hearAt(mOutputDeviceID);
    watchRouting(true);
    return true;
}

// Lets the sound be heard at the output, or nowhere for 0.
void AudioDeviceEngine::hearAt(AudioDeviceID output) {
    mRetry.reset();
    if (output != kAudioObjectUnknown
        && (output != mAudioThreEngine->outputDeviceID() || !mAudioThreEngine->IsRunning()))
        mAudioThreEngine->SetOutputDevice(output);
    const bool heard = output != kAudioObjectUnknown && mAudioThreEngine->IsRunning();
    if (!heard && output != kAudioObjectUnknown)
        mRetry = hal::HardwareSystem::clock().after(kRetry, [this] { followRouting(); });
    if (std::exchange(mIsHeard, heard) != heard)
        foundation::NotificationCenter::defaultCenter().post(kNotificationRoutedSoundIsHeard, heard);
}

bool AudioDeviceEngine::isRouted() const {
    return mAudioThreEngine && mAudioThreEngine->IsRunning() && mAudioThreEngine->inputDeviceID() == mSVADDeviceID
           && systemDevice(kAudioHardwarePropertyDefaultOutputDevice) == mSVADDeviceID;
}

void AudioDeviceEngine::keepRouting(bool keep) {
    mKeepsRouting = keep;
    if (!keep && mUnsetIsKept)
        giveBack();
}

void AudioDeviceEngine::unsetSVAD() {
    if (mKeepsRouting && mAudioThreEngine)
        mUnsetIsKept = true;
    else
        giveBack();
}

void AudioDeviceEngine::giveBack() {
    mUnsetIsKept = false;
    mRetry.reset();
    watchRouting(false);
    rememberRealOutput();
    const AudioDeviceID heard = mAudioThreEngine ? mAudioThreEngine->outputDeviceID() : kAudioObjectUnknown;
    if (mAudioThreEngine)
        mAudioThreEngine->Stop();
    hal::HardwareSystem::giveBackDefault(hal::Direction::Output, heard);
    // One of our own devices that was the default before is not kept as the default.
    const AudioDeviceID left = systemDevice(kAudioHardwarePropertyDefaultOutputDevice);
    if (left != kAudioObjectUnknown && isOwnDevice(left) && mOutputDeviceID != kAudioObjectUnknown
        && !isOwnDevice(mOutputDeviceID))
        (void)setSystemDevice(kAudioHardwarePropertyDefaultOutputDevice, mOutputDeviceID);
    mAudioThreEngine.reset();
}

void AudioDeviceEngine::watchRouting(bool watch) {
    for (const auto &address : {kDefaultOutput, kDevices}) {
        if (watch)
            (void)AudioObjectAddPropertyListener(kAudioObjectSystemObject, &address, routingChanged, this);
        else
            (void)AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &address, routingChanged, this);
    }
}

OSStatus AudioDeviceEngine::routingChanged(AudioObjectID, std::uint32_t, const AudioObjectPropertyAddress *,
                                           void *engine) {
    static_cast<AudioDeviceEngine *>(engine)->followRouting();
    return kAudioHardwareNoError;
}

// While routed: a default that the person changes is what is heard from now on and what is restored later, and the
// recording goes on; an output that vanishes is replaced by another real one.
void AudioDeviceEngine::followRouting() {
    if (!mAudioThreEngine)
        return;
    const AudioDeviceID chosen = systemDevice(kAudioHardwarePropertyDefaultOutputDevice);
    const std::vector<AudioDeviceID> devices = allDevices();
    const auto present = [&](AudioDeviceID device) {
        return std::find(devices.begin(), devices.end(), device) != devices.end();
    };
    if (!present(mSVADDeviceID))
        return hearAt(kAudioObjectUnknown);
    if (chosen != kAudioObjectUnknown && !isOwnDevice(chosen)) {
        mOutputDeviceID = chosen;
        displaceOutput();
    }
    const AudioDeviceID current = mAudioThreEngine->outputDeviceID();
    if (present(mOutputDeviceID) && !isOwnDevice(mOutputDeviceID))
        hearAt(mOutputDeviceID);
    else
        hearAt(present(current) ? current : replacementOutput());
}

QVariantMap AudioDeviceEngine::renewAggregateDevice(const QVariantMap &saved) {
    const std::lock_guard lock(mAggregateMutex);
    for (const QVariantMap &known : {saved, mMadeAggregate}) {
        if (!isAggregateDeviceChanged(known)
            && known.value(QLatin1String(kAggregateOutputUID)).toString() == uidOf(systemSoundDevice()))
            return known;
    }
    destroyAggregateDevice();
    return createAggregateDevice();
}

QVariantMap AudioDeviceEngine::createAggregateDevice() {
    const std::lock_guard lock(mAggregateMutex);
    mMadeAggregate.clear();
    if (mInputDeviceID == kAudioObjectUnknown)
        mInputDeviceID = getCurrentAudioInputDevice();
    const QString inputUid =
        uidOf(AudioDevices().getTheCaptureDeviceWithName(getDevice_Name_FromDevice(mInputDeviceID)));
    const QString outputUid = uidOf(systemSoundDevice());
    const AudioObjectID plugIn = aggregatePlugIn();
    if (inputUid.isEmpty() || outputUid.isEmpty() || plugIn == kAudioObjectUnknown)
        return {};

    const QVariantMap description{{QStringLiteral("name"), kAggregateName},
                                  {QStringLiteral("uid"), AppSettings::TessolarAggregateDeviceUID_String()}};
    CFDictionaryRef qualifier = &description;
    const AudioObjectPropertyAddress create = {kAudioPlugInCreateAggregateDevice, kAudioObjectPropertyScopeGlobal, 0};
    AudioDeviceID aggregate = kAudioObjectUnknown;
    std::uint32_t size = sizeof aggregate;
    if (AudioObjectGetPropertyData(plugIn, &create, kReferenceSize, &qualifier, &size, &aggregate)
        != kAudioHardwareNoError)
        return {};
    letHardwareSettle();

    const QStringList members{inputUid, outputUid}; // in this order levels are told
    CFArrayRef list = &members;
    const AudioObjectPropertyAddress group = {kAudioAggregateDevicePropertyFullSubDeviceList,
                                              kAudioObjectPropertyScopeGlobal, 0};
    if (AudioObjectSetPropertyData(aggregate, &group, 0, nullptr, kReferenceSize, &list) != kAudioHardwareNoError)
        return {};
    letHardwareSettle();

    CFStringRef master = &inputUid;
    const AudioObjectPropertyAddress lead = {kAudioAggregateDevicePropertyMasterSubDevice,
                                             kAudioObjectPropertyScopeGlobal, 0};
    if (AudioObjectSetPropertyData(aggregate, &lead, 0, nullptr, kReferenceSize, &master) != kAudioHardwareNoError)
        return {};
    letHardwareSettle();
    mMadeAggregate = {{QLatin1String(kAggregateOutputUID), outputUid}, {QLatin1String(kAggregateInputUID), inputUid}};
    return mMadeAggregate;
}

void AudioDeviceEngine::destroyAggregateDevice() {
    const std::lock_guard lock(mAggregateMutex);
    const AudioObjectID plugIn = aggregatePlugIn();
    const AudioObjectPropertyAddress destroy = {kAudioPlugInDestroyAggregateDevice, kAudioObjectPropertyScopeGlobal, 0};
    std::uint32_t size = 0;
    if (AudioObjectGetPropertyDataSize(plugIn, &destroy, 0, nullptr, &size) != kAudioHardwareNoError)
        return;
    AudioDeviceID aggregate = getTheDeviceIDFromName(kAggregateName);
    size = sizeof aggregate;
    (void)AudioObjectGetPropertyData(plugIn, &destroy, 0, nullptr, &size,
                                     &aggregate); // fails where there is none
}

bool AudioDeviceEngine::isExistAggregateDevice() const {
    return AudioDevices().getTheCaptureDeviceWithName(kAggregateName).has_value();
}

bool AudioDeviceEngine::isAggregateDeviceChanged(const QVariantMap &saved) const {
    if (saved.isEmpty() || !isExistAggregateDevice())
        return true;
    return getDevice_UID_FromDevice(getCurrentAudioInputDevice())
           != saved.value(QLatin1String(kAggregateInputUID)).toString();
}

void AudioDeviceEngine::resetDefaultAudioDevice() {
    const auto leftBehind = [](const QString &name) {
        return name == kVirtualName || name == QStringLiteral("Soundflower") || name == kOlderVirtualName
               || name == kAggregateName;
    };
    const auto reset = [](const QStringList &names, const QString &preferred, const auto &change) {
        if (names.contains(preferred) && change(preferred))
            return;
        for (const QString &name : names) {
            if (name != kVirtualName && name != kAggregateName) {
                (void)change(name);
                return;
            }
        }
    };
    if (leftBehind(defaultOutputDevice()))
        reset(getAllAudioOutputDeviceNames(), QStringLiteral("Built-in Output"),
              [this](const QString &name) { return changeAudioOutputDeviceWithName(name); });
    if (leftBehind(defaultInputDevice()))
        reset(getAllAudioInputDeviceNames(), QStringLiteral("Built-in Microphone"),
              [this](const QString &name) { return changeAudioInputDeviceWithName(name); });
}

void AudioDeviceEngine::resetDefaultAudioInputDevice(const QString &, const QString &) { resetDefaultAudioDevice(); }

void AudioDeviceEngine::addSystemAudioDeviceChangeListener() {
    for (const auto &address : {kDefaultInput, kDefaultOutput, kDevices, kServer})
        (void)AudioObjectAddPropertyListener(kAudioObjectSystemObject, &address, defaultDeviceChanged, this);
}

void AudioDeviceEngine::removeSystemAudioDeviceChangeListener() {
    for (const auto &address : {kDefaultInput, kDefaultOutput, kDevices, kServer})
        (void)AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &address, defaultDeviceChanged, this);
}

OSStatus AudioDeviceEngine::defaultDeviceChanged(AudioObjectID, std::uint32_t count,
                                                 const AudioObjectPropertyAddress *addresses, void *) {
    // The hardware layer calls from the main thread's event loop, so observers can be called right here.
    const auto &center = foundation::NotificationCenter::defaultCenter();
    for (std::uint32_t i = 0; i < count; ++i) {
        const AudioObjectPropertySelector changed = addresses[i].mSelector;
        if (changed == kAudioHardwarePropertyDefaultOutputDevice)
            center.post(kNotificationDefaultOutputDidChange, defaultDeviceInfo(changed));
        else if (changed == kAudioHardwarePropertyDefaultInputDevice)
            center.post(kNotificationDefaultInputDidChange, defaultDeviceInfo(changed));
        else
            center.post(kNotificationSoundDevicesDidChange, hal::HardwareSystem::reach().ok());
    }
    return kAudioHardwareNoError;
}

} // namespace cantorel

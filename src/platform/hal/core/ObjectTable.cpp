#include "platform/hal/core/ObjectTable.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace cantorel::hal {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

constexpr const char *kOutputMonitorName = "Default Output";
constexpr int kRetryMilliseconds = 500;
constexpr std::chrono::milliseconds kWatchInterval(250);

// The plug-in that makes aggregates answers to this bundle identifier alone.
const QString &aggregateBundle() {
    static const QString identifier = QStringLiteral("com.apple.audio.CoreAudio");
    return identifier;
}

// The object behind a reference that was passed in; null when there is none.
template <class T> const T *passedIn(std::uint32_t size, const void *data) {
    if (size < kReferenceSize || !data)
        return nullptr;
    const T *object = nullptr;
    std::memcpy(&object, data, kReferenceSize);
    return object;
}

OSStatus writeObject(AudioObjectID object, std::uint32_t *size, void *data) {
    return PropertyValue::of(object).copyTo(size, data);
}

} // namespace

ObjectTable::ObjectTable(HardwareBackend &backend, const QString &stateFolder)
    : mBackend(backend),
      mAggregates(stateFolder + QStringLiteral("/aggregate-devices.json")),
      mInputChoice(backend, Direction::Input, stateFolder + QStringLiteral("/displaced-input.json")),
      mOutputChoice(backend, Direction::Output, stateFolder + QStringLiteral("/displaced-output.json")) {
    for (const AggregateSpec &spec : mAggregates.all()) {
        if (!spec.subDeviceUids.isEmpty())
            (void)mBackend.makeAggregate(
                spec); // A sub-device may be absent: the backend makes it when that one is back.
    }
    mBackend.subscribe([this] { schedule(); });
    const Lock lock(mMutex);
    for (const Direction direction : {Direction::Input, Direction::Output})
        choiceOf(direction).recover();
    sync();
    announceServer();
}

ObjectTable::~ObjectTable() {
    mWatch.reset();
    mBackend.subscribe({});
    mIO.clear();
}

void ObjectTable::schedule() {
    if (!mScheduled.exchange(true))
        QMetaObject::invokeMethod(
            this, [this] { deliver(); }, Qt::QueuedConnection);
}

void ObjectTable::deliver() {
    mScheduled.store(false);
    std::vector<ListenerList::Call> calls;
    {
        const Lock lock(mMutex);
        for (const Direction direction : {Direction::Input, Direction::Output})
            choiceOf(direction).settle();
        sync();
        announceServer();
        if (takeUpStreams())
            QTimer::singleShot(kRetryMilliseconds, this, [this] { schedule(); });
        calls = mListeners.takeCalls();
    }
    for (const ListenerList::Call &call : calls) {
        {
            const Lock lock(mMutex);
            if (!mListeners.contains(call.listener))
                continue;
        }
        (void)call.listener.proc(call.listener.object, static_cast<std::uint32_t>(call.addresses.size()),
                                 call.addresses.data(), call.listener.clientData);
    }
}

// A stream may stall without a word, as where nobody links it any more.
void ObjectTable::watchStreams() {
    const Lock lock(mMutex);
    bool any = false;
    for (auto &[id, io] : mIO)
        any = io.watch() || any;
    if (mListeners.hasChanges())
        schedule();
    if (!any)
        mWatch.reset();
}

bool ObjectTable::takeUpStreams() {
    const auto readerOf = [this](AudioObjectID device) -> const IOEngine * {
        const auto io = mIO.find(device);
        return io == mIO.end() ? nullptr : io->second.reader();
    };
    bool missing = false;
    // Those who read come first, so that those who play can follow them.
    for (const bool reading : {true, false}) {
        for (auto &[id, io] : mIO) {
            const Device *device = mDevices.find(id);
            if (device && (device->record.input.channels > 0) == reading)
                missing = io.takeUp(mBackend, *device, readerOf) || missing;
        }
    }
    return missing;
}

void ObjectTable::announce(AudioObjectID object, AudioObjectPropertySelector selector, AudioObjectPropertyScope scope,
                           AudioObjectPropertyElement element) {
    mListeners.changed({object, {selector, scope, element}});
}

// The backend's devices, and the monitor of the default output as long as there is one.
std::vector<DeviceRecord> ObjectTable::records() const {
    std::vector<DeviceRecord> records = mBackend.devices();
    const QString uid = mBackend.defaultDevice(Direction::Output);
    const auto output =
        std::find_if(records.begin(), records.end(), [&](const DeviceRecord &record) { return record.uid == uid; });
    if (output == records.end())
        return records;
    DeviceRecord monitor;
    monitor.uid = QLatin1String(kOutputMonitorUid);
    monitor.name = QLatin1String(kOutputMonitorName);
    monitor.sampleRate = output->sampleRate;
    monitor.cycleFrames = output->cycleFrames;
    monitor.safetyOffsetFrames = output->safetyOffsetFrames;
    monitor.input.channels = kOutputMonitorChannels;
    records.push_back(monitor);
    return records;
}

void ObjectTable::sync() {
    const std::vector<Device> before = mDevices.present();
    mDevices.update(records());
    for (auto &[id, io] : mIO) {
        io.sweep();
        for (const Device &device : mDevices.present()) {
            if (device.record.isLoopback)
                io.followVolume(device);
        }
    }

    const auto idOf = [this](Direction direction) {
        const Device *device = mDevices.findByUid(mBackend.defaultDevice(direction));
        return device ? device->id : kAudioObjectUnknown;
    };
    const AudioObjectID defaults[2] = {idOf(Direction::Input), idOf(Direction::Output)};
    if (mSynced) {
        if (defaults[0] != mDefaults[0])
            announce(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultInputDevice);
        if (defaults[1] != mDefaults[1])
            announce(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice);
        announceDifferences(before);
    }
    std::copy(std::begin(defaults), std::end(defaults), mDefaults);
    mSynced = true;
    if (mListeners.hasChanges())
        schedule();
}

void ObjectTable::announceServer() {
    const auto reached = mBackend.reach({});
    const QString trouble = reached ? QString() : reached.failure().detail;
    if (std::exchange(mTrouble, trouble) != trouble)
        announce(kAudioObjectSystemObject, kAudioHardwarePropertyServiceRestarted);
}

void ObjectTable::announceDifferences(const std::vector<Device> &before) {
    const auto &after = mDevices.present();
    bool listChanged = before.size() != after.size();
    for (const Device &old : before) {
        const Device *now = mDevices.find(old.id);
        if (!now) {
            listChanged = true;
            announce(old.id, kAudioDevicePropertyDeviceIsAlive);
            continue;
        }
        if (*now == old)
            continue;
        const struct {
            AudioObjectPropertyScope scope;
            const DeviceSide &was;
            const DeviceSide &is;
        } sides[] = {{kAudioDevicePropertyScopeInput, old.record.input, now->record.input},
                     {kAudioDevicePropertyScopeOutput, old.record.output, now->record.output}};
        for (const auto &[scope, was, is] : sides) {
            if (was.gains != is.gains) {
                announce(now->id, kAudioHardwareServiceDeviceProperty_VirtualMasterVolume, scope);
                for (AudioObjectPropertyElement element = 0; element <= is.gains.size(); ++element)
                    announce(now->id, kAudioDevicePropertyVolumeScalar, scope, element);
            }
            if (was.muted != is.muted)
                announce(now->id, kAudioDevicePropertyMute, scope);
            if (was.channels != is.channels)
                announce(now->id, kAudioDevicePropertyStreamConfiguration, scope);
        }
        if (old.record.sampleRate != now->record.sampleRate)
            announce(now->id, kAudioDevicePropertyStreamFormat);
    }
    for (const Device &now : after) {
        const bool isNew = std::none_of(before.begin(), before.end(), [&](const Device &d) { return d.id == now.id; });
        if (isNew) {
            listChanged = true;
            announce(now.id, kAudioDevicePropertyDeviceIsAlive);
        }
    }
    if (listChanged)
        announce(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
}

DeviceIO &ObjectTable::ioOf(AudioObjectID device) {
    const auto flowChanged = [this, device](Direction direction) {
        announce(device, kAudioDevicePropertyDeviceIsRunning,
                 direction == Direction::Input ? kAudioDevicePropertyScopeInput : kAudioDevicePropertyScopeOutput);
    };
    return mIO
        .try_emplace(
            device, device, [this] { schedule(); }, flowChanged)
        .first->second;
}

DeviceState ObjectTable::stateOf(const Device &device) {
    const DeviceIO &io = ioOf(device.id);
    return {device, io.blockFrames(), io.flows(Direction::Input), io.flows(Direction::Output),
            mAggregates.find(device.record.uid)};
}

std::optional<PropertyValue> ObjectTable::systemProperty(const AudioObjectPropertyAddress &address) {
    switch (address.mSelector) {
    case kAudioHardwarePropertyDevices: {
        std::vector<AudioObjectID> ids;
        for (const Device &device : mDevices.present()) {
            if (device.record.uid != QLatin1String(kOutputMonitorUid)) // Who knows its UID finds it.
                ids.push_back(device.id);
        }
        return PropertyValue::ofArray(ids);
    }
    case kAudioHardwarePropertyDefaultInputDevice:
        return PropertyValue::of(mDefaults[0]);
    case kAudioHardwarePropertyDefaultOutputDevice:
        return PropertyValue::of(mDefaults[1]);
    case kAudioHardwarePropertyPlugInForBundleID:
    case kAudioHardwarePropertyDeviceForUID:
        return PropertyValue::of(AudioValueTranslation{});
    }
    return std::nullopt;
}

std::optional<PropertyValue> ObjectTable::property(AudioObjectID object, const AudioObjectPropertyAddress &address,
                                                   OSStatus &status) {
    status = kAudioHardwareUnknownPropertyError;
    if (object == kAudioObjectSystemObject)
        return systemProperty(address);
    if (object == kAggregatePlugIn) {
        const bool known = address.mSelector == kAudioPlugInCreateAggregateDevice
                           || address.mSelector == kAudioPlugInDestroyAggregateDevice;
        return known ? std::optional(PropertyValue::of(kAudioObjectUnknown)) : std::nullopt;
    }
    if (const Device *device = mDevices.find(object))
        return deviceProperty(stateOf(*device), address);
    const QString uid = mDevices.uidOf(object);
    if (!uid.isEmpty() && address.mSelector == kAudioDevicePropertyDeviceIsAlive)
        return PropertyValue::of(std::uint32_t(0));
    // An aggregate that has no sub-devices yet is no device, but can be told which ones it shall have.
    if (const AggregateSpec *spec = uid.isEmpty() ? nullptr : mAggregates.find(uid)) {
        Device absent{object, spec->name, {}};
        absent.record.uid = uid;
        return deviceProperty({absent, ioOf(object).blockFrames(), false, false, spec}, address);
    }
    status = kAudioHardwareBadObjectError;
    return std::nullopt;
}

OSStatus ObjectTable::size(AudioObjectID object, const AudioObjectPropertyAddress &address, std::uint32_t &size) {
    const Lock lock(mMutex);
    sync();
    OSStatus status = kAudioHardwareNoError;
    const auto value = property(object, address, status);
    if (!value)
        return status;
    size = value->size();
    return kAudioHardwareNoError;
}

OSStatus ObjectTable::settable(AudioObjectID object, const AudioObjectPropertyAddress &address, bool &settable) {
    const Lock lock(mMutex);
    sync();
    OSStatus status = kAudioHardwareNoError;
    if (!property(object, address, status))
        return status;
    settable = false;
    if (object == kAudioObjectSystemObject)
        settable = address.mSelector == kAudioHardwarePropertyDefaultInputDevice
                   || address.mSelector == kAudioHardwarePropertyDefaultOutputDevice;
    else if (const Device *device = mDevices.find(object))
        settable = isDevicePropertySettable(stateOf(*device), address);
    return kAudioHardwareNoError;
}

OSStatus ObjectTable::get(AudioObjectID object, const AudioObjectPropertyAddress &address, std::uint32_t qualifierSize,
                          const void *qualifier, std::uint32_t *size, void *data) {
    const Lock lock(mMutex);
    sync();
    OSStatus status = kAudioHardwareNoError;
    const auto value = property(object, address, status);
    if (!value)
        return status;
    if (object == kAggregatePlugIn)
        return plugInOperation(address.mSelector, qualifierSize, qualifier, size, data);
    if (object == kAudioObjectSystemObject
        && (address.mSelector == kAudioHardwarePropertyPlugInForBundleID
            || address.mSelector == kAudioHardwarePropertyDeviceForUID)) {
        if (*size < sizeof(AudioValueTranslation))
            return kAudioHardwareBadPropertySizeError;
        return translate(address.mSelector, *static_cast<AudioValueTranslation *>(data));
    }
    return value->copyTo(size, data);
}

OSStatus ObjectTable::translate(AudioObjectPropertySelector selector, AudioValueTranslation &translation) {
    const QString *text = passedIn<QString>(translation.mInputDataSize, translation.mInputData);
    if (!text || translation.mOutputDataSize < sizeof(AudioObjectID) || !translation.mOutputData)
        return kAudioHardwareBadPropertySizeError;
    AudioObjectID found = kAudioObjectUnknown;
    if (selector == kAudioHardwarePropertyPlugInForBundleID)
        found = *text == aggregateBundle() ? kAggregatePlugIn : kAudioObjectUnknown;
    else if (const Device *device = mDevices.findByUid(*text))
        found = device->id;
    std::memcpy(translation.mOutputData, &found, sizeof found);
    return kAudioHardwareNoError;
}

OSStatus ObjectTable::plugInOperation(AudioObjectPropertySelector selector, std::uint32_t qualifierSize,
                                      const void *qualifier, std::uint32_t *size, void *data) {
    if (*size < sizeof(AudioObjectID))
        return kAudioHardwareBadPropertySizeError;
    if (selector == kAudioPlugInCreateAggregateDevice) {
        const QVariantMap *description = passedIn<QVariantMap>(qualifierSize, qualifier);
        if (!description)
            return kAudioHardwareIllegalOperationError;
        AggregateSpec spec;
        spec.uid = description->value(QStringLiteral("uid")).toString();
        spec.name = description->value(QStringLiteral("name")).toString();
        const AudioObjectID id = mDevices.identify(spec.uid);
        if (id == kAudioObjectUnknown || spec.name.isEmpty())
            return kAudioHardwareIllegalOperationError;
        (void)mAggregates.put(spec); // Unwritable: it holds while the program runs.
        return writeObject(id, size, data);
    }
    AudioObjectID id = kAudioObjectUnknown;
    std::memcpy(&id, data, sizeof id);
    const QString uid = mDevices.uidOf(id);
    if (uid.isEmpty() || !mAggregates.find(uid))
        return kAudioHardwareBadDeviceError;
    mAggregates.remove(uid);
    mBackend.removeAggregate(uid);
    sync();
    return kAudioHardwareNoError;
}

OSStatus ObjectTable::setAggregate(const AggregateSpec &spec, AudioObjectPropertySelector selector, std::uint32_t size,
                                   const void *data) {
    AggregateSpec wanted = spec;
    if (selector == kAudioAggregateDevicePropertyFullSubDeviceList) {
        const QStringList *list = passedIn<QStringList>(size, data);
        if (!list)
            return kAudioHardwareBadPropertySizeError;
        wanted.subDeviceUids = *list;
    } else {
        const QString *uid = passedIn<QString>(size, data);
        if (!uid)
            return kAudioHardwareBadPropertySizeError;
        if (!wanted.subDeviceUids.contains(*uid))
            return kAudioHardwareIllegalOperationError;
        wanted.masterUid = *uid;
    }
    (void)mAggregates.put(wanted); // Unwritable: it holds while the program runs.
    const bool made = wanted.subDeviceUids.isEmpty() || mBackend.makeAggregate(wanted);
    sync();
    return made ? kAudioHardwareNoError : kAudioHardwareUnspecifiedError;
}

OSStatus ObjectTable::setDefault(Direction direction, std::uint32_t size, const void *data) {
    if (size < sizeof(AudioObjectID) || !data)
        return kAudioHardwareBadPropertySizeError;
    AudioObjectID id = kAudioObjectUnknown;
    std::memcpy(&id, data, sizeof id);
    return setDefault(direction, id, false);
}

OSStatus ObjectTable::setDefault(Direction direction, AudioObjectID id, bool borrowed) {
    const Device *device = mDevices.find(id);
    const bool input = direction == Direction::Input;
    if (!device || (input ? device->record.input : device->record.output).channels == 0)
        return kAudioHardwareBadDeviceError;
    // The program's own devices are never what a person would choose to stay with.
    const bool standIn = borrowed || device->record.isLoopback || mAggregates.find(device->record.uid);
    const bool done = choiceOf(direction).set(device->record.uid, standIn);
    sync();
    return done ? kAudioHardwareNoError : kAudioHardwareUnspecifiedError;
}

OSStatus ObjectTable::borrowDefault(Direction direction, AudioObjectID device) {
    const Lock lock(mMutex);
    sync();
    const OSStatus status = setDefault(direction, device, true);
    if (status != kAudioHardwareNoError)
        choiceOf(direction).giveBack({});
    return status;
}

void ObjectTable::giveBackDefault(Direction direction, AudioObjectID otherwise) {
    const Lock lock(mMutex);
    sync();
    const Device *device = mDevices.find(otherwise);
    choiceOf(direction).giveBack(device ? device->record.uid : QString());
    sync();
}

AudioObjectID ObjectTable::displacedDefault(Direction direction) {
    const Lock lock(mMutex);
    sync();
    const Device *device = mDevices.findByUid(choiceOf(direction).displaced());
    return device ? device->id : kAudioObjectUnknown;
}

LeftDefault ObjectTable::leftDefault(Direction direction) {
    const Lock lock(mMutex);
    return choiceOf(direction).left();
}

OSStatus ObjectTable::set(AudioObjectID object, const AudioObjectPropertyAddress &address, std::uint32_t size,
                          const void *data) {
    const Lock lock(mMutex);
    sync();
    if (object == kAudioObjectSystemObject) {
        if (address.mSelector == kAudioHardwarePropertyDefaultInputDevice)
            return setDefault(Direction::Input, size, data);
        if (address.mSelector == kAudioHardwarePropertyDefaultOutputDevice)
            return setDefault(Direction::Output, size, data);
        return kAudioHardwareUnsupportedOperationError;
    }
    const bool aggregateProperty = address.mSelector == kAudioAggregateDevicePropertyFullSubDeviceList
                                   || address.mSelector == kAudioAggregateDevicePropertyMasterSubDevice;
    if (aggregateProperty) {
        const AggregateSpec *spec = mAggregates.find(mDevices.uidOf(object));
        return spec ? setAggregate(*spec, address.mSelector, size, data) : kAudioHardwareUnknownPropertyError;
    }
    const Device *device = mDevices.find(object);
    if (!device)
        return kAudioHardwareBadObjectError;
    if (address.mSelector == kAudioDevicePropertyBufferFrameSize) {
        std::uint32_t frames = 0;
        if (size < sizeof frames || !data)
            return kAudioHardwareBadPropertySizeError;
        std::memcpy(&frames, data, sizeof frames);
        ioOf(object).setBlockFrames(frames);
        return kAudioHardwareNoError;
    }
    if (address.mSelector == kAudioDevicePropertyIOProcStreamUsage) {
        AudioDeviceIOProcStreamUsage usage = {};
        if (size < sizeof usage || !data)
            return kAudioHardwareBadPropertySizeError;
        std::memcpy(&usage, data, sizeof usage);
        DeviceIO::Registration *registration = ioOf(object).find(usage.mIOProc);
        const bool input = usage.mInput != 0 && device->record.input.channels > 0;
        const bool output = usage.mOutput != 0 && device->record.output.channels > 0;
        if (!registration || registration->engine || (!input && !output))
            return kAudioHardwareIllegalOperationError;
        registration->input = input;
        registration->output = output;
        return kAudioHardwareNoError;
    }
    const DeviceState state = stateOf(*device);
    if (!deviceProperty(state, address))
        return kAudioHardwareUnknownPropertyError;
    if (!isDevicePropertySettable(state, address))
        return kAudioHardwareUnsupportedOperationError;
    const OSStatus status = setDeviceProperty(mBackend, state, address, size, data);
    sync();
    return status;
}

OSStatus ObjectTable::addListener(const ListenerList::Listener &listener) {
    const Lock lock(mMutex);
    if (!listener.proc)
        return kAudioHardwareIllegalOperationError;
    mListeners.add(listener);
    return kAudioHardwareNoError;
}

OSStatus ObjectTable::removeListener(const ListenerList::Listener &listener) {
    const Lock lock(mMutex);
    return mListeners.remove(listener) ? kAudioHardwareNoError : kAudioHardwareIllegalOperationError;
}

OSStatus ObjectTable::addProc(AudioObjectID device, AudioDeviceIOProc proc, void *clientData, bool named,
                              AudioDeviceIOProcID *id) {
    const Lock lock(mMutex);
    sync();
    const Device *present = mDevices.find(device);
    if (!present)
        return kAudioHardwareBadDeviceError;
    // An identifier only has to be unlike every other one; no code ever lies at so small an address.
    const auto wanted = named ? reinterpret_cast<AudioDeviceIOProcID>(mNextProcID++) : nullptr;
    const AudioDeviceIOProcID given = ioOf(device).add(*present, proc, wanted, clientData);
    if (!given)
        return kAudioHardwareIllegalOperationError;
    if (id)
        *id = given;
    return kAudioHardwareNoError;
}

OSStatus ObjectTable::removeProc(AudioObjectID device, AudioDeviceIOProcID id) {
    const Lock lock(mMutex);
    const auto io = mIO.find(device);
    return io != mIO.end() && io->second.remove(id) ? kAudioHardwareNoError : kAudioHardwareIllegalOperationError;
}

OSStatus ObjectTable::start(AudioObjectID device, AudioDeviceIOProcID id) {
    const Lock lock(mMutex);
    sync();
    DeviceIO &io = ioOf(device);
    DeviceIO::Registration *registration = io.find(id);
    if (!registration)
        return kAudioHardwareIllegalOperationError;
    IOEngine *leader = nullptr;
    AudioObjectID leaderDevice = kAudioObjectUnknown;
    if (registration->output && !registration->input) {
        for (const auto &[other, otherIO] : mIO) {
            leader = other == device ? nullptr : otherIO.readingEngineOf(registration->clientData);
            leaderDevice = other;
            if (leader)
                break;
        }
    }
    const OSStatus status = io.start(*registration, mBackend, mDevices.find(device), leader, leaderDevice);
    if (!mWatch)
        mWatch = mBackend.clock().every(kWatchInterval, [this] { watchStreams(); });
    sync();
    return status;
}

OSStatus ObjectTable::stop(AudioObjectID device, AudioDeviceIOProcID id) {
    OSStatus status = kAudioHardwareNoError;
    if (IOEngine::stopFromProc(device, id, status))
        return status;
    const Lock lock(mMutex);
    const auto io = mIO.find(device);
    DeviceIO::Registration *registration = io == mIO.end() ? nullptr : io->second.find(id);
    if (!registration)
        return kAudioHardwareIllegalOperationError;
    io->second.stop(*registration);
    return kAudioHardwareNoError;
}

} // namespace cantorel::hal

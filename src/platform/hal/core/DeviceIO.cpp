#include "platform/hal/core/DeviceIO.h"

#include <algorithm>

namespace cantorel::hal {

namespace {

constexpr int kStallLooks = 3;
// The owner's thread does something else between the tries.
constexpr std::chrono::milliseconds kRetryPatience(300);

} // namespace

DeviceIO::DeviceIO(AudioObjectID device, std::function<void()> streamEnded, std::function<void(Direction)> flowChanged)
    : mDevice(device), mStreamEnded(std::move(streamEnded)), mFlowChanged(std::move(flowChanged)) {}

void DeviceIO::setBlockFrames(std::uint32_t frames) {
    mBlockFrames = std::clamp(frames, IOEngine::kMinBlockFrames, IOEngine::kMaxBlockFrames);
    for (Entry &entry : mEntries)
        entry.engine->setBlockFrames(mBlockFrames);
}

AudioDeviceIOProcID DeviceIO::add(const Device &device, AudioDeviceIOProc proc, AudioDeviceIOProcID id,
                                  void *clientData) {
    const AudioDeviceIOProcID name = id ? id : proc;
    if (!proc || find(name))
        return nullptr;
    const bool input = device.record.input.channels > 0;
    // A loopback device gives back what is played into it: only who asks for it gets its output side as well.
    const bool output = device.record.output.channels > 0 && !(device.record.isLoopback && input);
    if (!input && !output)
        return nullptr;
    mRegistrations.push_back({name, proc, clientData, input, output});
    return name;
}

bool DeviceIO::remove(AudioDeviceIOProcID id) {
    Registration *registration = find(id);
    if (!registration)
        return false;
    stop(*registration);
    std::erase_if(mRegistrations, [&](const Registration &r) { return r.id == id; });
    return true;
}

DeviceIO::Registration *DeviceIO::find(AudioDeviceIOProcID id) {
    const auto found =
        std::find_if(mRegistrations.begin(), mRegistrations.end(), [&](const Registration &r) { return r.id == id; });
    return found == mRegistrations.end() ? nullptr : &*found;
}

DeviceIO::Entry *DeviceIO::entryFor(bool input, bool output, const Device &device) {
    const int inputChannels = input ? device.record.input.channels : 0;
    const int outputChannels = output ? device.record.output.channels : 0;
    auto entry = std::find_if(mEntries.begin(), mEntries.end(),
                              [&](const Entry &e) { return e.input == input && e.output == output; });
    const bool fits =
        entry != mEntries.end() && entry->inputChannels == inputChannels && entry->outputChannels == outputChannels;
    if (fits || (entry != mEntries.end() && entry->engine->anyRunning()))
        return fits ? &*entry : nullptr;
    if (entry != mEntries.end()) {
        // Procedures that stopped themselves may still stand in the engine that goes.
        for (Registration &registration : mRegistrations) {
            if (registration.engine == entry->engine.get())
                registration.engine = nullptr;
        }
        mEntries.erase(entry);
    }
    auto engine = std::make_unique<IOEngine>(mDevice, inputChannels, outputChannels, mBlockFrames, mStreamEnded);
    mEntries.push_back(
        {std::move(engine), input, output, inputChannels, outputChannels, kAudioObjectUnknown, 0, 0, 0, {}});
    return &mEntries.back();
}

OSStatus DeviceIO::start(Registration &registration, HardwareBackend &backend, const Device *device, IOEngine *leader,
                         AudioObjectID leaderDevice) {
    if (registration.engine && registration.engine->isRunning(registration.slot))
        return kAudioHardwareNoError;
    stop(registration);
    if (!device)
        return kAudioHardwareBadDeviceError;
    Entry *entry = entryFor(registration.input, registration.output, *device);
    if (!entry)
        return kAudioHardwareUnspecifiedError;
    IOEngine &engine = *entry->engine;
    const int slot = engine.add(registration.proc, registration.id, registration.clientData);
    if (slot < 0)
        return kAudioHardwareIllegalOperationError;
    registration.engine = &engine;
    registration.slot = slot;
    // A stream that already plays for somebody else is opened again to follow the one that this procedure needs.
    if (leader && engine.stream() && !engine.hasLeader())
        engine.close();
    const bool opens = !engine.stream();
    engine.start(slot);
    if (!engine.open(backend, device->record, leader ? leader->stream() : nullptr)) {
        stop(registration);
        return kAudioHardwareUnspecifiedError;
    }
    if (leader)
        entry->leaderDevice = leaderDevice;
    if (leader && opens)
        entry->leaderOpening = leader->openings();
    return kAudioHardwareNoError;
}

void DeviceIO::stop(Registration &registration) {
    if (!registration.engine)
        return;
    registration.engine->remove(registration.slot);
    registration.engine = nullptr;
    registration.slot = -1;
    sweep();
}

bool DeviceIO::flows(Direction direction) const {
    return std::any_of(mEntries.begin(), mEntries.end(), [&](const Entry &e) {
        return (direction == Direction::Input ? e.input : e.output) && e.engine->flows();
    });
}

void DeviceIO::tellFlow(const Entry &entry) const {
    if (entry.input)
        mFlowChanged(Direction::Input);
    if (entry.output)
        mFlowChanged(Direction::Output);
}

IOEngine *DeviceIO::readingEngineOf(const void *clientData) const {
    for (const Registration &registration : mRegistrations) {
        if (registration.clientData == clientData && registration.input && !registration.output && registration.engine
            && registration.engine->isRunning(registration.slot) && registration.engine->stream())
            return registration.engine;
    }
    return nullptr;
}

void DeviceIO::sweep() {
    for (Entry &entry : mEntries) {
        const bool ended = entry.engine->closeIfEnded();
        if (ended && entry.engine->anyRunning())
            tellFlow(entry);
        if (!entry.engine->anyRunning()) {
            entry.engine->close();
            entry.engine->setPlaybackGains(1, 1);
            entry.leaderDevice = kAudioObjectUnknown;
        }
    }
}

bool DeviceIO::watch() {
    bool any = false;
    for (Entry &entry : mEntries) {
        if (!entry.engine->flows()) {
            entry.stillFor = 0;
            any = any || entry.engine->anyRunning();
            continue;
        }
        any = true;
        const std::uint32_t cycles = entry.engine->cycles();
        entry.stillFor = std::exchange(entry.cycles, cycles) == cycles ? entry.stillFor + 1 : 0;
        if (entry.stillFor < kStallLooks)
            continue;
        entry.stillFor = 0;
        entry.engine->close();
        tellFlow(entry);
    }
    return any;
}

bool DeviceIO::takeUp(HardwareBackend &backend, const Device &device,
                      const std::function<const IOEngine *(AudioObjectID)> &readerOf) {
    bool missing = false;
    for (Entry &entry : mEntries) {
        const IOEngine *leader = entry.leaderDevice ? readerOf(entry.leaderDevice) : nullptr;
        if (leader && leader->openings() != entry.leaderOpening)
            entry.engine->close();
        if (!entry.engine->anyRunning() || entry.engine->stream())
            continue;
        // The procedures were made for other channels: they wait until the device has those again, or are started anew.
        const std::pair offered(entry.input ? device.record.input.channels : 0,
                                entry.output ? device.record.output.channels : 0);
        if (offered != std::pair(entry.inputChannels, entry.outputChannels)) {
            if (std::exchange(entry.misfit, offered) != offered)
                tellFlow(entry);
            continue;
        }
        entry.misfit = {};
        if (entry.engine->open(backend, device.record, leader ? leader->stream() : nullptr, kRetryPatience)) {
            entry.leaderOpening = leader ? leader->openings() : 0;
            tellFlow(entry);
        } else {
            missing = true;
        }
    }
    return missing;
}

const IOEngine *DeviceIO::reader() const {
    for (const Entry &entry : mEntries) {
        if (entry.input && !entry.output)
            return entry.engine->stream() ? entry.engine.get() : nullptr;
    }
    return nullptr;
}

void DeviceIO::followVolume(const Device &loopback) {
    const DeviceSide &side = loopback.record.output;
    for (Entry &entry : mEntries) {
        if (!entry.output || entry.leaderDevice != loopback.id)
            continue;
        const float left = side.muted ? 0 : side.gains.empty() ? 1 : side.gains.front();
        const float right = side.muted ? 0 : side.gains.empty() ? 1 : side.gains[side.gains.size() > 1 ? 1 : 0];
        entry.engine->setPlaybackGains(left, right);
    }
}

} // namespace cantorel::hal

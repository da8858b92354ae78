#pragma once

#include "platform/hal/AudioHardware.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/embedded/EmbeddedBackend.h"
#include "tests/support/LoopbackNames.h"

#include <QDir>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <vector>

namespace cantorel::test {

// A stamped frame names its own position, so that loss, doubling and order show: left holds the position, right its
// negative. Exact in a float for positions below 2^24 divided by the scale.
inline constexpr float kStampScale = 1.0f / (1 << 23);
inline void stamp(std::span<float> samples, int channels, std::int64_t position) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto frame = static_cast<float>(position + static_cast<std::int64_t>(i) / channels + 1) * kStampScale;
        samples[i] = static_cast<std::int64_t>(i) % channels % 2 == 0 ? frame : -frame;
    }
}
// The position that a stamped left sample names; -1 for silence.
inline std::int64_t stampOf(float left) { return static_cast<std::int64_t>(left / kStampScale) - 1; }

// A sound of one level.
inline hal::SoundSource constant(float level) {
    return [level](std::span<float> samples, int, std::int64_t) { std::fill(samples.begin(), samples.end(), level); };
}

// Software devices that count the streams opened on them.
struct CountingBackend : hal::EmbeddedBackend {
    using EmbeddedBackend::EmbeddedBackend;
    std::unique_ptr<hal::DeviceStream> openStream(const hal::StreamRequest &request,
                                                  hal::StreamClient &client) override {
        auto stream = EmbeddedBackend::openStream(request, client);
        openings += stream ? 1 : 0;
        return stream;
    }
    int openings = 0;
};

// A hardware system over software devices on a manual clock, with the virtual device installed unless told otherwise.
class EmbeddedWorld {
public:
    enum class Virtual { Installed, Missing };
    explicit EmbeddedWorld(Virtual installed = Virtual::Installed)
        : clock(std::make_shared<hal::ManualClock>()), virtualInstalled(installed == Virtual::Installed) {
        auto made = std::make_unique<CountingBackend>(
            clock, [this] { return virtualInstalled; }, kLoopbackNames.first());
        backend = made.get();
        system = std::make_unique<hal::HardwareSystem>(std::move(made), QDir::homePath() + "/state");
    }

    void unplugMicrophone() {
        backend->unplug("builtin_microphone");
        system->deliverChanges();
    }
    void plugMicrophone(const hal::SoundSource &sound = {}, int channels = 2, double rate = 48000) {
        hal::SoftwareDevice device =
            hal::EmbeddedBackend::plainDevice("builtin_microphone", "Built-in Microphone", channels, 0);
        device.record.sampleRate = rate;
        device.source = sound;
        backend->plug(std::move(device));
        system->deliverChanges();
    }
    void advance(std::int64_t milliseconds) { clock->advance(std::chrono::milliseconds(milliseconds)); }

    static std::vector<AudioDeviceID> devices() {
        std::uint32_t size = 0;
        AudioHardwareGetPropertyInfo(kAudioHardwarePropertyDevices, &size, nullptr);
        std::vector<AudioDeviceID> ids(size / sizeof(AudioDeviceID));
        AudioHardwareGetProperty(kAudioHardwarePropertyDevices, &size, ids.data());
        return ids;
    }
    static QString nameOf(AudioDeviceID device) {
        CFStringRef name = nullptr;
        std::uint32_t size = sizeof name;
        return AudioDeviceGetProperty(device, 0, false, kAudioObjectPropertyName, &size, &name) ? QString()
                                                                                                : adoptRef(name);
    }
    static QStringList names() {
        QStringList names;
        for (const AudioDeviceID device : devices())
            names.append(nameOf(device));
        return names;
    }
    static AudioDeviceID deviceNamed(const QString &name) {
        for (const AudioDeviceID device : devices()) {
            if (nameOf(device) == name)
                return device;
        }
        return kAudioObjectUnknown;
    }
    static AudioDeviceID defaultOutput() { return systemDevice(kAudioHardwarePropertyDefaultOutputDevice); }
    static AudioDeviceID defaultInput() { return systemDevice(kAudioHardwarePropertyDefaultInputDevice); }

    static AudioObjectID plugIn() {
        const QString bundle = "com.apple.audio.CoreAudio";
        CFStringRef input = &bundle;
        AudioObjectID found = 0;
        AudioValueTranslation translation = {&input, sizeof input, &found, sizeof found};
        std::uint32_t size = sizeof translation;
        AudioHardwareGetProperty(kAudioHardwarePropertyPlugInForBundleID, &size, &translation);
        return found;
    }
    // "Both", of those members.
    static AudioDeviceID makeAggregate(const QStringList &members) {
        const QVariantMap description{{"name", "Both"}, {"uid", "test.both"}};
        CFDictionaryRef qualifier = &description;
        const AudioObjectPropertyAddress create = {kAudioPlugInCreateAggregateDevice, kAudioObjectPropertyScopeGlobal,
                                                   0};
        AudioDeviceID device = 0;
        std::uint32_t size = sizeof device;
        AudioObjectGetPropertyData(plugIn(), &create, sizeof qualifier, &qualifier, &size, &device);
        CFArrayRef list = &members;
        const AudioObjectPropertyAddress group = {kAudioAggregateDevicePropertyFullSubDeviceList,
                                                  kAudioObjectPropertyScopeGlobal, 0};
        AudioObjectSetPropertyData(device, &group, 0, nullptr, sizeof list, &list);
        return device;
    }

    std::shared_ptr<hal::ManualClock> clock;
    bool virtualInstalled;
    CountingBackend *backend = nullptr;
    std::unique_ptr<hal::HardwareSystem> system;

private:
    static AudioDeviceID systemDevice(AudioObjectPropertySelector selector) {
        AudioDeviceID device = kAudioObjectUnknown;
        std::uint32_t size = sizeof device;
        AudioHardwareGetProperty(selector, &size, &device);
        return device;
    }
};

inline AudioDeviceID named(const QString &name) { return EmbeddedWorld::deviceNamed(name); }

} // namespace cantorel::test

// The volume operations of AudioDeviceEngine; the rest of it is in its own file.

#include "audio_device/AudioDeviceEngine.h"
#include "audio_device/AudioProperty.h"
#include "log/Log.h"
#include "platform/foundation/Console.h"

#include <algorithm>

namespace cantorel {

namespace {

constexpr float kUnknownDeviceVolume = 50.0f; // Deliberate, though every other answer is 0 to 1.
constexpr float kNoInputVolume = -1.0f;
constexpr float kMuteBelow = 0.001f;

AudioObjectPropertyAddress volumeAddress(AudioObjectPropertySelector selector, bool isOutput,
                                         AudioObjectPropertyElement element = 0) {
    return {selector, isOutput ? kAudioDevicePropertyScopeOutput : kAudioDevicePropertyScopeInput, element};
}

OSStatus setChannelVolume(AudioDeviceID device, std::uint32_t channel, bool isInput,
                          AudioObjectPropertySelector selector, float volume) {
    return PDAudioDeviceSetProperty(device, nullptr, channel, isInput, selector, sizeof volume, &volume);
}

bool preferredChannels(AudioDeviceID device, std::uint32_t (&channels)[2]) {
    std::uint32_t size = sizeof channels;
    return PDAudioDeviceGetProperty(device, 0, false, kAudioDevicePropertyPreferredChannelsForStereo, &size, channels)
           == kAudioHardwareNoError;
}

QString deviceMessage(const char *format, AudioDeviceID device) { return QString::asprintf(format, device); }

} // namespace

float AudioDeviceEngine::getVolumeValueFromDeviceName(const QString &name) const {
    const AudioDeviceID device =
        getTheDeviceIDFromName(name == QLatin1String(kTessolarAggregateDeviceName) ? getSystemSoundDeviceName() : name);
    if (device == kAudioObjectUnknown)
        return kUnknownDeviceVolume;
    const bool isOutput = !getAllAudioInputDeviceNames().contains(name);
    const auto master = volumeAddress(kAudioHardwareServiceDeviceProperty_VirtualMasterVolume, isOutput);
    if (AudioHardwareServiceHasProperty(device, &master)) {
        float volume = 0;
        std::uint32_t size = sizeof volume;
        if (AudioHardwareServiceGetPropertyData(device, &master, 0, nullptr, &size, &volume) != kAudioHardwareNoError) {
            foundation::printToConsole(deviceMessage("No volume returned for device 0x%0x\n", device));
            return 0;
        }
        return std::clamp(volume, 0.0f, 1.0f);
    }
    return isOutput ? outputVolumeByChannel(device).value_or(0) : getInputDeviceVolume(device);
}

std::optional<float> AudioDeviceEngine::outputVolumeByChannel(AudioDeviceID device) const {
    float volume = 0;
    std::uint32_t size = sizeof volume;
    if (PDAudioDeviceGetProperty(device, 0, true, kAudioDevicePropertyVolumeScalar, &size, &volume)
        == kAudioHardwareNoError)
        return volume;
    std::uint32_t channels[2] = {};
    if (!preferredChannels(device, channels))
        Log(QStringLiteral("error getting channel-numbers"));
    float sum = 0;
    for (const std::uint32_t channel : channels) {
        size = sizeof volume;
        if (PDAudioDeviceGetProperty(device, channel, false, kAudioDevicePropertyVolumeScalar, &size, &volume)
            == kAudioHardwareNoError)
            sum += volume;
        else
            Log(QString::asprintf("error getting volume of channel %u", channel));
    }
    return sum / 2;
}

float AudioDeviceEngine::getInputDeviceVolume(AudioDeviceID device) const {
    const int channels = numberOfInputChannels(device);
    for (int channel = 0; channel < channels; ++channel) {
        float volume = 0;
        std::uint32_t size = sizeof volume;
        if (PDAudioDeviceGetProperty(device, static_cast<std::uint32_t>(channel), true,
                                     kAudioDevicePropertyVolumeScalar, &size, &volume)
            == kAudioHardwareNoError)
            return volume;
    }
    Log(QStringLiteral("Error - unable to get volume for device"));
    return kNoInputVolume;
}

int AudioDeviceEngine::numberOfInputChannels(AudioDeviceID device) const {
    std::uint32_t size = 0;
    const OSStatus status = PDAudioDeviceGetPropertyInfo(device, 0, true, kAudioDevicePropertyStreams, &size, nullptr);
    return status == kAudioHardwareNoError ? static_cast<int>(size) : -1;
}

bool AudioDeviceEngine::isDeviceVolumeGettableOnChannel(AudioDeviceID device, std::uint32_t channel) const {
    const auto address = volumeAddress(kAudioDevicePropertyVolumeScalar, false, channel);
    return AudioObjectHasProperty(device, &address);
}

bool AudioDeviceEngine::isDeviceVolumeSettableOnChannel(AudioDeviceID device, std::uint32_t channel) const {
    const auto address = volumeAddress(kAudioDevicePropertyVolumeScalar, false, channel);
    bool settable = false;
    return AudioObjectIsPropertySettable(device, &address, &settable) == kAudioHardwareNoError && settable;
}

void AudioDeviceEngine::setInputDevice(AudioDeviceID device, float Volume) {
    const int channels = numberOfInputChannels(device);
    for (int channel = 0; channel < channels; ++channel) {
        if (isDeviceVolumeSettableOnChannel(device, static_cast<std::uint32_t>(channel)))
            (void)setChannelVolume(device, static_cast<std::uint32_t>(channel), true, kAudioDevicePropertyVolumeScalar,
                                   Volume);
    }
}

bool AudioDeviceEngine::setOutputVolumeByChannel(AudioDeviceID device, float volume, bool isSystemDevice) {
    bool writable = false;
    if (PDAudioDeviceGetPropertyInfo(device, 0, true, kAudioDevicePropertyVolumeScalar, nullptr, &writable)
            == kAudioHardwareNoError
        && writable) {
        // The second property deliberately gets the same number, on the sides that the first one gets it on.
        for (const bool isInput : isSystemDevice ? std::vector{true, false} : std::vector{true}) {
            (void)setChannelVolume(device, 0, isInput, kAudioDevicePropertyVolumeScalar, volume);
            (void)setChannelVolume(device, 0, isInput, kAudioDevicePropertyPreferredChannelsForStereo, volume);
        }
        return true;
    }
    std::uint32_t channels[2] = {};
    if (!preferredChannels(device, channels))
        return false;
    for (const std::uint32_t channel : channels)
        (void)setChannelVolume(device, channel, false, kAudioDevicePropertyVolumeScalar, volume);
    return true;
}

bool AudioDeviceEngine::setVolume(float volume, const QString &forDeviceName) {
    const AudioDeviceID device = getTheDeviceIDFromName(
        forDeviceName == QLatin1String(kTessolarAggregateDeviceName) ? getSystemSoundDeviceName() : forDeviceName);
    if (device == kAudioObjectUnknown)
        return false;
    const bool isOutput = !getAllAudioInputDeviceNames().contains(forDeviceName);
    const bool mutes = volume < kMuteBelow;
    const auto master = volumeAddress(kAudioHardwareServiceDeviceProperty_VirtualMasterVolume, isOutput);
    const auto mute = volumeAddress(kAudioDevicePropertyMute, isOutput);
    const auto &target = mutes ? mute : master;

    if (!AudioHardwareServiceHasProperty(device, &target)) {
        if (isOutput)
            return setOutputVolumeByChannel(device, volume, forDeviceName == getSystemSoundDeviceName());
        setInputDevice(device, volume);
        return false;
    }
    bool settable = false;
    if (AudioHardwareServiceIsPropertySettable(device, &target, &settable) != kAudioHardwareNoError || !settable) {
        Log(deviceMessage("Device 0x%0x does not support volume control", device));
        return false;
    }
    if (!mutes) {
        if (AudioHardwareServiceSetPropertyData(device, &master, 0, nullptr, sizeof volume, &volume)
            != kAudioHardwareNoError)
            Log(deviceMessage("Unable to set volume for device 0x%0x", device));
        settable = false;
        if (AudioHardwareServiceIsPropertySettable(device, &mute, &settable) != kAudioHardwareNoError || !settable) {
            Log(deviceMessage("Device 0x%0x does not support muting", device));
            return false;
        }
    }
    const std::uint32_t muted = mutes ? 1 : 0;
    if (AudioHardwareServiceSetPropertyData(device, &mute, 0, nullptr, sizeof muted, &muted) != kAudioHardwareNoError)
        Log(deviceMessage("Unable to set volume for device 0x%0x", device));
    return true;
}

} // namespace cantorel

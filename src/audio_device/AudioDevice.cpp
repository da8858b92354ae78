#include "audio_device/AudioDevice.h"

#include "audio_device/AudioProperty.h"

namespace cantorel {

namespace {

bool hasVolume(AudioDeviceID device, std::uint32_t channel) {
    std::uint32_t size = 0;
    return PDAudioDeviceGetPropertyInfo(device, channel, false, kAudioDevicePropertyVolumeScalar, &size, nullptr)
           == kAudioHardwareNoError;
}

float readVolume(AudioDeviceID device, AudioObjectPropertySelector property) {
    for (const std::uint32_t channel : {0u, 1u}) {
        if (!hasVolume(device, channel))
            continue;
        float value = 0;
        std::uint32_t size = sizeof value;
        (void)PDAudioDeviceGetProperty(device, channel, false, property, &size, &value); // Failing leaves 0.
        return value;
    }
    return 0;
}

} // namespace

void AudioDevice::Init(AudioDeviceID device, bool input) {
    deviceID = device;
    isInput = input;
    if (deviceID == kAudioObjectUnknown)
        return;
    std::uint32_t size = sizeof safetyOffsetFrames;
    CHECK_ERR(
        PDAudioDeviceGetProperty(deviceID, 0, isInput, kAudioDevicePropertySafetyOffset, &size, &safetyOffsetFrames),
        "Couldn't get the safety offset");
    size = sizeof bufferFrames;
    CHECK_ERR(PDAudioDeviceGetProperty(deviceID, 0, isInput, kAudioDevicePropertyBufferFrameSize, &size, &bufferFrames),
              "Couldn't get the buffer size");
    UpdateFormat();
}

void AudioDevice::UpdateFormat() {
    std::uint32_t size = sizeof streamFormat;
    CHECK_ERR(PDAudioDeviceGetProperty(deviceID, 0, isInput, kAudioDevicePropertyStreamFormat, &size, &streamFormat),
              "Couldn't get the stream format");
}

void AudioDevice::SetBufferSize(std::uint32_t frames) {
    if (deviceID == kAudioObjectUnknown)
        return;
    CHECK_ERR(PDAudioDeviceSetProperty(deviceID, nullptr, 0, isInput, kAudioDevicePropertyBufferFrameSize,
                                       sizeof frames, &frames),
              "Couldn't set the buffer size");
    std::uint32_t size = sizeof bufferFrames;
    CHECK_ERR(PDAudioDeviceGetProperty(deviceID, 0, isInput, kAudioDevicePropertyBufferFrameSize, &size, &bufferFrames),
              "Couldn't get the buffer size");
}

OSStatus AudioDevice::SetSampleRate(double rate) {
    streamFormat.mSampleRate = rate;
    const OSStatus status = PDAudioDeviceSetProperty(deviceID, nullptr, 0, isInput, kAudioDevicePropertyStreamFormat,
                                                     sizeof streamFormat, &streamFormat);
    if (status != kAudioHardwareNoError)
        UpdateFormat();
    return status;
}

bool AudioDevice::IsVolumeAvailableForMaster() const { return hasVolume(deviceID, 0); }

bool AudioDevice::IsVolumeAvailableForChannels() const { return hasVolume(deviceID, 1); }

void AudioDevice::SetVolumeScalar(float value) const {
    const auto set = [&](std::uint32_t channel) {
        CHECK_ERR(PDAudioDeviceSetProperty(deviceID, nullptr, channel, false, kAudioDevicePropertyVolumeScalar,
                                           sizeof value, &value),
                  "Couldn't set the volume");
    };
    if (IsVolumeAvailableForMaster()) {
        set(0);
    } else if (IsVolumeAvailableForChannels()) {
        const std::uint32_t channels = CountChannels();
        for (std::uint32_t channel = 1; channel <= channels; ++channel)
            set(channel);
    }
}

float AudioDevice::GetVolumeScalar() const { return readVolume(deviceID, kAudioDevicePropertyVolumeScalar); }

float AudioDevice::GetVolumeDB() const { return readVolume(deviceID, kAudioDevicePropertyVolumeDecibels); }

std::uint32_t AudioDevice::CountChannels() const { return channelsOfSide(deviceID, isInput).value_or(0); }

char *AudioDevice::GetName(char *buffer, std::uint32_t size) const {
    CHECK_ERR(PDAudioDeviceGetProperty(deviceID, 0, isInput, kAudioDevicePropertyDeviceName, &size, buffer),
              "Couldn't get the device name");
    return buffer;
}

} // namespace cantorel

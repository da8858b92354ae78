#include "platform/hal/core/DeviceProperties.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace cantorel::hal {

namespace {

constexpr float kSilenceDecibels = -144;

const DeviceSide *sideOf(const Device &device, AudioObjectPropertyScope scope) {
    const DeviceSide &input = device.record.input;
    const DeviceSide &output = device.record.output;
    switch (scope) {
    case kAudioDevicePropertyScopeInput:
        return &input;
    case kAudioDevicePropertyScopeOutput:
        return &output;
    case kAudioObjectPropertyScopeGlobal:
        return output.channels > 0 ? &output : &input;
    }
    return nullptr;
}

Direction directionOf(const Device &device, AudioObjectPropertyScope scope) {
    return sideOf(device, scope) == &device.record.input ? Direction::Input : Direction::Output;
}

// A slider moves by the cube root of the gain, as the desktop's own does.
float scalarOf(float gain) { return std::cbrt(std::max(gain, 0.0f)); }
float gainOf(float scalar) {
    const float clamped = std::isfinite(scalar) ? std::clamp(scalar, 0.0f, 1.0f) : 0;
    return clamped * clamped * clamped;
}

// Index into the gains that an element names: one control for all channels is element 0, else channels count from 1.
std::optional<std::size_t> gainIndex(const DeviceSide &side, AudioObjectPropertyElement element) {
    const bool master = side.gains.size() == 1 && side.channels != 1;
    if (master)
        return element == 0 ? std::optional<std::size_t>(0) : std::nullopt;
    if (element >= 1 && element <= side.gains.size())
        return element - 1;
    return std::nullopt;
}

AudioStreamBasicDescription formatOf(double rate, int channels) {
    const auto bytes = static_cast<std::uint32_t>(sizeof(float) * static_cast<std::size_t>(channels));
    return {rate,
            kAudioFormatLinearPCM,
            kAudioFormatFlagsNativeFloatPacked,
            bytes,
            1,
            bytes,
            static_cast<std::uint32_t>(channels),
            32,
            0};
}

template <class T> bool readValue(T &value, std::uint32_t size, const void *data) {
    if (size < sizeof value || !data)
        return false;
    std::memcpy(&value, data, sizeof value);
    return true;
}

} // namespace

std::uint32_t reblockingFrames(std::uint32_t cycleFrames, std::uint32_t blockFrames) {
    if (cycleFrames == 0 || blockFrames % cycleFrames == 0)
        return 0;
    if (cycleFrames % blockFrames == 0)
        return cycleFrames - blockFrames;
    return std::max(cycleFrames, blockFrames) - std::gcd(cycleFrames, blockFrames);
}

std::optional<PropertyValue> deviceProperty(const DeviceState &state, const AudioObjectPropertyAddress &address) {
    const Device &device = state.device;
    const DeviceRecord &record = device.record;
    const DeviceSide *side = sideOf(device, address.mScope);
    if (!side)
        return std::nullopt;

    switch (address.mSelector) {
    case kAudioDevicePropertyDeviceName:
        return PropertyValue::ofText(device.name, true);
    case kAudioObjectPropertyName:
        return PropertyValue::ofText(device.name, false);
    case kAudioDevicePropertyDeviceUID:
        return PropertyValue::ofText(record.uid, false);
    case kAudioDevicePropertySafetyOffset:
        return PropertyValue::of(record.safetyOffsetFrames + reblockingFrames(record.cycleFrames, state.blockFrames));
    case kAudioDevicePropertyBufferFrameSize:
        return PropertyValue::of(state.blockFrames);
    case kAudioDevicePropertyDeviceIsAlive:
        return PropertyValue::of(std::uint32_t(1));
    case kAudioDevicePropertyDeviceIsRunning:
        return PropertyValue::of(
            std::uint32_t((state.inputFlows && address.mScope != kAudioDevicePropertyScopeOutput)
                          || (state.outputFlows && address.mScope != kAudioDevicePropertyScopeInput)));
    case kAudioDevicePropertyIsLoopback:
        return PropertyValue::of(std::uint32_t(record.isLoopback ? 1 : 0));
    case kAudioDevicePropertyStreamConfiguration:
        return PropertyValue::ofChannels(side->channels);
    case kAudioDevicePropertyStreams: {
        const AudioObjectID stream = DeviceTable::kFirstStream + 2 * device.id + (side == &record.input ? 0 : 1);
        return PropertyValue::ofArray(std::vector<AudioObjectID>(side->channels > 0 ? 1 : 0, stream));
    }
    case kAudioDevicePropertyStreamFormat:
        if (side->channels == 0)
            return std::nullopt;
        return PropertyValue::of(formatOf(record.sampleRate, side->channels));
    case kAudioDevicePropertyPreferredChannelsForStereo:
        if (side->channels == 0)
            return std::nullopt;
        return PropertyValue::ofArray(std::vector<std::uint32_t>{1, side->channels > 1 ? 2u : 1u});
    case kAudioDevicePropertyVolumeScalar:
        if (const auto index = gainIndex(*side, address.mElement))
            return PropertyValue::of(scalarOf(side->gains[*index]));
        return std::nullopt;
    case kAudioDevicePropertyVolumeDecibels:
        if (const auto index = gainIndex(*side, address.mElement)) {
            const float gain = side->gains[*index];
            return PropertyValue::of(gain > 0 ? std::max(20 * std::log10(gain), kSilenceDecibels) : kSilenceDecibels);
        }
        return std::nullopt;
    case kAudioHardwareServiceDeviceProperty_VirtualMasterVolume:
        if (side->gains.empty() || address.mElement != kAudioObjectPropertyElementMaster)
            return std::nullopt;
        return PropertyValue::of(scalarOf(std::accumulate(side->gains.begin(), side->gains.end(), 0.0f)
                                          / static_cast<float>(side->gains.size())));
    case kAudioDevicePropertyMute:
        if (!side->canMute || address.mElement != kAudioObjectPropertyElementMaster)
            return std::nullopt;
        return PropertyValue::of(std::uint32_t(side->muted ? 1 : 0));
    case kAudioAggregateDevicePropertyFullSubDeviceList:
        return state.aggregate ? std::optional(PropertyValue::ofList(state.aggregate->subDeviceUids)) : std::nullopt;
    case kAudioAggregateDevicePropertyMasterSubDevice:
        return state.aggregate ? std::optional(PropertyValue::ofText(state.aggregate->masterUid, false)) : std::nullopt;
    }
    return std::nullopt;
}

bool isDevicePropertySettable(const DeviceState &state, const AudioObjectPropertyAddress &address) {
    if (!deviceProperty(state, address))
        return false;
    switch (address.mSelector) {
    case kAudioDevicePropertyBufferFrameSize:
    case kAudioDevicePropertyStreamFormat:
    case kAudioDevicePropertyVolumeScalar:
    case kAudioHardwareServiceDeviceProperty_VirtualMasterVolume:
    case kAudioDevicePropertyMute:
    case kAudioAggregateDevicePropertyFullSubDeviceList:
    case kAudioAggregateDevicePropertyMasterSubDevice:
        return true;
    }
    return false;
}

OSStatus setDeviceProperty(HardwareBackend &backend, const DeviceState &state,
                           const AudioObjectPropertyAddress &address, std::uint32_t size, const void *data) {
    const DeviceRecord &record = state.device.record;
    const DeviceSide *side = sideOf(state.device, address.mScope);
    const Direction direction = directionOf(state.device, address.mScope);
    const auto status = [](bool done) { return done ? kAudioHardwareNoError : kAudioHardwareUnspecifiedError; };
    switch (address.mSelector) {
    case kAudioDevicePropertyVolumeScalar:
    case kAudioHardwareServiceDeviceProperty_VirtualMasterVolume: {
        float scalar = 0;
        if (!readValue(scalar, size, data))
            return kAudioHardwareBadPropertySizeError;
        std::vector<float> gains = side->gains;
        if (address.mSelector == kAudioDevicePropertyVolumeScalar)
            gains[*gainIndex(*side, address.mElement)] = gainOf(scalar);
        else
            std::fill(gains.begin(), gains.end(), gainOf(scalar));
        return status(backend.setGains(record.uid, direction, gains));
    }
    case kAudioDevicePropertyMute: {
        std::uint32_t muted = 0;
        if (!readValue(muted, size, data))
            return kAudioHardwareBadPropertySizeError;
        return status(backend.setMuted(record.uid, direction, muted != 0));
    }
    case kAudioDevicePropertyStreamFormat: {
        AudioStreamBasicDescription format = {};
        if (!readValue(format, size, data))
            return kAudioHardwareBadPropertySizeError;
        if (format != formatOf(format.mSampleRate, side->channels) || !(format.mSampleRate > 0))
            return kAudioDeviceUnsupportedFormatError;
        if (format.mSampleRate == record.sampleRate)
            return kAudioHardwareNoError;
        return backend.setSampleRate(record.uid, format.mSampleRate) ? kAudioHardwareNoError
                                                                     : kAudioDeviceUnsupportedFormatError;
    }
    }
    return kAudioHardwareUnknownPropertyError;
}

} // namespace cantorel::hal

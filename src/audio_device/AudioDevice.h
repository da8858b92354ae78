#pragma once

#include "platform/hal/AudioHardwareTypes.h"

namespace cantorel {

// One device seen from one of its sides: a plain record, copied by value inside its owner. Calls are synchronous, not
// for a real-time thread; failures leave the fields as they were.
struct AudioDevice {
    AudioDeviceID deviceID = kAudioObjectUnknown; // 0: no device
    bool isInput = false;                         // chooses the side in every call
    std::uint32_t safetyOffsetFrames = 0;
    std::uint32_t bufferFrames = 0;
    AudioStreamBasicDescription streamFormat = {};

    // Stores both, and for a device reads its safety offset, buffer size and format.
    void Init(AudioDeviceID device, bool input);
    // Reads the format again.
    void UpdateFormat();
    // Asks for a buffer size and reads which one the device took.
    void SetBufferSize(std::uint32_t frames);
    // Frames a second. The record holds the rate asked for when the device took it, else the device's own.
    OSStatus SetSampleRate(double rate);

    // Whether one control moves all channels, or each has its own. Output side.
    bool IsVolumeAvailableForMaster() const;
    bool IsVolumeAvailableForChannels() const;
    // 0 to 1, on the one control or on every channel. Output side.
    void SetVolumeScalar(float value) const;
    // From the one control or the first channel; 0 without any.
    float GetVolumeScalar() const;
    float GetVolumeDB() const;

    // Of all buffers of the side; 0 when the device does not say.
    std::uint32_t CountChannels() const;
    // UTF-8, cut to size bytes with its end mark. Answers the buffer.
    char *GetName(char *buffer, std::uint32_t size) const;
};

} // namespace cantorel

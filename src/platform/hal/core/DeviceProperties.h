#pragma once

#include "platform/hal/core/DeviceTable.h"
#include "platform/hal/core/PropertyValue.h"

namespace cantorel::hal {

// What the values of a device's properties follow from, beside the record itself.
struct DeviceState {
    const Device &device;
    std::uint32_t blockFrames;
    bool inputFlows;
    bool outputFlows;
    const AggregateSpec *aggregate; // null when it is none
};

// The value of a property; nothing when the device has no such property in that scope and element.
std::optional<PropertyValue> deviceProperty(const DeviceState &state, const AudioObjectPropertyAddress &address);

// Whether setDeviceProperty() could do it.
bool isDevicePropertySettable(const DeviceState &state, const AudioObjectPropertyAddress &address);

// Sets a property that the backend carries out: volume, mute, format.
OSStatus setDeviceProperty(HardwareBackend &backend, const DeviceState &state,
                           const AudioObjectPropertyAddress &address, std::uint32_t size, const void *data);

// Frames that re-blocking adds between cycles of one size and blocks of another.
std::uint32_t reblockingFrames(std::uint32_t cycleFrames, std::uint32_t blockFrames);

} // namespace cantorel::hal

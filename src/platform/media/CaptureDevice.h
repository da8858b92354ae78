#pragma once

#include "platform/hal/AudioHardwareTypes.h"

#include <QString>

#include <optional>
#include <vector>

namespace cantorel::media {

// A device that can be recorded, as the capture layer names it: a value. uniqueID names the same device at the next
// start.
struct CaptureDevice {
    AudioObjectID objectID = kAudioObjectUnknown;
    QString uniqueID;
    QString localizedName;

    bool operator==(const CaptureDevice &) const = default;
};

// Every device that has an input side now, in the hardware layer's order. Not on a real-time thread.
std::vector<CaptureDevice> captureAudioDevices();
// The device of that identifier while it has an input side, also where no list shows it. Not on a real-time thread.
std::optional<CaptureDevice> captureDeviceWithUniqueID(const QString &uniqueID);

} // namespace cantorel::media

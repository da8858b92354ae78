#pragma once

#include "platform/media/CaptureDevice.h"

#include <QStringList>

#include <optional>

namespace cantorel {

// The devices that the capture layer can record, by their display names. Stateless.
class AudioDevices {
public:
    // In the capture layer's order.
    QStringList audioDevices() const;
    // The first of exactly that display name; nothing when none has it.
    std::optional<media::CaptureDevice> getTheCaptureDeviceWithName(const QString &name) const;
};

} // namespace cantorel

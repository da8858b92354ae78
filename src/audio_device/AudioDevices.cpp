#include "audio_device/AudioDevices.h"

namespace cantorel {

QStringList AudioDevices::audioDevices() const {
    QStringList names;
    for (const media::CaptureDevice &device : media::captureAudioDevices())
        names.append(device.localizedName);
    return names;
}

std::optional<media::CaptureDevice> AudioDevices::getTheCaptureDeviceWithName(const QString &name) const {
    for (const media::CaptureDevice &device : media::captureAudioDevices()) {
        if (device.localizedName == name)
            return device;
    }
    return std::nullopt;
}

} // namespace cantorel

#include "platform/media/CaptureDevice.h"

#include "platform/hal/AudioHardware.h"

namespace cantorel::media {

namespace {

QString text(AudioObjectID device, AudioObjectPropertySelector selector) {
    const AudioObjectPropertyAddress address = {selector, kAudioObjectPropertyScopeGlobal, 0};
    CFStringRef reference = nullptr;
    std::uint32_t size = kReferenceSize;
    const OSStatus status = AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &reference);
    return status == kAudioHardwareNoError ? adoptRef(reference) : QString();
}

bool hasInput(AudioObjectID device) {
    const AudioObjectPropertyAddress address = {kAudioDevicePropertyStreams, kAudioDevicePropertyScopeInput, 0};
    std::uint32_t size = 0;
    return AudioObjectGetPropertyDataSize(device, &address, 0, nullptr, &size) == kAudioHardwareNoError && size > 0;
}

} // namespace

std::vector<CaptureDevice> captureAudioDevices() {
    std::uint32_t size = 0;
    if (AudioHardwareGetPropertyInfo(kAudioHardwarePropertyDevices, &size, nullptr) != kAudioHardwareNoError)
        return {};
    // A device more may have come meanwhile.
    std::vector<AudioObjectID> ids(size / sizeof(AudioObjectID) + 8);
    size = static_cast<std::uint32_t>(ids.size() * sizeof(AudioObjectID));
    if (AudioHardwareGetProperty(kAudioHardwarePropertyDevices, &size, ids.data()) != kAudioHardwareNoError)
        return {};
    ids.resize(size / sizeof(AudioObjectID));
    std::vector<CaptureDevice> devices;
    for (const AudioObjectID id : ids) {
        if (hasInput(id))
            devices.push_back({id, text(id, kAudioDevicePropertyDeviceUID), text(id, kAudioObjectPropertyName)});
    }
    return devices;
}

std::optional<CaptureDevice> captureDeviceWithUniqueID(const QString &uniqueID) {
    CFStringRef name = &uniqueID;
    AudioObjectID id = kAudioObjectUnknown;
    AudioValueTranslation translation = {&name, sizeof name, &id, sizeof id};
    std::uint32_t size = sizeof translation;
    if (AudioHardwareGetProperty(kAudioHardwarePropertyDeviceForUID, &size, &translation) != kAudioHardwareNoError
        || !hasInput(id))
        return std::nullopt;
    return CaptureDevice{id, uniqueID, text(id, kAudioObjectPropertyName)};
}

} // namespace cantorel::media

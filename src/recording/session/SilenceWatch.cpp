#include "recording/session/SilenceWatch.h"

#include "audio_device/ZQAudioKextKit.h"
#include "settings/AppSettings.h"

#include <utility>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kSilentVolume("SilentVolume", "Device");
constexpr foundation::SentenceKey kSilentMicrophone("SilentMicrophone", "Device");
constexpr foundation::SentenceKey kSilentRoute("SilentRoute", "Device", "Other");
constexpr foundation::SentenceKey kSilentPlayer("SilentPlayer", "Device");

constexpr auto kPatience = std::chrono::seconds(3);
// The recorder's level of a device whose every channel is at the meter's floor of -80 dB.
constexpr float kFloorLevel = 0.002001f;

} // namespace

void SilenceWatch::begin(Duration now) {
    mBegan = now;
    mWasDue = false;
}

void SilenceWatch::resumed(Duration now) {
    if (mBegan)
        mBegan = now;
}

bool SilenceWatch::level(float level) {
    if (!(level > kFloorLevel))
        return false;
    mBegan.reset();
    return std::exchange(mWasDue, false);
}

bool SilenceWatch::isDue(Duration now) {
    if (!mBegan || now - *mBegan < kPatience)
        return false;
    mBegan.reset();
    mWasDue = true;
    return true;
}

foundation::Sentence likelyCauseOfSilence(RecordingSource source, const QString &device) {
    if (source == RecordingSource::Microphone) {
        const QString microphone = ZQAudioKextKit::getDefaultAudioInputName();
        if (ZQAudioKextKit::getVolumeValueFromDeviceName(microphone) == 0)
            return kSilentVolume(device);
        return kSilentMicrophone(device);
    }
    const QString output = ZQAudioKextKit::getDefaultAudioOutputName();
    if (!ZQAudioKextKit::availableSVAD())
        return kSilentPlayer(output.isEmpty() ? device : output);
    if (output != ZQAudioKextKit::getSystemSoundDeviceName())
        return kSilentRoute(ZQAudioKextKit::getSystemSoundDeviceName(), output);
    // The person knows the output that is heard, not the device that stands in for it.
    const QString heard = AppSettings::getRecordingOutputDeviceName();
    return kSilentPlayer(heard.isEmpty() ? device : heard);
}

} // namespace cantorel

#include "recording/session/SilenceWatch.h"

#include "audio_device/ZQAudioKextKit.h"

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

void SilenceWatch::begin(Duration now) { mBegan = now; }

void SilenceWatch::resumed(Duration now) {
    if (mBegan)
        mBegan = now;
}

void SilenceWatch::level(float level) {
    if (level > kFloorLevel)
        mBegan.reset();
}

bool SilenceWatch::isDue(Duration now) {
    if (!mBegan || now - *mBegan < kPatience)
        return false;
    mBegan.reset();
    return true;
}

foundation::Sentence likelyCauseOfSilence(int source, const QString &device) {
    if (source == 1) {
        const QString microphone = ZQAudioKextKit::getDefaultAudioInputName();
        if (ZQAudioKextKit::getVolumeValueFromDeviceName(microphone) == 0)
            return kSilentVolume(device);
        return kSilentMicrophone(device);
    }
    const QString output = ZQAudioKextKit::getDefaultAudioOutputName();
    if (output != ZQAudioKextKit::getSystemSoundDeviceName())
        return kSilentRoute(ZQAudioKextKit::getSystemSoundDeviceName(), output);
    return kSilentPlayer(device);
}

} // namespace cantorel

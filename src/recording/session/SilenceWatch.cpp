#include "recording/session/SilenceWatch.h"

#include "audio_device/ZQAudioKextKit.h"

namespace cantorel {

namespace {

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

QString likelyCauseOfSilence(int source, const QString &device) {
    if (source == 1) {
        const QString microphone = ZQAudioKextKit::getDefaultAudioInputName();
        if (ZQAudioKextKit::getVolumeValueFromDeviceName(microphone) == 0)
            return QStringLiteral("\"%1\" gives only silence; its volume is 0, turn it up.").arg(device);
        return QStringLiteral("\"%1\" gives only silence; it may be muted or not connected.").arg(device);
    }
    const QString output = ZQAudioKextKit::getDefaultAudioOutputName();
    if (output != ZQAudioKextKit::getSystemSoundDeviceName())
        return QStringLiteral("\"%1\" hears only silence because programs play to \"%2\"; choose \"%1\" as the output.")
            .arg(ZQAudioKextKit::getSystemSoundDeviceName(), output);
    return QStringLiteral(
               "\"%1\" hears only silence; nothing plays, the player is muted, or it plays to another device.")
        .arg(device);
}

} // namespace cantorel

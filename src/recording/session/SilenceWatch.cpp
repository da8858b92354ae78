#include "recording/session/SilenceWatch.h"

#include "audio_device/ZQAudioKextKit.h"
#include "settings/AppSettings.h"

#include <utility>

namespace cantorel {

namespace {

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

QString likelyCauseOfSilence(RecordingSource source, const QString &device) {
    if (source == RecordingSource::Microphone) {
        const QString microphone = ZQAudioKextKit::getDefaultAudioInputName();
        if (ZQAudioKextKit::getVolumeValueFromDeviceName(microphone) == 0)
            return QStringLiteral("\"%1\" gives only silence; its volume is 0, turn it up.").arg(device);
        return QStringLiteral("\"%1\" gives only silence; it may be muted or not connected.").arg(device);
    }
    const QString output = ZQAudioKextKit::getDefaultAudioOutputName();
    if (output != ZQAudioKextKit::getSystemSoundDeviceName())
        return QStringLiteral("\"%1\" hears only silence because programs play to \"%2\"; choose \"%1\" as the output.")
            .arg(ZQAudioKextKit::getSystemSoundDeviceName(), output);
    // The person knows the output that is heard, not the device that stands in for it.
    const QString heard = AppSettings::getRecordingOutputDeviceName();
    return QStringLiteral(
               "\"%1\" hears only silence; nothing plays, the player is muted, or it plays to another device.")
        .arg(heard.isEmpty() ? device : heard);
}

} // namespace cantorel

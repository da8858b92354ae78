#pragma once

#include "audio_device/AudioDeviceEngine.h"
#include "audio_device/AudioDeviceLoader.h"
#include "audio_device/AudioDevices.h"
#include "platform/foundation/Sentence.h"

namespace cantorel {

// The facade through which the whole program reaches audio devices: one kit for the process, made by the first
// operation that needs it. The others do nothing and answer nothing, 0 or false before that. Main thread, but for the
// two operations of the engine that say otherwise.
class ZQAudioKextKit {
public:
    // Ends the kit, so that its devices are let go while the hardware still answers; the composition root's last act.
    static void end();

    static void setLogPath(const QString &path);

    // These make the kit.
    static bool availableSVAD();
    static bool activateSVAD();
    static std::optional<media::CaptureDevice> getTheCaptureDeviceWithName(const QString &name);
    static void destroyAggregateDevice();
    static bool loadAudioKext();
    static bool unloadAudioKext();
    static QString getDefaultAudioInputName();
    static QString getDefaultAudioOutputName();
    static bool setVolume(float volume, const QString &forDeviceName);
    static float getVolumeValueFromDeviceName(const QString &name);
    static QString getSystemSoundDeviceName();
    static void resetDefaultAudioDevice();
    static void addSystemAudioDeviceChangeListener();

    // These do not.
    static QStringList audioDevices();
    static bool isAggregateDeviceChanged(const QVariantMap &saved);
    static std::optional<media::CaptureDevice> systemSoundDevice();
    static QVariantMap createAggregateDevice();
    static QVariantMap renewAggregateDevice(const QVariantMap &saved);
    static bool setSVAD();
    static void unsetSVAD();
    static void keepRouting(bool keep);
    static bool isRoutingKept();
    static QStringList getAllAudioInputDeviceNames();
    static QStringList getAllAudioOutputDeviceNames();
    static bool changeAudioInputDeviceWithName(const QString &name);
    static bool changeAudioOutputDeviceWithName(const QString &name);
    static bool borrowAudioInputDeviceWithName(const QString &name);
    static void giveBackAudioInputDevice();
    static void removeSystemAudioDeviceChangeListener();
    // Why the last install or removal failed, in one sentence.
    static foundation::Sentence loaderFailure();

    static bool isMacVersionGreatThan1010();
    static bool isMacVersionGreatThan1008();

private:
    ZQAudioKextKit() = default;
    static ZQAudioKextKit &shared();

    AudioDevices mAudioDevicesManager;
    AudioDeviceLoader mAudioDeviceLoader;
    AudioDeviceEngine mAudioDeviceEngine;
};

} // namespace cantorel

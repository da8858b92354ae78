#pragma once

#include "audio_device/AudioThruEngine.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/Guarded.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/media/CaptureDevice.h"
#include "settings/AppSettings.h"

#include <QStringList>
#include <QVariantMap>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace cantorel {

// Posted with the information of the new default device (GetDeviceInfo); empty when there is none.
inline constexpr foundation::NotificationName<QVariantMap> kNotificationDefaultInputDidChange{
    "SystemAudioDefaultInputDeviceDidChanged"};
inline constexpr foundation::NotificationName<QVariantMap> kNotificationDefaultOutputDidChange{
    "SystemAudioDefaultOutputDeviceDidChanged"};

// Posted while system sound is routed: false when nobody hears it any more for lack of an output, true when it is heard
// again.
inline constexpr foundation::NotificationName<bool> kNotificationRoutedSoundIsHeard{"RoutedSoundIsHeard"};

// Posted when the devices, or whether a sound server carries sound, may be others: whether it does.
inline constexpr foundation::NotificationName<bool> kNotificationSoundDevicesDidChange{"SoundDevicesDidChange"};

// Names of further virtual devices that the engine takes where the product's own is missing.
inline constexpr const char *kOlderVirtualDeviceName = "System Sound";
inline constexpr const char *kSoundflowerDeviceName = "Soundflower (2ch)";

// Keys of an aggregate description.
inline constexpr const char *kAggregateOutputUID = "AggregateOutputUID";
inline constexpr const char *kAggregateInputUID = "AggregateInputUID";

// Decides how the system's sound reaches a recording: makes the virtual device the default output, lets the person hear
// it through the thru engine, and gives the real device back. Also lists devices, switches defaults, and keeps the
// aggregate that joins microphone and system sound. Owned by ZQAudioKextKit; main thread, but for what makes and
// destroys the aggregate, which may run on a worker.
class AudioDeviceEngine {
public:
    AudioDeviceEngine() = default;
    ~AudioDeviceEngine();
    AudioDeviceEngine(const AudioDeviceEngine &) = delete;
    AudioDeviceEngine &operator=(const AudioDeviceEngine &) = delete;

    // The names of every virtual device that the engine takes, the product's own first.
    static QStringList virtualDeviceNames();
    // The name of the virtual device that activateSVAD found last; empty before.
    QString getSystemSoundDeviceName() const;
    // The first device of that name; 0 when none has it.
    AudioDeviceID getTheDeviceIDFromName(const QString &name) const;
    AudioDeviceID getCurrentAudioInputDevice() const;
    AudioDeviceID getCurrentAudioOutputDevice() const;
    QString defaultInputDevice() const;
    QString defaultOutputDevice() const;
    // Without the program's own devices.
    QStringList getAllAudioInputDeviceNames() const;
    QStringList getAllAudioOutputDeviceNames() const;
    bool changeAudioInputDeviceWithName(const QString &name);
    bool changeAudioOutputDeviceWithName(const QString &name);
    // The same for a while: what was chosen before comes back with giveBackAudioInputDevice(), or when this program
    // ends without it, unless somebody has chosen yet another device meanwhile.
    bool borrowAudioInputDeviceWithName(const QString &name);
    void giveBackAudioInputDevice();

    // Whether there is a virtual device, without side effects.
    bool availableSVAD() const;
    // Remembers the default devices and the virtual one. False when there is none.
    bool activateSVAD();
    // What system sound is recorded from, as activateSVAD found it: the virtual device, or without one what the default
    // output plays, as it is. Nothing before, or where there is neither.
    std::optional<media::CaptureDevice> systemSoundDevice() const;
    // Routes system sound into the virtual device and lets it be heard. False when none is activated.
    bool setSVAD();
    // Gives the remembered real device back; harmless when nothing is routed.
    void unsetSVAD();
    // While true, unsetSVAD() only notes that the device is to be given back, and a following setSVAD() continues the
    // routing without an audible gap. Passing false carries out what is still noted. Meanwhile the default devices are
    // reported as if it had been carried out.
    void keepRouting(bool keep);
    // Whether a noted unsetSVAD() can still be undone by setSVAD().
    bool isRoutingKept() const { return mUnsetIsKept && isRouted(); }

    // Joins the default input and what system sound is recorded from to "Tessolar_AggregateDevice". The UIDs of both,
    // or empty on failure.
    QVariantMap createAggregateDevice();
    void destroyAggregateDevice();
    // The same, but keeps the existing aggregate if it still joins these two, as saved or as made before. Locked: any
    // thread.
    QVariantMap renewAggregateDevice(const QVariantMap &saved);
    bool isExistAggregateDevice() const;
    // Whether the aggregate is missing or joins another microphone than the default one.
    bool isAggregateDeviceChanged(const QVariantMap &saved) const;
    // Makes real devices the defaults where one of the program's own was left behind.
    void resetDefaultAudioDevice();
    // The same operation; the names are not looked at.
    void resetDefaultAudioInputDevice(const QString &inputName, const QString &audioOutputDevice);

    void addSystemAudioDeviceChangeListener();
    void removeSystemAudioDeviceChangeListener();

    // 0 to 1; 50.0 when no device has the name, -1 for an input without a volume.
    float getVolumeValueFromDeviceName(const QString &name) const;
    // Below 0.001 mutes instead. False when the device has no such control.
    bool setVolume(float volume, const QString &forDeviceName);
    float getInputDeviceVolume(AudioDeviceID device) const;
    // Deliberately the byte size of the stream list, four for each stream; -1 when it can't be read.
    int numberOfInputChannels(AudioDeviceID device) const;
    bool isDeviceVolumeGettableOnChannel(AudioDeviceID device, std::uint32_t channel) const;
    bool isDeviceVolumeSettableOnChannel(AudioDeviceID device, std::uint32_t channel) const;
    void setInputDevice(AudioDeviceID device, float Volume);

private:
    static OSStatus defaultDeviceChanged(AudioObjectID object, std::uint32_t count,
                                         const AudioObjectPropertyAddress *addresses, void *engine);
    static OSStatus routingChanged(AudioObjectID object, std::uint32_t count,
                                   const AudioObjectPropertyAddress *addresses, void *engine);
    void followRouting();
    void hearAt(AudioDeviceID output);
    void rememberRealOutput();
    void displaceOutput();
    void watchRouting(bool watch);
    bool isRouted() const;
    void giveBack();
    bool isOwnDevice(AudioDeviceID device) const;
    AudioDeviceID replacementOutput() const;
    bool changeDevice(AudioObjectPropertySelector selector, const QString &name);
    bool setOutputVolumeByChannel(AudioDeviceID device, float volume, bool isSystemDevice);
    std::optional<float> outputVolumeByChannel(AudioDeviceID device) const;

    // Of the virtual device, whichever of its names matched; shared by all engines.
    static foundation::Guarded<QString> _systemDeviceName;

    AudioDeviceID mOutputDeviceID = 0; // the real one: heard while routed, restored afterwards
    AudioDeviceID mSVADDeviceID = 0;   // the virtual device
    std::atomic<AudioDeviceID> mSystemSoundDeviceID{0};
    std::atomic<AudioDeviceID> mInputDeviceID{0};
    std::recursive_mutex mAggregateMutex; // held while the aggregate is made or destroyed
    QVariantMap mMadeAggregate;           // as made last
    bool mKeepsRouting = false;
    bool mUnsetIsKept = false;
    bool mIsHeard = true;                              // as last told, while routed
    std::unique_ptr<foundation::Timer> mRetry;         // while an existing output cannot be played to
    std::unique_ptr<AudioThruEngine> mAudioThreEngine; // Spelling is fixed. Only while routed.
};

} // namespace cantorel

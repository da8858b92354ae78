#pragma once

#include "platform/hal/embedded/DeviceClock.h"
#include "platform/hal/embedded/SoftwareDevice.h"

#include <map>
#include <memory>
#include <mutex>

namespace cantorel::hal {

// Devices in software on a clock: "Built-in Output" and "Built-in Microphone", and the virtual device once it is
// installed. What is played into a loopback device comes back on its input in the same cycle. With the wall clock for
// programs, with a manual one for tests, which may also feed, hear, plug and unplug. Safe from any thread.
class EmbeddedBackend : public HardwareBackend {
public:
    // loopbackInstalled: asked at each snapshot whether the virtual device of that name is there; empty: it is not.
    explicit EmbeddedBackend(std::shared_ptr<DeviceClock> clock, std::function<bool()> loopbackInstalled = {},
                             QString loopbackName = {});
    ~EmbeddedBackend() override;

    QString name() const override { return QStringLiteral("embedded"); }
    foundation::Result<void> reach(foundation::Clock::Duration patience) override;
    foundation::Clock &clock() override { return *mClock; }
    std::vector<DeviceRecord> devices() const override;
    QString defaultDevice(Direction direction) const override;
    bool keepsDefaults() const override;
    std::optional<QString> configuredDefault(Direction direction) const override;
    bool setConfiguredDefault(Direction direction, const DefaultSetting &setting,
                              const std::optional<DefaultSetting> &guard) override;
    bool setGains(const QString &uid, Direction direction, const std::vector<float> &gains) override;
    bool setMuted(const QString &uid, Direction direction, bool muted) override;
    bool setSampleRate(const QString &uid, double rate) override;
    std::unique_ptr<DeviceStream> openStream(const StreamRequest &request, StreamClient &client) override;
    bool makeAggregate(const AggregateSpec &spec) override;
    void removeAggregate(const QString &uid) override;
    void subscribe(std::function<void()> changed) override;

    // --- The world around the devices ---
    // A description to plug in: stereo, 48 kHz, 512 frames a cycle, volume and mute on its sides.
    static SoftwareDevice plainDevice(const QString &uid, const QString &name, int inputChannels, int outputChannels);
    static SoftwareDevice loopbackDevice(const QString &name);
    void plug(SoftwareDevice device);
    void unplug(const QString &uid);
    void setSource(const QString &uid, SoundSource source);
    void setTap(const QString &uid, SoundTap tap);
    // Its streams stop delivering sound without saying so, and no new stream can be opened.
    void stall(const QString &uid, bool stalls);
    // As where no sound server answers: there are no devices, and streams end.
    void loseServer(bool lost);
    // Without the part of a server that keeps choices, which are what they were when it is back.
    void keepDefaults(bool keep);
    // Another program that plays: to the device, or with an empty UID to the default output wherever that is. Ends with
    // the handle.
    [[nodiscard]] std::shared_ptr<void> play(SoundSource program, const QString &uid = {});

private:
    class Stream;
    struct Program {
        SoundSource sound;
        QString uid;
        std::int64_t position = 0;
    };

    foundation::Clock::Duration turn(foundation::Clock::Duration now);
    void beginIfIdle();
    void runCycle(SoftwareDevice &device, foundation::Clock::Duration now);
    void playInto(SoftwareDevice &device, std::uint32_t frames);
    void readFrom(SoftwareDevice &device, std::uint32_t frames, std::uint64_t hostTime);
    void runStream(SoftwareStream &stream, const float *input, float *output, std::uint32_t frames,
                   std::uint64_t hostTime) noexcept;
    void close(SoftwareStream *stream);
    SoftwareDevice *find(const QString &uid) const;
    bool isComplete(const SoftwareDevice &device) const;
    QString defaultUid(Direction direction) const;
    void widenAggregates();
    void refreshLoopback() const;
    void announce() const;
    void worldChanged();
    bool isThere(const QString &uid) const;
    int inputChannelsOf(const QString &uid) const;
    std::vector<float> lastHeard(const QString &uid) const;

    std::shared_ptr<DeviceClock> mClock;
    const std::function<bool()> mLoopbackInstalled;
    const QString mLoopbackName;
    // Held during a turn, so that a stream that is closed has had its last cycle.
    mutable std::recursive_mutex mMutex;
    mutable std::vector<std::unique_ptr<SoftwareDevice>> mDevices;
    std::vector<std::unique_ptr<SoftwareStream>> mStreams;
    std::vector<std::shared_ptr<Program>> mPrograms;
    std::optional<QString> mConfigured[2];
    bool mKeepsDefaults = true;
    bool mServerIsLost = false;
    QString mMonitored; // the default output as known last
    // Held while the listener is told, so that ending the subscription waits for it.
    mutable std::recursive_mutex mListenerMutex;
    std::function<void()> mChanged;
};

} // namespace cantorel::hal

#include "platform/hal/embedded/EmbeddedBackend.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace cantorel::hal {

using foundation::Clock;

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

constexpr double kRate = 48000;
constexpr std::uint32_t kCycleFrames = 512;

DeviceSide plainSide(int channels) {
    DeviceSide side;
    side.channels = channels;
    side.gains.assign(static_cast<std::size_t>(channels), 1.0f);
    side.canMute = channels > 0;
    return side;
}

// Devices take their turns in this order within one moment: what is played into a loopback device comes first, so that
// all who read it, and the devices that they play into, have it in the same cycle.
int orderOf(const SoftwareDevice &device) {
    if (device.record.isLoopback)
        return 0;
    if (!device.members.empty())
        return 2;
    return device.record.input.channels > 0 ? 1 : 3;
}

std::size_t index(Direction direction) { return direction == Direction::Input ? 0 : 1; }

} // namespace

// The handle of a stream: closing it waits for the turn that may be under way.
class EmbeddedBackend::Stream : public DeviceStream {
public:
    Stream(EmbeddedBackend &backend, SoftwareStream *stream) : mBackend(backend), mStream(stream) {}
    ~Stream() override { mBackend.close(mStream); }
    SoftwareStream *get() const { return mStream; }

private:
    EmbeddedBackend &mBackend;
    SoftwareStream *mStream;
};

EmbeddedBackend::EmbeddedBackend(std::shared_ptr<DeviceClock> clock, std::function<bool()> loopbackInstalled,
                                 QString loopbackName)
    : mClock(std::move(clock)),
      mLoopbackInstalled(std::move(loopbackInstalled)),
      mLoopbackName(std::move(loopbackName)) {
    SoftwareDevice microphone =
        plainDevice(QStringLiteral("builtin_microphone"), QStringLiteral("Built-in Microphone"), 2, 0);
    // A soft tone, so that a recording of it is not silence.
    microphone.source = [](std::span<float> samples, int channels, std::int64_t position) {
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const auto frame =
                static_cast<double>(position) + static_cast<double>(i / static_cast<std::size_t>(channels));
            samples[i] = static_cast<float>(0.05 * std::sin(2 * std::numbers::pi * 440 * frame / kRate));
        }
    };
    plug(plainDevice(QStringLiteral("builtin_output"), QStringLiteral("Built-in Output"), 0, 2));
    plug(std::move(microphone));
    mClock->start([this](Clock::Duration now) { return turn(now); });
}

EmbeddedBackend::~EmbeddedBackend() { mClock->stop(); }

SoftwareDevice EmbeddedBackend::plainDevice(const QString &uid, const QString &name, int inputChannels,
                                            int outputChannels) {
    SoftwareDevice device;
    device.record.uid = uid;
    device.record.name = name;
    device.record.sampleRate = kRate;
    device.record.cycleFrames = kCycleFrames;
    device.record.input = plainSide(inputChannels);
    device.record.output = plainSide(outputChannels);
    device.rates = {44100, 48000, 96000};
    return device;
}

SoftwareDevice EmbeddedBackend::loopbackDevice(const QString &name) {
    SoftwareDevice device = plainDevice(name, name, 2, 2);
    device.record.isLoopback = true;
    device.record.input.gains.clear(); // Its loudness is that of its output side, and never touches what is recorded.
    device.record.input.canMute = false;
    return device;
}

SoftwareDevice *EmbeddedBackend::find(const QString &uid) const {
    for (const auto &device : mDevices) {
        if (device->record.uid == uid)
            return device.get();
    }
    return nullptr;
}

bool EmbeddedBackend::isComplete(const SoftwareDevice &device) const {
    return device.members.empty()
           || (!device.widths.empty()
               && std::any_of(device.members.begin(), device.members.end(),
                              [this](const QString &uid) { return isThere(uid); }));
}

bool EmbeddedBackend::isThere(const QString &uid) const {
    if (uid == QLatin1String(kOutputMonitorUid))
        return !defaultUid(Direction::Output).isEmpty();
    const SoftwareDevice *device = mServerIsLost ? nullptr : find(uid);
    return device && isComplete(*device);
}

int EmbeddedBackend::inputChannelsOf(const QString &uid) const {
    if (uid == QLatin1String(kOutputMonitorUid))
        return kOutputMonitorChannels;
    const SoftwareDevice *device = find(uid);
    return device ? device->record.input.channels : 0;
}

void EmbeddedBackend::announce() const {
    const Lock lock(mListenerMutex);
    if (mChanged)
        mChanged();
}

void EmbeddedBackend::refreshLoopback() const {
    if (!mLoopbackInstalled)
        return;
    auto &self = const_cast<EmbeddedBackend &>(*this); // Looking is what finds the device.
    const bool installed = mLoopbackInstalled();
    if (installed && !find(mLoopbackName))
        self.plug(loopbackDevice(mLoopbackName));
    else if (!installed && find(mLoopbackName))
        self.unplug(mLoopbackName);
}

std::vector<DeviceRecord> EmbeddedBackend::devices() const {
    refreshLoopback();
    const Lock lock(mMutex);
    std::vector<DeviceRecord> records;
    for (const auto &device : mDevices) {
        if (isThere(device->record.uid))
            records.push_back(device->record);
    }
    return records;
}

QString EmbeddedBackend::defaultUid(Direction direction) const {
    if (mServerIsLost)
        return {};
    const auto fits = [&](const SoftwareDevice &device) {
        return (direction == Direction::Input ? device.record.input : device.record.output).channels > 0;
    };
    if (const auto &choice = mConfigured[index(direction)]) {
        if (const SoftwareDevice *chosen = find(*choice); chosen && fits(*chosen))
            return *choice;
    }
    for (const auto &device : mDevices) {
        if (fits(*device) && !device->record.isLoopback && device->members.empty())
            return device->record.uid;
    }
    return {};
}

QString EmbeddedBackend::defaultDevice(Direction direction) const {
    const Lock lock(mMutex);
    return defaultUid(direction);
}

std::optional<QString> EmbeddedBackend::configuredDefault(Direction direction) const {
    const Lock lock(mMutex);
    return keepsDefaults() ? mConfigured[index(direction)] : std::nullopt;
}

bool EmbeddedBackend::keepsDefaults() const {
    const Lock lock(mMutex);
    return mKeepsDefaults && !mServerIsLost;
}

void EmbeddedBackend::keepDefaults(bool keep) {
    {
        const Lock lock(mMutex);
        mKeepsDefaults = keep;
    }
    announce();
}

bool EmbeddedBackend::setConfiguredDefault(Direction direction, const DefaultSetting &setting,
                                           const std::optional<DefaultSetting> &) {
    {
        const Lock lock(mMutex);
        if (!keepsDefaults())
            return false;
        mConfigured[index(direction)] = setting.choice;
    }
    worldChanged();
    return true;
}

bool EmbeddedBackend::setGains(const QString &uid, Direction direction, const std::vector<float> &gains) {
    {
        const Lock lock(mMutex);
        SoftwareDevice *device = find(uid);
        if (!device)
            return false;
        DeviceSide &side = direction == Direction::Input ? device->record.input : device->record.output;
        if (side.gains.size() != gains.size())
            return false;
        side.gains = gains;
    }
    announce();
    return true;
}

bool EmbeddedBackend::setMuted(const QString &uid, Direction direction, bool muted) {
    {
        const Lock lock(mMutex);
        SoftwareDevice *device = find(uid);
        if (!device)
            return false;
        DeviceSide &side = direction == Direction::Input ? device->record.input : device->record.output;
        if (!side.canMute)
            return false;
        side.muted = muted;
    }
    announce();
    return true;
}

bool EmbeddedBackend::setSampleRate(const QString &uid, double rate) {
    {
        const Lock lock(mMutex);
        SoftwareDevice *device = find(uid);
        if (!device || std::find(device->rates.begin(), device->rates.end(), rate) == device->rates.end())
            return false;
        device->record.sampleRate = rate;
        device->start = mClock->now();
        device->position = 0;
    }
    announce();
    return true;
}

std::unique_ptr<DeviceStream> EmbeddedBackend::openStream(const StreamRequest &request, StreamClient &client) {
    SoftwareStream *opened = nullptr;
    {
        const Lock lock(mMutex);
        const bool isMonitor = request.uid == QLatin1String(kOutputMonitorUid);
        const SoftwareDevice *device = find(isMonitor ? defaultUid(Direction::Output) : request.uid);
        if (!device || device->stalls || !isThere(request.uid) || (request.input && inputChannelsOf(request.uid) == 0)
            || (request.output && (isMonitor || device->record.output.channels == 0)))
            return nullptr;
        auto stream = std::make_unique<SoftwareStream>();
        stream->uid = request.uid;
        stream->input = request.input;
        stream->output = request.output;
        stream->client = &client;
        stream->leader = request.leader ? static_cast<Stream *>(request.leader)->get() : nullptr;
        opened = stream.get();
        beginIfIdle();
        mStreams.push_back(std::move(stream));
    }
    mClock->wake();
    return std::make_unique<Stream>(*this, opened);
}

void EmbeddedBackend::close(SoftwareStream *stream) {
    const Lock lock(mMutex);
    for (const auto &other : mStreams) {
        if (other->leader == stream)
            other->leader = nullptr;
    }
    std::erase_if(mStreams, [&](const auto &other) { return other.get() == stream; });
}

bool EmbeddedBackend::makeAggregate(const AggregateSpec &spec) {
    refreshLoopback();
    SoftwareDevice device = plainDevice(spec.uid, spec.name, 0, 0);
    device.members.assign(spec.subDeviceUids.begin(), spec.subDeviceUids.end());
    {
        const Lock lock(mMutex);
        if (const SoftwareDevice *master = find(spec.masterUid))
            device.record.sampleRate = master->record.sampleRate;
        std::erase_if(mDevices, [&](const auto &old) { return old->record.uid == spec.uid; });
    }
    plug(std::move(device));
    const Lock lock(mMutex);
    return isThere(spec.uid);
}

void EmbeddedBackend::removeAggregate(const QString &uid) { unplug(uid); }

void EmbeddedBackend::subscribe(std::function<void()> changed) {
    const Lock lock(mListenerMutex);
    mChanged = std::move(changed);
}

void EmbeddedBackend::plug(SoftwareDevice device) {
    {
        const Lock lock(mMutex);
        device.start = mClock->now();
        mDevices.push_back(std::make_unique<SoftwareDevice>(std::move(device)));
        std::stable_sort(mDevices.begin(), mDevices.end(),
                         [](const auto &a, const auto &b) { return orderOf(*a) < orderOf(*b); });
        widenAggregates();
    }
    worldChanged();
    mClock->wake();
}

void EmbeddedBackend::widenAggregates() {
    for (const auto &device : mDevices) {
        const auto isMemberThere = [this](const QString &uid) { return isThere(uid); };
        if (!device->widths.empty() || !std::all_of(device->members.begin(), device->members.end(), isMemberThere))
            continue;
        for (const QString &member : device->members) {
            device->widths.push_back(inputChannelsOf(member));
            device->record.input.channels += device->widths.back();
        }
    }
}

void EmbeddedBackend::unplug(const QString &uid) {
    {
        const Lock lock(mMutex);
        std::erase_if(mDevices, [&](const auto &device) { return device->record.uid == uid; });
    }
    worldChanged();
}

void EmbeddedBackend::loseServer(bool lost) {
    {
        const Lock lock(mMutex);
        mServerIsLost = lost;
    }
    worldChanged();
}

foundation::Result<void> EmbeddedBackend::reach(Clock::Duration) {
    const Lock lock(mMutex);
    if (!mServerIsLost)
        return {};
    return foundation::Failure{QStringLiteral("The software devices are away."), QStringLiteral("away")};
}

// Ends the streams of what is not there any more, and those of the monitor when another output is the default.
void EmbeddedBackend::worldChanged() {
    std::vector<StreamClient *> orphans;
    {
        const Lock lock(mMutex);
        const QString before = std::exchange(mMonitored, defaultUid(Direction::Output));
        for (const auto &stream : mStreams) {
            const bool moved = stream->uid == QLatin1String(kOutputMonitorUid) && before != mMonitored;
            if (!stream->ended && (moved || !isThere(stream->uid))) {
                stream->ended = true;
                orphans.push_back(stream->client);
            }
        }
    }
    for (StreamClient *client : orphans)
        client->ended();
    announce();
}

void EmbeddedBackend::stall(const QString &uid, bool stalls) {
    const Lock lock(mMutex);
    if (SoftwareDevice *device = find(uid))
        device->stalls = stalls;
}

void EmbeddedBackend::setSource(const QString &uid, SoundSource source) {
    const Lock lock(mMutex);
    if (SoftwareDevice *device = find(uid))
        device->source = std::move(source);
}

void EmbeddedBackend::setTap(const QString &uid, SoundTap tap) {
    const Lock lock(mMutex);
    if (SoftwareDevice *device = find(uid))
        device->tap = std::move(tap);
}

std::shared_ptr<void> EmbeddedBackend::play(SoundSource program, const QString &uid) {
    auto playing = std::make_shared<Program>(Program{std::move(program), uid});
    {
        const Lock lock(mMutex);
        beginIfIdle();
        mPrograms.push_back(playing);
    }
    mClock->wake();
    return std::shared_ptr<void>(playing.get(), [this](void *ended) {
        const Lock lock(mMutex);
        std::erase_if(mPrograms, [&](const auto &other) { return other.get() == ended; });
    });
}

} // namespace cantorel::hal

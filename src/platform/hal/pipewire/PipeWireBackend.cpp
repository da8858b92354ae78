#include "platform/hal/pipewire/PipeWireBackend.h"

#include "platform/foundation/SearchPaths.h"

#include <QFile>

#include <pthread.h>
#include <spa/debug/types.h>
#include <spa/param/audio/raw.h>
#include <spa/param/audio/type-info.h>

#include <algorithm>
#include <cmath>

namespace cantorel::hal {

using foundation::Clock;
using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kNoRuntimeFolder("NoRuntimeFolder");
constexpr foundation::SentenceKey kNoSoundServer("NoSoundServer");
constexpr foundation::SentenceKey kSoundElsewhere("SoundElsewhere");
constexpr foundation::SentenceKey kSoundServerMute("SoundServerMute");

// A server is looked for again after a tenth of the time that it has been away for, within these bounds.
constexpr std::chrono::nanoseconds kShortestPause = std::chrono::milliseconds(100);
constexpr std::chrono::nanoseconds kLongestPause = std::chrono::seconds(1);
constexpr auto kSettlePatience = std::chrono::seconds(2);
constexpr auto kNewsPatience = std::chrono::milliseconds(200);
constexpr int kAttempts = 15;
constexpr auto kNewcomerPause = std::chrono::milliseconds(100); // by then it has introduced itself

bool hasRuntimeFolder() {
    return !qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR") || !qEnvironmentVariableIsEmpty("PIPEWIRE_RUNTIME_DIR");
}

std::uint32_t channelNumber(const QString &name) {
    for (const spa_type_info *info = spa_type_audio_channel; info->name; ++info) {
        if (name == QLatin1String(spa_debug_type_short_name(info->name)))
            return info->type;
    }
    return SPA_AUDIO_CHANNEL_UNKNOWN;
}

} // namespace

PipeWireBackend::PipeWireBackend(QStringList loopbackNames) : mLoopbackNames(std::move(loopbackNames)) {
    pw_init(nullptr, nullptr);
    mLoop.reset(pw_thread_loop_new("pipewire-loop", nullptr));
    makeContext();
    pw_thread_loop_start(mLoop.get());
    mKeeper = std::jthread([this](const std::stop_token &stopping) { keep(stopping); });
}

PipeWireBackend::~PipeWireBackend() {
    subscribe({});
    mKeeper.request_stop();
    mKeeper.join();
    {
        const LoopLock lock(mLoop.get());
        dropServer();
        mContext.reset();
    }
    pw_thread_loop_stop(mLoop.get());
}

// This configuration alone has the module that makes the data thread a real-time one.
void PipeWireBackend::makeContext() {
    mContext.reset(pw_context_new(pw_thread_loop_get_loop(mLoop.get()),
                                  pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0));
}

Result<std::unique_ptr<PipeWireBackend>> PipeWireBackend::connect(Clock::Duration patience,
                                                                  const QStringList &loopbackNames) {
    auto backend = std::make_unique<PipeWireBackend>(loopbackNames);
    if (const auto reached = backend->reach(patience); !reached)
        return reached.failure();
    return backend;
}

Result<void> PipeWireBackend::reach(Clock::Duration patience) {
    const bool waits = patience > Clock::Duration::zero();
    if (waits)
        graphChanged(); // The keeper looks at once.
    const LoopLock lock(mLoop.get());
    if (waits && hasRuntimeFolder())
        (void)waitUntil([this] { return carriesSound() || !mContext; }, patience);
    return carriesSound() ? Result<void>() : explain();
}

Failure PipeWireBackend::explain() const {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString ours = qEnvironmentVariable("PIPEWIRE_RUNTIME_DIR", runtime);
    if (!hasRuntimeFolder())
        return {kNoRuntimeFolder(), QStringLiteral("XDG_RUNTIME_DIR is not set")};
    // Without any configuration the library is here alone, and no server.
    const QString own = foundation::configurationFolder() + QStringLiteral("/pipewire/client-rt.conf");
    if (!mContext && QFile::exists(own))
        return {QStringLiteral("PipeWire can't be used because its configuration \"%1\" is damaged; mend or remove it.")
                    .arg(own),
                QStringLiteral("no context")};
    const bool pulse = QFile::exists(runtime + QStringLiteral("/pulse/native"));
    if (!QFile::exists(ours + QStringLiteral("/pipewire-0")) && !pulse)
        return {kNoSoundServer(), QStringLiteral("no socket in ") + ours};
    if (pulse)
        return {kSoundElsewhere(), QStringLiteral("a PulseAudio socket, and no sound devices on PipeWire")};
    return {kSoundServerMute(), QStringLiteral("no session manager or no device on PipeWire")};
}

bool PipeWireBackend::open(Connection &connection) {
    static const pw_core_events events = [] {
        pw_core_events table = {};
        table.version = PW_VERSION_CORE_EVENTS;
        table.error = onCoreError;
        return table;
    }();
    connection.core.reset(pw_context_connect(mContext.get(), nullptr, 0));
    if (connection.core)
        pw_core_add_listener(connection.core.get(), &connection.hook.hook, &events, this);
    return connection.core != nullptr;
}

bool PipeWireBackend::connectToServer() {
    mLost = false;
    if (!mContext)
        makeContext();
    if (!mContext || !open(mQuestions)) {
        if (mContext && errno == ENOTSUP) // It names none of the modules that speak to a server.
            mContext.reset();
        pw_thread_loop_signal(mLoop.get(), false);
        return false;
    }
    mGraph = std::make_unique<PipeWireGraph>(mQuestions.core.get(), mLoopbackNames, [this] { graphChanged(); });
    return true;
}

void PipeWireBackend::dropServer() {
    for (PipeWireStream *stream : mStreams)
        stream->detach();
    mAggregates.forgetServer();
    mGraph.reset();
    for (Connection *connection : {&mSound, &mQuestions}) {
        connection->hook.remove();
        connection->core.reset();
    }
    mLost = false;
}

void PipeWireBackend::onCoreError(void *data, std::uint32_t id, int, int result, const char *) {
    // Every other error belongs to a request that went wrong and concerns nobody else.
    if (id != PW_ID_CORE || result != -EPIPE)
        return;
    auto *self = static_cast<PipeWireBackend *>(data);
    self->mLost = true;
    for (PipeWireStream *stream : self->mStreams)
        stream->end();
    self->graphChanged();
}

bool PipeWireBackend::carriesSound() const {
    return mGraph && !mLost && mGraph->hasDefaults() && (mGraph->hasSettled() || !mGraph->devices().empty());
}

bool PipeWireBackend::waitUntil(const std::function<bool()> &condition, Clock::Duration patience) const {
    timespec end = {};
    pw_thread_loop_get_time(mLoop.get(), &end, std::max<std::int64_t>(patience.count(), 0));
    while (!condition()) {
        if (pw_thread_loop_timed_wait_full(mLoop.get(), &end) < 0)
            return condition();
    }
    return true;
}

bool PipeWireBackend::waitForDefaults(const std::function<bool()> &condition) const {
    const auto settled = [&] { return !mGraph || mLost || condition(); };
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (waitUntil(settled, kNewsPatience))
            return true;
        mGraph->refreshDefaults();
    }
    return false;
}

void PipeWireBackend::graphChanged() {
    pw_thread_loop_signal(mLoop.get(), false);
    {
        const std::lock_guard lock(mKeeperMutex);
        mChangedPending = true;
    }
    mKeeperWake.notify_all();
}

void PipeWireBackend::streamChanged() { pw_thread_loop_signal(mLoop.get(), false); }

void PipeWireBackend::report(PipeWireStream &stream) {
    {
        const std::lock_guard lock(mKeeperMutex);
        mEndedPending.push_back(&stream);
    }
    mKeeperWake.notify_all();
}

void PipeWireBackend::forget(PipeWireStream &stream) {
    mStreams.erase(&stream);
    if (mStreams.empty() && mGraph)
        mGraph->observe(0, 0);
    std::unique_lock lock(mKeeperMutex);
    std::erase(mEndedPending, &stream);
    mKeeperWake.wait(lock, [&] { return mTelling != &stream; });
}

void PipeWireBackend::keep(const std::stop_token &stopping) {
    pthread_setname_np(pthread_self(), "pipewire-keeper");
    using Moment = std::chrono::steady_clock::time_point;
    constexpr Moment kNever = Moment::max();
    // When to look for the server again, and to ask for what may have been missed.
    Moment awaySince = std::chrono::steady_clock::now();
    Moment retry = awaySince, refresh = kNever;
    while (!stopping.stop_requested()) {
        bool changed = false;
        {
            std::unique_lock lock(mKeeperMutex);
            const auto pending = [this] { return mChangedPending || !mEndedPending.empty(); };
            if (const Moment next = std::min(retry, refresh); next != kNever)
                (void)mKeeperWake.wait_until(lock, stopping, next, pending);
            else
                mKeeperWake.wait(lock, stopping, pending);
            changed = std::exchange(mChangedPending, false);
        }
        const Moment now = std::chrono::steady_clock::now();
        const auto isDue = [now](Moment &moment) {
            const bool due = moment <= now;
            moment = due ? Moment::max() : moment;
            return due;
        };
        if (isDue(retry) || changed) {
            const LoopLock lock(mLoop.get());
            if (mLost) {
                dropServer();
                awaySince = now;
            }
            // Nothing tells when a damaged configuration is mended; who asks for a server has it read again.
            if (!mQuestions.core && !connectToServer() && mContext)
                retry = now + std::clamp((now - awaySince) / 10, kShortestPause, kLongestPause);
            if (mGraph) {
                mAggregates.maintain(*mGraph);
                for (PipeWireStream *stream : mStreams) {
                    stream->endIfUnlinked(*mGraph);
                    stream->endIfDefaultMoved(*mGraph);
                }
                if (mGraph->takeNewcomer())
                    refresh = std::min(refresh, now + kNewcomerPause);
            }
        }
        if (isDue(refresh)) {
            const LoopLock lock(mLoop.get());
            if (mGraph)
                mGraph->refreshDefaults();
        }
        tellEndings();
        if (changed) {
            const std::lock_guard lock(mSubscriberMutex);
            if (mSubscriber)
                mSubscriber();
        }
    }
}

void PipeWireBackend::tellEndings() {
    while (true) {
        PipeWireStream *stream = nullptr;
        {
            const std::lock_guard lock(mKeeperMutex);
            if (mEndedPending.empty())
                return;
            stream = mEndedPending.back();
            mEndedPending.pop_back();
            mTelling = stream;
        }
        stream->client().ended();
        {
            const std::lock_guard lock(mKeeperMutex);
            mTelling = nullptr;
        }
        mKeeperWake.notify_all();
    }
}

std::vector<DeviceRecord> PipeWireBackend::devices() const {
    const LoopLock lock(mLoop.get());
    if (!mGraph || mLost)
        return {};
    for (const PipeWireStream *stream : mStreams) {
        if (stream->observedFrames() > 0)
            mGraph->observe(stream->observedRate(), stream->observedFrames());
    }
    return mGraph->devices();
}

QString PipeWireBackend::defaultDevice(Direction direction) const {
    const LoopLock lock(mLoop.get());
    return mGraph && !mLost ? mGraph->defaultInForce(direction) : QString();
}

bool PipeWireBackend::keepsDefaults() const {
    const LoopLock lock(mLoop.get());
    return mGraph && !mLost && mGraph->hasDefaults() && mGraph->hasSettled();
}

std::optional<QString> PipeWireBackend::configuredDefault(Direction direction) const {
    const LoopLock lock(mLoop.get());
    return mGraph && !mLost ? mGraph->configuredDefault(direction) : std::nullopt;
}

bool PipeWireBackend::setConfiguredDefault(Direction direction, const DefaultSetting &setting,
                                           const std::optional<DefaultSetting> &guard) {
    GuardChild &child = mGuards[direction == Direction::Input ? 0 : 1];
    // The guard stands before the choice is displaced, and until it is back.
    if (guard && setting.choice && !child.arm(direction, *setting.choice, *guard))
        return false;
    bool done = false;
    {
        const LoopLock lock(mLoop.get());
        const auto alive = [this] { return mGraph && !mLost; };
        // The session manager keeps its pick when a choice is taken away: what shall be in force is chosen first.
        const QString &device = setting.device;
        const bool present = alive() && !device.isEmpty() && mGraph->nodeNamed(device);
        done = alive() && (!present || (mGraph->setConfiguredDefault(direction, device) && waitForDefaults([&] {
                                            return mGraph->defaultInForce(direction) == device;
                                        })));
        if (done && alive() && (!present || setting.choice != device))
            done = mGraph->setConfiguredDefault(direction, setting.choice);
        done =
            done && waitForDefaults([&] { return mGraph->configuredDefault(direction) == setting.choice; }) && alive();
    }
    if (!guard)
        child.disarm();
    return done;
}

bool PipeWireBackend::change(const std::function<bool(PipeWireGraph &)> &action) {
    bool done = false;
    {
        const LoopLock lock(mLoop.get());
        done = mGraph && !mLost && action(*mGraph);
    }
    if (done)
        graphChanged();
    return done;
}

bool PipeWireBackend::setGains(const QString &uid, Direction direction, const std::vector<float> &gains) {
    return change([&](PipeWireGraph &graph) { return graph.setGains(uid, direction, gains); });
}

bool PipeWireBackend::setMuted(const QString &uid, Direction direction, bool muted) {
    return change([&](PipeWireGraph &graph) { return graph.setMuted(uid, direction, muted); });
}

bool PipeWireBackend::setSampleRate(const QString &, double rate) {
    // One rate for the whole graph, which is the person's to choose: every device has it, and no other.
    const LoopLock lock(mLoop.get());
    return mGraph && mGraph->rate() == rate;
}

std::unique_ptr<DeviceStream> PipeWireBackend::openStream(const StreamRequest &request, StreamClient &client) {
    const LoopLock lock(mLoop.get());
    // Without a session manager nobody would link it.
    const bool canLink = mGraph && !mLost && mGraph->hasDefaults();
    const GraphNode *node = canLink ? mGraph->nodeBehind(request.uid) : nullptr;
    const bool isMonitor = request.uid == QLatin1String(kOutputMonitorUid);
    if (!node || (request.input && node->isSink() && !node->isLoopback && !isMonitor)
        || (request.output && (isMonitor || !node->isSink())))
        return nullptr;
    PipeWireStream::Target target;
    target.nodeName = node->name;
    target.captureMonitor = node->isSink();
    target.followsDefault = isMonitor;
    target.rate = mGraph->rate();
    // While players move to another output, which both follow, a change of the cycle would leave them silent there.
    target.frames = isMonitor || mAggregates.joins(request.uid, kOutputMonitorUid) ? 0 : request.preferredCycleFrames;
    target.input = request.input;
    target.output = request.output;
    for (const GraphPort &port : mGraph->portsOf(node->id, node->isSink()))
        target.positions.push_back(channelNumber(port.channel));
    target.ports = target.positions.size();
    if (target.ports == 0 || (!mSound.core && !open(mSound)))
        return nullptr;
    if (isMonitor)
        target.positions = {SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_FR};

    auto stream = std::make_unique<PipeWireStream>(*this, mSound.core.get(), std::move(target), client,
                                                   static_cast<PipeWireStream *>(request.leader));
    mStreams.insert(stream.get());
    const bool decided =
        waitUntil([&] { return stream->streaming() || stream->hasEnded() || mLost; }, request.patience);
    if (!decided || stream->hasEnded() || mLost) {
        stream.reset();
        return nullptr;
    }
    return stream;
}

bool PipeWireBackend::makeAggregate(const AggregateSpec &spec) {
    const LoopLock lock(mLoop.get());
    mAggregates.put(spec);
    if (!mGraph || mLost)
        return false;
    return waitUntil(
        [&] {
            if (!mGraph || mLost)
                return false;
            mAggregates.maintain(*mGraph);
            const GraphNode *node = mGraph->nodeNamed(spec.uid);
            return node && mAggregates.isComplete(spec.uid);
        },
        kSettlePatience);
}

void PipeWireBackend::removeAggregate(const QString &uid) {
    const LoopLock lock(mLoop.get());
    mAggregates.remove(uid);
    (void)waitUntil([&] { return !mGraph || mLost || !mGraph->nodeNamed(uid); }, kSettlePatience);
}

void PipeWireBackend::subscribe(std::function<void()> changed) {
    const std::lock_guard lock(mSubscriberMutex);
    mSubscriber = std::move(changed);
}

} // namespace cantorel::hal

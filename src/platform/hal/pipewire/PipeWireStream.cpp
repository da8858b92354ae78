#include "platform/hal/pipewire/PipeWireStream.h"

#include "platform/hal/pipewire/PipeWireBackend.h"

#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <thread>
#include <utility>

namespace cantorel::hal {

namespace {

constexpr std::uint32_t kMaxCycleFrames = 8192;

// All streams of the program share a driver, so that their cycles are one.
QByteArray groupName() { return "cantorel-" + QByteArray::number(getpid()); }

} // namespace

PipeWireStream::PipeWireStream(PipeWireBackend &backend, pw_core *core, Target target, StreamClient &client,
                               PipeWireStream *leader)
    : mBackend(backend), mCore(core), mTarget(std::move(target)), mClient(client) {
    for (Half *half : {&mCapture, &mPlayback})
        half->owner = this;
    mCapture.isCapture = true;
    if (mTarget.input && mTarget.output)
        mInput.resize(kMaxCycleFrames * mTarget.positions.size());
    // A stream with both halves follows itself: its capture half alone triggers the other, and only while that runs.
    mLeader = mTarget.input && mTarget.output ? this : leader;
    if (mTarget.output)
        connect(mPlayback, core, mLeader != nullptr);
    if (mTarget.input)
        connect(mCapture, core, false);
}

PipeWireStream::~PipeWireStream() {
    const LoopLock lock(mBackend.mLoop.get());
    mBackend.forget(*this);
    detach();
}

void PipeWireStream::detach() {
    mLeaving = true;
    unfollow();
    for (PipeWireStream *other : mBackend.mStreams) {
        if (other->mLeader == this)
            other->loseLeader();
    }
    for (Half *half : {&mCapture, &mPlayback})
        close(*half);
}

// Disconnecting waits for the real-time thread to leave the stream; what that thread uses goes only then.
void PipeWireStream::close(Half &half) {
    if (half.stream)
        pw_stream_disconnect(half.stream.get());
    half.hook.remove();
    half.stream.reset();
    half.running = half.linked = false;
}

// Only a stream that runs may be triggered: the library's side of one that comes or goes is not complete.
void PipeWireStream::letLeaderTrigger(bool trigger) {
    if (!mLeader)
        return;
    const auto slotOf = [this](PipeWireStream *content) {
        return std::find_if(mLeader->mFollowers.begin(), mLeader->mFollowers.end(),
                            [&](const auto &slot) { return slot.load() == content; });
    };
    const auto mine = slotOf(this);
    const bool triggered = mine != mLeader->mFollowers.end();
    if (trigger && !triggered) {
        if (const auto room = slotOf(nullptr); room != mLeader->mFollowers.end())
            room->store(this);
    } else if (!trigger && triggered) {
        mine->store(nullptr);
        while (mLeader->mInCycle.load())
            std::this_thread::yield();
    }
}

void PipeWireStream::unfollow() {
    letLeaderTrigger(false);
    mLeader = nullptr;
}

void PipeWireStream::loseLeader() {
    unfollow();
    if (mLeaving || mEnded || !mPlayback.stream)
        return;
    // Without the trigger flag, which only counts when connecting.
    mLeaving = true;
    close(mPlayback);
    mLeaving = false;
    connect(mPlayback, mCore, false);
}

void PipeWireStream::connect(Half &half, pw_core *core, bool triggered) {
    static const pw_stream_events events = [] {
        pw_stream_events table = {};
        table.version = PW_VERSION_STREAM_EVENTS;
        table.state_changed = onState;
        table.io_changed = onIoChanged;
        table.process = onProcess;
        return table;
    }();
    const char *purpose = half.isCapture ? "Capture" : "Playback";
    pw_properties *properties = pw_properties_new(
        PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, purpose, PW_KEY_NODE_NAME,
        half.isCapture ? "cantorel-capture" : "cantorel-playback", PW_KEY_NODE_DESCRIPTION, "Cantorel", PW_KEY_APP_NAME,
        "Cantorel", PW_KEY_TARGET_OBJECT, mTarget.nodeName.toUtf8().constData(), PW_KEY_NODE_LOCK_QUANTUM, "true",
        PW_KEY_NODE_DONT_RECONNECT, "true", PW_KEY_NODE_GROUP, groupName().constData(), nullptr);
    if (mTarget.frames > 0)
        pw_properties_setf(properties, PW_KEY_NODE_LATENCY, "%u/%u", mTarget.frames,
                           static_cast<unsigned>(mTarget.rate));
    // Outputs that take each other's place may have other channels.
    if (!mTarget.followsDefault)
        pw_properties_set(properties, PW_KEY_STREAM_DONT_REMIX, "true");
    if (half.isCapture && mTarget.captureMonitor)
        pw_properties_set(properties, PW_KEY_STREAM_CAPTURE_SINK, "true");
    half.position.store(nullptr);
    half.stream.reset(pw_stream_new(core, half.isCapture ? "Cantorel capture" : "Cantorel playback", properties));
    if (!half.stream)
        return;
    half.live = half.stream.get();
    pw_stream_add_listener(half.stream.get(), &half.hook.hook, &events, &half);

    spa_audio_info_raw format = {};
    format.format = SPA_AUDIO_FORMAT_F32; // rate 0: that of the graph
    format.channels = static_cast<std::uint32_t>(mTarget.positions.size());
    std::copy(mTarget.positions.begin(), mTarget.positions.end(), format.position);
    std::uint8_t room[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(room, sizeof room);
    const spa_pod *params[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format)};
    const auto flags =
        static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS
                                     | (triggered ? PW_STREAM_FLAG_TRIGGER : PW_STREAM_FLAG_NONE));
    pw_stream_connect(half.stream.get(), half.isCapture ? PW_DIRECTION_INPUT : PW_DIRECTION_OUTPUT, PW_ID_ANY, flags,
                      params, 1);
}

bool PipeWireStream::streaming() const {
    return (!mTarget.input || mCapture.running) && (!mTarget.output || mPlayback.running);
}

void PipeWireStream::end() {
    if (mEnded)
        return;
    mEnded = true;
    mBackend.report(*this);
}

void PipeWireStream::endIfUnlinked(const PipeWireGraph &graph) {
    for (Half *half : {&mCapture, &mPlayback}) {
        if (!half->running)
            continue;
        const bool was =
            std::exchange(half->linked, graph.linkedPortsOf(pw_stream_get_node_id(half->stream.get()), half->isCapture)
                                            >= mTarget.ports);
        if (was && !half->linked)
            end();
    }
}

void PipeWireStream::endIfDefaultMoved(const PipeWireGraph &graph) {
    const QString output = graph.defaultInForce(Direction::Output); // empty where the news is still on its way
    if (mTarget.followsDefault && !output.isEmpty() && output != mTarget.nodeName)
        end();
}

void PipeWireStream::onState(void *data, pw_stream_state, pw_stream_state state, const char *) {
    auto *half = static_cast<Half *>(data);
    PipeWireStream *self = half->owner;
    if (self->mLeaving)
        return;
    half->running = state == PW_STREAM_STATE_STREAMING;
    half->linked = half->linked && half->running;
    if (half == &self->mPlayback)
        self->letLeaderTrigger(half->running);
    if (half->running) {
        // The session manager may have restored a loudness that somebody once gave to a stream of ours.
        const std::vector<float> ones(self->mTarget.positions.size(), 1.0f);
        pw_stream_set_control(half->stream.get(), SPA_PROP_channelVolumes, static_cast<std::uint32_t>(ones.size()),
                              const_cast<float *>(ones.data()), 0);
        float unmuted = 0;
        pw_stream_set_control(half->stream.get(), SPA_PROP_mute, 1, &unmuted, 0);
    } else if (state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED) {
        self->end();
    }
    self->mBackend.streamChanged();
}

void PipeWireStream::onIoChanged(void *data, std::uint32_t id, void *area, std::uint32_t) {
    if (id == SPA_IO_Position)
        static_cast<Half *>(data)->position.store(static_cast<const spa_io_position *>(area));
}

void PipeWireStream::onProcess(void *data) {
    auto *half = static_cast<Half *>(data);
    if (half->isCapture)
        half->owner->capture();
    else
        half->owner->playback();
}

CycleTime PipeWireStream::timeOf(const Half &half, std::uint32_t frames) noexcept [[clang::nonblocking]] {
    CycleTime time;
    time.sampleTime = mPosition;
    if (const spa_io_position *position = half.position.load(std::memory_order_acquire)) {
        const spa_io_clock &clock = position->clock;
        time.hostTime = clock.nsec;
        // The driver's position jumps when the driver changes; within one driver a jump means lost cycles.
        time.discontinuity =
            mClockDuration > 0 && (clock.id != mClockId || clock.position != mClockPosition + mClockDuration);
        mClockId = clock.id;
        mClockPosition = clock.position;
        mClockDuration = clock.duration;
        mObservedRate.store(clock.rate.num > 0 ? double(clock.rate.denom) / clock.rate.num : 0,
                            std::memory_order_relaxed);
    }
    mObservedFrames.store(frames, std::memory_order_relaxed);
    mPosition += frames;
    return time;
}

void PipeWireStream::capture() noexcept [[clang::nonblocking]] {
    pw_buffer *buffer = pw_stream_dequeue_buffer(mCapture.live);
    if (!buffer)
        return;
    const spa_data &data = buffer->buffer->datas[0];
    const auto stride = static_cast<std::uint32_t>(mTarget.positions.size() * sizeof(float));
    const std::uint32_t offset = data.data ? std::min(data.chunk->offset, data.maxsize) : 0;
    const std::uint32_t bytes = data.data ? std::min(data.chunk->size, data.maxsize - offset) : 0;
    const std::uint32_t frames = std::min(bytes / stride, kMaxCycleFrames);
    if (frames > 0) {
        const auto *samples = reinterpret_cast<const float *>(static_cast<const std::byte *>(data.data) + offset);
        mInCycle.store(true);
        if (mTarget.output) {
            std::memcpy(mInput.data(), samples, std::size_t(frames) * stride);
            mInputFrames = frames;
        } else {
            mClient.cycle(timeOf(mCapture, frames), samples, nullptr, frames);
        }
        for (auto &slot : mFollowers) {
            if (PipeWireStream *follower = slot.load())
                pw_stream_trigger_process(follower->mPlayback.live);
        }
        mInCycle.store(false);
    }
    pw_stream_queue_buffer(mCapture.live, buffer);
}

void PipeWireStream::playback() noexcept [[clang::nonblocking]] {
    pw_buffer *buffer = pw_stream_dequeue_buffer(mPlayback.live);
    if (!buffer)
        return;
    spa_data &data = buffer->buffer->datas[0];
    const auto stride = static_cast<std::uint32_t>(mTarget.positions.size() * sizeof(float));
    std::uint32_t frames = data.data ? data.maxsize / stride : 0;
    if (buffer->requested > 0)
        frames = std::min<std::uint32_t>(frames, static_cast<std::uint32_t>(buffer->requested));
    frames = std::min(frames, kMaxCycleFrames);
    if (mTarget.input)
        frames = std::min(frames, mInputFrames);
    if (frames > 0) {
        auto *const samples = static_cast<float *>(data.data);
        for (std::size_t i = 0; i < std::size_t(frames) * mTarget.positions.size(); ++i)
            samples[i] = 0;
        mClient.cycle(timeOf(mTarget.input ? mCapture : mPlayback, frames), mTarget.input ? mInput.data() : nullptr,
                      samples, frames);
    }
    data.chunk->offset = 0;
    data.chunk->stride = static_cast<std::int32_t>(stride);
    data.chunk->size = frames * stride;
    pw_stream_queue_buffer(mPlayback.live, buffer);
}

} // namespace cantorel::hal

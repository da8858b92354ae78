#pragma once

#include "platform/hal/HardwareBackend.h"
#include "platform/pipewire/PipeWireHandles.h"

#include <spa/node/io.h>

#include <array>
#include <atomic>
#include <vector>

namespace cantorel::hal {

class PipeWireBackend;
class PipeWireGraph;

// One stream of the program: a capture stream, a playback stream, or both with the playback triggered by the capture.
// Made and destroyed with the loop locked; its process functions run on the client's one real-time thread
// "data-loop.0".
//
// Shared with that thread, without locks: the followers (atomic pointers; whoever takes one out waits until no capture
// cycle is under way) and the clock's place (an atomic pointer that the server moves). The counters belong to the
// real-time thread.
class PipeWireStream : public DeviceStream {
public:
    // What to connect to; a value.
    struct Target {
        QString nodeName;
        bool captureMonitor = false;          // the input side is a sink's monitor
        bool followsDefault = false;          // it shall be the default output's
        std::size_t ports = 0;                // that are linked while it runs
        std::vector<std::uint32_t> positions; // of the channels, SPA numbers
        double rate = 48000;
        std::uint32_t frames = 512; // wished for in a cycle; 0: whatever others wish
        bool input = false;
        bool output = false;
    };

    PipeWireStream(PipeWireBackend &backend, pw_core *core, Target target, StreamClient &client,
                   PipeWireStream *leader);
    ~PipeWireStream() override;

    bool connected() const { return mCapture.stream || mPlayback.stream; }
    // All parts run.
    bool streaming() const;
    bool hasEnded() const { return mEnded; }
    double observedRate() const { return mObservedRate.load(std::memory_order_relaxed); }
    std::uint32_t observedFrames() const { return mObservedFrames.load(std::memory_order_relaxed); }

    // Marks the stream as ended, once, and has its client told.
    void end();
    // Ends where a part that runs is not linked with its whole device any more. The server drives it on within the
    // program's group, on silence.
    void endIfUnlinked(const PipeWireGraph &graph);
    // Ends where another output than the one that it reads has become the default.
    void endIfDefaultMoved(const PipeWireGraph &graph);
    // Lets go of the server's objects; the connection is going away.
    void detach();
    // The leader is no more: go on by the own clock.
    void loseLeader();
    StreamClient &client() const { return mClient; }

private:
    struct Half {
        PipeWireStream *owner = nullptr;
        StreamHandle stream;
        pw_stream *live = nullptr; // the same, for the real-time thread: it stays while that thread may run
        Hook hook;
        bool isCapture = false;
        bool running = false;
        bool linked = false; // was seen to be, with its whole device
        std::atomic<const spa_io_position *> position{nullptr};
    };

    void connect(Half &half, pw_core *core, bool triggered);
    static void close(Half &half);
    void capture() noexcept [[clang::nonblocking]];
    void playback() noexcept [[clang::nonblocking]];
    CycleTime timeOf(const Half &half, std::uint32_t frames) noexcept [[clang::nonblocking]];
    void letLeaderTrigger(bool trigger);
    void unfollow();

    static void onState(void *data, pw_stream_state old, pw_stream_state state, const char *error);
    static void onIoChanged(void *data, std::uint32_t id, void *area, std::uint32_t size);
    static void onProcess(void *data);

    PipeWireBackend &mBackend;
    pw_core *mCore;
    const Target mTarget;
    StreamClient &mClient;
    Half mCapture;
    Half mPlayback;
    bool mEnded = false;
    bool mLeaving = false; // we disconnect ourselves: no end to report

    static constexpr std::size_t kFollowers = 8;
    std::array<std::atomic<PipeWireStream *>, kFollowers> mFollowers{};
    std::atomic<bool> mInCycle{false}; // followers may be used
    PipeWireStream *mLeader = nullptr;
    std::atomic<double> mObservedRate{0};
    std::atomic<std::uint32_t> mObservedFrames{0};

    // Real-time thread only.
    std::vector<float> mInput; // of the cycle under way, for a stream with both halves
    std::uint32_t mInputFrames = 0;
    std::int64_t mPosition = 0; // frames delivered
    std::uint32_t mClockId = 0;
    std::uint64_t mClockPosition = 0;
    std::uint64_t mClockDuration = 0;
};

} // namespace cantorel::hal

#pragma once

// The seam below the hardware API: what a sound server, or a stand-in for one, has to do. hal/core answers every
// property, listener, aggregate and I/O procedure on top of these few functions, once for all backends.

#include "platform/foundation/Clock.h"
#include "platform/foundation/Result.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel::hal {

enum class Direction { Input, Output };

// The UID under which a backend reads what the default output plays, whichever that is: the first two channels, or its
// only one twice. It is no device of devices(), and can be a member of an aggregate, where it follows the default. A
// stream of its own ends when another output becomes the default, and reads that one when it is opened again.
inline constexpr const char *kOutputMonitorUid = "default_output.monitor";
inline constexpr int kOutputMonitorChannels = 2;

// One side of a device.
struct DeviceSide {
    int channels = 0;         // 0: the device has no such side
    std::vector<float> gains; // linear, one a channel; empty: no volume control
    bool canMute = false;
    bool muted = false;

    bool operator==(const DeviceSide &) const = default;
};

// A device as the backend sees it at one moment. A value: it crosses threads by copy.
struct DeviceRecord {
    QString uid;                          // unique, the same from one start to the next
    QString name;                         // as the server tells it, not yet unique
    double sampleRate = 0;                // frames a second, in force
    std::uint32_t cycleFrames = 0;        // frames of one cycle when it runs, as well as that is known
    std::uint32_t safetyOffsetFrames = 0; // what the server itself keeps between a cycle and the sound
    bool isLoopback = false;              // its input side gives back what programs play into its output side
    DeviceSide input;
    DeviceSide output;

    bool operator==(const DeviceRecord &) const = default;
};

// The moment of a cycle. sampleTime counts delivered frames from 0 at the stream's start without a jump.
struct CycleTime {
    std::int64_t sampleTime = 0;
    std::uint64_t hostTime = 0; // ns, monotonic
    bool discontinuity = false; // frames were lost before this cycle
};

// Receives the cycles of one stream.
class StreamClient {
public:
    virtual ~StreamClient() = default;

    // On the real-time thread. input: frames x input channels, interleaved, null when the stream does not read. output:
    // frames x output channels, zeroed, null when the stream does not play. frames is what the server's cycle brings.
    virtual void cycle(const CycleTime &time, const float *input, float *output, std::uint32_t frames) noexcept = 0;

    // The stream will bring no further cycles: its device or the server is gone. Any thread but a real-time one, at
    // most once, with no lock of the backend held; the stream is destroyed by its owner later.
    virtual void ended() = 0;
};

// Sound running between a device and a StreamClient. Destroying it returns after the last cycle() and ended(); never
// destroyed on a real-time thread nor from within ended().
class DeviceStream {
public:
    virtual ~DeviceStream() = default;
};

struct StreamRequest {
    QString uid;
    bool input = false;  // read the device's input side
    bool output = false; // play into its output side
    std::uint32_t preferredCycleFrames = 512;
    // A running stream that reads, of the same backend: this one's cycles happen inside that one's, right after it,
    // with the same number of frames. When the leader ends or is destroyed, this stream runs on by its own clock. Null:
    // none.
    DeviceStream *leader = nullptr;
    // How long a server may take to begin.
    foundation::Clock::Duration patience = std::chrono::seconds(3);
};

// An aggregate: one input device whose channels are those of the sub-devices' input sides, in order.
struct AggregateSpec {
    QString uid;
    QString name;
    QStringList subDeviceUids;
    QString masterUid;

    bool operator==(const AggregateSpec &) const = default;
};

// What shall be the default device of a direction.
struct DefaultSetting {
    DefaultSetting(std::nullopt_t) {}
    DefaultSetting(const QString &device) : choice(device), device(device) {}
    DefaultSetting(std::optional<QString> made, QString inForce)
        : choice(std::move(made)), device(std::move(inForce)) {}

    std::optional<QString> choice; // what the person chose, which may be absent; nothing: no choice
    QString device;                // what that choice amounts to here; empty: whatever the server picks
};

class HardwareBackend {
public:
    virtual ~HardwareBackend() = default;

    // "pipewire" or "embedded".
    virtual QString name() const = 0;

    // Whether a server carries sound. Where none does, one is looked for at once and waited for as long as the patience
    // says; with none, it only answers. A server that is not there yet, or is lost, is met whenever it comes. A failure
    // is one sentence that names the cause.
    virtual foundation::Result<void> reach(foundation::Clock::Duration patience) = 0;

    // The clock that the devices run on; code that polls them waits on it too.
    virtual foundation::Clock &clock() = 0;

    // All devices, in a stable order; empty while no server answers. Aggregates made here are among them. Any thread.
    virtual std::vector<DeviceRecord> devices() const = 0;

    // UID of the default device in force, empty when there is none. Never a sink's monitor for Direction::Input.
    virtual QString defaultDevice(Direction direction) const = 0;

    // Whether the choices of default devices are known now and can be changed: a server may be away, or without the
    // part of it that keeps them.
    virtual bool keepsDefaults() const = 0;
    // The choice that the person made and the server keeps, which may name an absent device; nothing when none was
    // made.
    virtual std::optional<QString> configuredDefault(Direction direction) const = 0;
    // Makes a choice or takes it away. The new default is in force when this returns true. With a guard, the backend
    // sees to it that the guard's setting is put back within a second should this program end before the next call for
    // the direction, unless somebody has chosen yet another device by then.
    virtual bool setConfiguredDefault(Direction direction, const DefaultSetting &setting,
                                      const std::optional<DefaultSetting> &guard) = 0;

    // Linear gains, one a channel of the side. True when the device will follow.
    virtual bool setGains(const QString &uid, Direction direction, const std::vector<float> &gains) = 0;
    virtual bool setMuted(const QString &uid, Direction direction, bool muted) = 0;

    // Frames a second. False when the device cannot do that rate.
    virtual bool setSampleRate(const QString &uid, double rate) = 0;

    // Null when the device does not exist or lacks a side asked for. Cycles may begin before this returns.
    virtual std::unique_ptr<DeviceStream> openStream(const StreamRequest &request, StreamClient &client) = 0;

    // Makes the aggregate or changes it to the description; the device exists when this returns true. The channels of
    // a sub-device that disappears are silent until it is back. The aggregate itself disappears with its last
    // sub-device or with the server, and the backend makes it again.
    virtual bool makeAggregate(const AggregateSpec &spec) = 0;
    virtual void removeAggregate(const QString &uid) = 0;

    // The one listener for changes of devices, their values or the defaults: it is told that something changed, on any
    // thread but a real-time one, and takes a snapshot. An empty function ends it; no call is under way afterwards.
    virtual void subscribe(std::function<void()> changed) = 0;
};

} // namespace cantorel::hal

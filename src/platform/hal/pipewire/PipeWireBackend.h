#pragma once

#include "platform/foundation/Result.h"
#include "platform/hal/pipewire/AggregateNodes.h"
#include "platform/hal/pipewire/GuardChild.h"
#include "platform/hal/pipewire/PipeWireStream.h"

#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

namespace cantorel::hal {

// The devices of a PipeWire server. Safe from any thread but a real-time one.
//
// Threads: the library's loop thread receives the server's events and holds the loop's lock meanwhile; its real-time
// thread "data-loop.0" runs the cycles; our own "pipewire-keeper" meets a server that is not there yet, or went away,
// asks again for news that may have been missed, keeps the aggregates, and tells clients and the subscriber, holding no
// lock while it does. Everything of the library is reached under the loop's lock; the keeper's own words under
// mKeeperMutex. The loop's lock may be held when the other is taken, never the reverse.
class PipeWireBackend : public HardwareBackend {
public:
    // Begins as after the loss of a server: reach() tells whether there is one.
    // loopbackNames: names of the sinks that are loopback devices, made by this or another program.
    explicit PipeWireBackend(QStringList loopbackNames = {});
    // A backend that has reached a server, or why there is none.
    static foundation::Result<std::unique_ptr<PipeWireBackend>> connect(foundation::Clock::Duration patience,
                                                                        const QStringList &loopbackNames = {});
    ~PipeWireBackend() override;

    QString name() const override { return QStringLiteral("pipewire"); }
    foundation::Result<void> reach(foundation::Clock::Duration patience) override;
    foundation::Clock &clock() override { return mClock; }
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

private:
    friend class PipeWireStream;

    // With the loop locked.
    void makeContext();
    struct Connection {
        CoreHandle core;
        Hook hook;
    };
    bool connectToServer();
    bool open(Connection &connection);
    void dropServer();
    bool carriesSound() const;
    // Waits, letting events in, until the condition holds or the time is over. Answers the condition.
    bool waitUntil(const std::function<bool()> &condition, foundation::Clock::Duration patience) const;
    // The same for what concerns the default devices, whose news may have been missed; true as well once the server is
    // gone.
    bool waitForDefaults(const std::function<bool()> &condition) const;
    static void onCoreError(void *data, std::uint32_t id, int seq, int result, const char *message);
    foundation::Failure explain() const;

    bool change(const std::function<bool(PipeWireGraph &)> &action);
    // From the loop's thread or with the loop locked; only wakes the keeper.
    void graphChanged();
    void streamChanged();
    void report(PipeWireStream &stream);
    void forget(PipeWireStream &stream);

    void keep(const std::stop_token &stopping);
    void tellEndings();

    const QStringList mLoopbackNames;
    foundation::WallClock mClock;
    ThreadLoopHandle mLoop;
    ContextHandle mContext; // null while the library's configuration is damaged
    // What is asked of the server, and the streams, made with the first of them. The server reads nothing from a
    // connection that asks for the default devices until the session manager has answered, and nothing from the session
    // manager while a stream that it sets up has not answered: on one connection both would wait for ever.
    Connection mQuestions, mSound;
    std::unique_ptr<PipeWireGraph> mGraph;
    AggregateNodes mAggregates;
    std::set<PipeWireStream *> mStreams;
    GuardChild mGuards[2]; // input, output
    bool mLost = false;    // the connection has broken

    std::mutex mKeeperMutex;
    std::condition_variable_any mKeeperWake;
    bool mChangedPending = false;
    std::vector<PipeWireStream *> mEndedPending;
    const PipeWireStream *mTelling = nullptr; // whose client is being told
    // Held while the subscriber is told, so that ending the subscription waits for it.
    std::recursive_mutex mSubscriberMutex;
    std::function<void()> mSubscriber;
    std::jthread mKeeper;
};

} // namespace cantorel::hal

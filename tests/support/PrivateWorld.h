#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace cantorel::test {

// Answers whether the condition came true before the deadline; looks again every few milliseconds, letting queued calls
// run.
bool eventually(const std::function<bool()> &condition, int milliseconds = 10000);

// A PipeWire server of the test's own, with a session manager, in the test's home folder: "Built-in Output", "Built-in
// Microphone" and the virtual device, or what the options say. Ends its own processes, by their ids.
class PrivateWorld {
public:
    // Frames of a cycle that bear a machine's pauses of some tens of milliseconds, for tests that count each frame.
    static constexpr int kUnhurried = 4096;

    struct Options {
        bool output = true;
        bool microphone = true;
        bool virtualDevice = true;
        bool pulse = false;         // a PulseAudio server on top, for paplay and pactl
        QStringList moreSinks = {}; // "node.name=Description"
        QStringList moreSources = {};
        int cycle = 0; // the frames of a cycle; 0 for the server's own
    };

    PrivateWorld() : PrivateWorld(Options()) {}
    explicit PrivateWorld(const Options &options);
    ~PrivateWorld();

    // Whether the server answers and has chosen default devices.
    bool ready() const { return mReady; }

    // Runs a tool of the world to its end and answers its output.
    QByteArray run(const QString &program, const QStringList &arguments, int milliseconds = 15000) const;
    // Starts one that goes on until the handle ends.
    std::unique_ptr<QProcess> start(const QString &program, const QStringList &arguments) const;

    bool plugSink(const QString &node, const QString &description) const;
    bool plugSource(const QString &node, const QString &description) const;
    void unplug(const QString &node) const;
    // The node's identifier on the server; empty when it is not there.
    QString idOf(const QString &node) const;
    // "port -> port" lines of every link.
    QByteArray links() const;
    // The value of a key of the metadata "default"; empty when it is not set.
    QByteArray metadata(const QString &key) const;
    // Makes the choice of a default device for "audio.sink" or "audio.source" as a person does; empty: takes it away.
    void choose(const QString &key, const QString &node) const;

    void killServer();
    bool startServer();
    // The session manager alone, which makes the links and keeps the defaults.
    void killSessionManager();
    bool startSessionManager();

    // Feeds a file into a null source of the world, from its first frame on.
    std::unique_ptr<QProcess> feed(const QString &file, const QString &source) const;
    // Records what a sink plays, until the handle ends.
    std::unique_ptr<QProcess> listen(const QString &sink, const QString &file) const;

private:
    std::unique_ptr<QProcess> spawn(const QString &program, const QStringList &arguments, const QString &log) const;

    bool mPulse = false;
    bool mReady = false;
    std::unique_ptr<QProcess> mSessionManager;
    std::vector<std::unique_ptr<QProcess>> mServers;
};

// Ends a process by its id: asks first, and waits.
void finish(QProcess &process, int signal = 15);

} // namespace cantorel::test

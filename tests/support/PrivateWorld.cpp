#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

#include <csignal>

namespace cantorel::test {

namespace {

void writeFile(const QString &path, const QByteArray &text) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(text);
}

QByteArray nodeArguments(const QString &node, const QString &description, const char *mediaClass, const char *more) {
    return "{ factory.name = support.null-audio-sink node.name = \"" + node.toUtf8() + "\" node.description = \""
           + description.toUtf8() + "\" media.class = " + mediaClass
           + " audio.position = [ FL FR ] object.linger = true " + more + " }";
}

constexpr const char *kSinkMore = "priority.session = 1000 priority.driver = 1000";
constexpr const char *kSourceMore = "priority.session = 2000 priority.driver = 2000";
constexpr const char *kVirtualMore = "priority.session = 100 priority.driver = 3000 monitor.channel-volumes = false";

QString environment(const char *name) { return qEnvironmentVariable(name); }

} // namespace

bool eventually(const std::function<bool()> &condition, int milliseconds) {
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents();
        QThread::msleep(5);
    }
    return true;
}

void finish(QProcess &process, int signal) {
    if (process.state() == QProcess::NotRunning)
        return;
    ::kill(static_cast<pid_t>(process.processId()), signal);
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}

PrivateWorld::PrivateWorld(const Options &options) : mPulse(options.pulse) {
    const QString config = environment("XDG_CONFIG_HOME");
    writeFile(config + "/wireplumber/main.lua.d/51-test.lua", R"(
alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
default_access.properties["enable-flatpak-portal"] = false
stream_defaults.properties["restore-props"] = false
stream_defaults.properties["restore-target"] = false
device_defaults.properties["use-persistent-storage"] = false
)");
    writeFile(config + "/wireplumber/bluetooth.lua.d/51-test.lua", "bluez_monitor.enabled = false\n");
    const auto object = [](const QByteArray &arguments) {
        return "  { factory = adapter args = " + arguments + " }\n";
    };
    QByteArray objects;
    if (options.output)
        objects += object(nodeArguments("builtin_output", "Built-in Output", "Audio/Sink", kSinkMore));
    if (options.microphone)
        objects +=
            object(nodeArguments("builtin_microphone", "Built-in Microphone", "Audio/Source/Virtual", kSourceMore));
    if (options.virtualDevice)
        objects += object(nodeArguments("Tessolar_AudioDevice", "Tessolar_AudioDevice", "Audio/Sink", kVirtualMore));
    for (const QString &sink : options.moreSinks)
        objects += object(nodeArguments(sink.section('=', 0, 0), sink.section('=', 1), "Audio/Sink",
                                        "priority.session = 500 priority.driver = 500"));
    for (const QString &source : options.moreSources)
        objects += object(nodeArguments(source.section('=', 0, 0), source.section('=', 1), "Audio/Source/Virtual",
                                        "priority.session = 1500 priority.driver = 1500"));
    QByteArray properties = "default.clock.allowed-rates = [ 44100 48000 ]";
    if (options.cycle > 0) {
        for (const char *quantum : {"quantum", "min-quantum", "max-quantum"})
            properties += QByteArray(" default.clock.") + quantum + " = " + QByteArray::number(options.cycle);
    }
    writeFile(config + "/pipewire/pipewire.conf.d/50-fixture.conf",
              "context.properties = { " + properties + " }\ncontext.objects = [\n" + objects + "]\n");
    startServer();
}

PrivateWorld::~PrivateWorld() {
    if (mSessionManager)
        finish(*mSessionManager);
    for (auto server = mServers.rbegin(); server != mServers.rend(); ++server)
        finish(**server);
}

std::unique_ptr<QProcess> PrivateWorld::spawn(const QString &program, const QStringList &arguments,
                                              const QString &log) const {
    auto process = std::make_unique<QProcess>();
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(log.isEmpty() ? QProcess::nullDevice() : log, QIODevice::Append);
    process->setStandardErrorFile(log.isEmpty() ? QProcess::nullDevice() : log, QIODevice::Append);
    process->start(program, arguments);
    process->waitForStarted(5000);
    return process;
}

bool PrivateWorld::startServer() {
    const QString run = environment("XDG_RUNTIME_DIR");
    const auto log = [&](const char *name) { return run + "/" + name + ".log"; };
    mServers.push_back(spawn("pipewire", {}, log("pipewire")));
    if (!eventually([&] { return QFile::exists(run + "/pipewire-0"); }))
        return mReady = false;
    if (mPulse)
        mServers.push_back(spawn("pipewire-pulse", {}, log("pulse")));
    mReady = startSessionManager() && (!mPulse || eventually([&] { return QFile::exists(run + "/pulse/native"); }));
    return mReady;
}

bool PrivateWorld::startSessionManager() {
    mSessionManager = spawn("wireplumber", {}, environment("XDG_RUNTIME_DIR") + "/wireplumber.log");
    return eventually([&] { return !metadata("default.audio.sink").isEmpty(); });
}

void PrivateWorld::killSessionManager() { finish(*mSessionManager, SIGKILL); }

void PrivateWorld::killServer() {
    killSessionManager();
    for (auto &server : mServers)
        finish(*server, SIGKILL);
    mServers.clear();
    // A killed server leaves its socket, which must not be taken for that of the next one.
    QFile::remove(environment("XDG_RUNTIME_DIR") + "/pipewire-0");
    mReady = false;
}

QByteArray PrivateWorld::run(const QString &program, const QStringList &arguments, int milliseconds) const {
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForFinished(milliseconds))
        finish(process);
    return process.readAllStandardOutput();
}

std::unique_ptr<QProcess> PrivateWorld::start(const QString &program, const QStringList &arguments) const {
    return spawn(program, arguments, environment("XDG_RUNTIME_DIR") + "/tools.log");
}

QString PrivateWorld::idOf(const QString &node) const {
    const QJsonArray objects = QJsonDocument::fromJson(run("pw-dump", {})).array();
    for (const QJsonValue &object : objects) {
        const QJsonValue props = object["info"]["props"];
        if (object["type"].toString() == "PipeWire:Interface:Node" && props["node.name"].toString() == node)
            return QString::number(object["id"].toInt());
    }
    return {};
}

bool PrivateWorld::plugSink(const QString &node, const QString &description) const {
    run("pw-cli", {"create-node", "adapter", nodeArguments(node, description, "Audio/Sink", kSinkMore)});
    return eventually([&] { return !idOf(node).isEmpty(); });
}

bool PrivateWorld::plugSource(const QString &node, const QString &description) const {
    run("pw-cli", {"create-node", "adapter", nodeArguments(node, description, "Audio/Source/Virtual", kSourceMore)});
    return eventually([&] { return !idOf(node).isEmpty(); });
}

void PrivateWorld::unplug(const QString &node) const {
    run("pw-cli", {"destroy", idOf(node)});
    eventually([&] { return idOf(node).isEmpty(); });
}

QByteArray PrivateWorld::links() const { return run("pw-link", {"-l"}); }

QByteArray PrivateWorld::metadata(const QString &key) const {
    for (const QByteArray &line : run("pw-metadata", {"0", key}).split('\n')) {
        const qsizetype value = line.indexOf("value:'");
        if (line.contains("key:'" + key.toUtf8() + "'") && value >= 0)
            return line.mid(value + 7, line.indexOf("' type:") - value - 7);
    }
    return {};
}

void PrivateWorld::choose(const QString &key, const QString &node) const {
    const QString choice = "default.configured." + key;
    if (node.isEmpty())
        run("pw-metadata", {"-d", "0", choice});
    else
        run("pw-metadata", {"0", choice, QJsonDocument(QJsonObject{{"name", node}}).toJson(QJsonDocument::Compact),
                            "Spa:String:JSON"});
}

std::unique_ptr<QProcess> PrivateWorld::feed(const QString &file, const QString &source) const {
    auto feeder = start("pw-cat", {"-p", "--target", "0", "-P", "{ node.name=feeder }", file});
    eventually([&] { return run("pw-link", {"-o"}).contains("feeder:output_FL"); });
    for (const char *channel : {"FL", "FR"})
        run("pw-link", {QString("feeder:output_") + channel, source + ":input_" + channel});
    return feeder;
}

std::unique_ptr<QProcess> PrivateWorld::listen(const QString &sink, const QString &file) const {
    auto listener = start("pw-cat", {"-r", "--target", sink, "-P", "{ stream.capture.sink=true node.name=listener }",
                                     "--format", "f32", "--rate", "48000", "--channels", "2", file});
    eventually([&] { return links().contains("listener:input_FL"); });
    return listener;
}

} // namespace cantorel::test

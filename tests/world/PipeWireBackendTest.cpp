// The PipeWire backend against a real server: what the server shows to other programs, and what happens when it, a
// device or this program goes away.

#include "platform/hal/pipewire/PipeWireBackend.h"

#include "lang/Lang.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

using namespace cantorel;
using namespace cantorel::hal;
using test::eventually;
using test::PrivateWorld;

namespace {

// Counts what its stream brings.
struct Client : StreamClient {
    void cycle(const CycleTime &, const float *, float *, std::uint32_t) noexcept override { ++cycles; }
    void ended() override { ++endings; }
    std::atomic<std::uint32_t> cycles{0}, endings{0};
};

std::unique_ptr<PipeWireBackend> connected() {
    auto backend = PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
    EXPECT_TRUE(backend.ok()) << (backend.ok() ? "" : Lang::english(backend.failure().sentence).toStdString());
    return backend ? std::move(backend).value() : nullptr;
}

QStringList uids(const HardwareBackend &backend) {
    QStringList found;
    for (const DeviceRecord &record : backend.devices())
        found.append(record.uid);
    return found;
}

constexpr const char *kOddName = "odd \" \\ \t \xc3\xb6"; // absent, as JSON must carry it

StreamRequest reading(const char *uid) { return {uid, true, false, 512, nullptr}; }

} // namespace

TEST(PipeWire, WithoutAMicrophoneThereIsNoDefaultInput) {
    const PrivateWorld world({.microphone = false});
    const auto backend = connected();
    ASSERT_TRUE(backend);
    EXPECT_TRUE(eventually([&] { return !world.metadata("default.audio.source").isEmpty(); }));
    EXPECT_EQ(backend->defaultDevice(Direction::Input), QString());
    EXPECT_EQ(backend->defaultDevice(Direction::Output), "builtin_output");
}

// What the session manager puts in the place of no device is none.
TEST(PipeWire, WithoutAnyDeviceNothingIsListed) {
    const PrivateWorld world({.microphone = false, .virtualDevice = false});
    ASSERT_TRUE(world.ready());
    ASSERT_TRUE(world.plugSink("auto_null", "Dummy Output"));
    world.unplug("builtin_output");
    ASSERT_TRUE(eventually([&] { return world.metadata("default.audio.sink").contains("auto_null"); }));
    const auto backend = connected();
    ASSERT_TRUE(backend);
    EXPECT_EQ(backend->devices().size(), 0u);
    EXPECT_EQ(backend->defaultDevice(Direction::Output), QString());
    ASSERT_TRUE(world.plugSink("usb_output", "USB"));
    EXPECT_TRUE(eventually([&] { return uids(*backend) == QStringList("usb_output"); }));
}

TEST(PipeWire, ADamagedConfigurationIsNamed) {
    const QString file = qEnvironmentVariable("XDG_CONFIG_HOME") + "/pipewire/client-rt.conf";
    const PrivateWorld world;
    test::store(file, "context.properties = { ] {");
    // The library leaks a little on this way, so a process of its own takes it.
    const auto attempt = [&] {
        const auto backend = PipeWireBackend::connect(std::chrono::seconds(1), test::kLoopbackNames);
        std::fputs(backend ? "connected" : Lang::english(backend.failure().sentence).toUtf8().constData(), stderr);
        std::fflush(stderr);
        _exit(0);
    };
    EXPECT_EXIT(attempt(), testing::ExitedWithCode(0), file.toStdString());
}

// What the program leaves when it is killed: the choice that it displaced, absence included; but never a choice that
// somebody made meanwhile.
TEST(PipeWire, KilledProgramGivesTheDefaultsBack) {
    const struct {
        Direction direction;
        const char *before;
        const char *meanwhile;
        const char *after;
    } cases[] = {{Direction::Output, "", "", ""},
                 {Direction::Output, kOddName, "", kOddName},
                 {Direction::Output, "builtin_output", "headset", "headset"},
                 {Direction::Input, "", "", ""},
                 {Direction::Input, "usb_gone", "", "usb_gone"},
                 {Direction::Input, "builtin_microphone", "headset_mic", "headset_mic"}};
    const PrivateWorld world({.moreSinks = {"headset=Headset"}, .moreSources = {"lent=Lent", "headset_mic=Headset"}});
    ASSERT_TRUE(world.ready());
    for (const auto &[direction, before, meanwhile, after] : cases) {
        const bool input = direction == Direction::Input;
        SCOPED_TRACE(std::string(input ? "input " : "output ") + before + " then " + meanwhile);
        const QString key = input ? "audio.source" : "audio.sink";
        const QString standIn = input ? "lent" : "Tessolar_AudioDevice";
        const QString usual = input ? "builtin_microphone" : "builtin_output";
        const auto inForce = [&] { return world.metadata("default." + key); };
        const auto configured = [&] { return world.metadata("default.configured." + key); };
        world.choose(key, before);
        ASSERT_TRUE(eventually([&] { return inForce().contains(usual.toUtf8()); })) << inForce().constData();
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t child = fork();
        if (child == 0) {
            auto backend = PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
            const std::optional<QString> choice = *before ? std::optional<QString>(before) : std::nullopt;
            const bool done =
                backend && backend.value()->setConfiguredDefault(direction, standIn, DefaultSetting(choice, usual));
            (void)!write(ready[1], done ? "y" : "n", 1);
            pause();
            _exit(0);
        }
        char answer = 0;
        ASSERT_EQ(read(ready[0], &answer, 1), 1);
        EXPECT_EQ(answer, 'y');
        EXPECT_TRUE(inForce().contains(standIn.toUtf8()));
        if (*meanwhile)
            world.choose(key, meanwhile);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(ready[0]);
        close(ready[1]);
        EXPECT_TRUE(eventually([&] {
            const QString chosen = QJsonDocument::fromJson(configured()).object()["name"].toString();
            return chosen == after && !inForce().contains(standIn.toUtf8());
        })) << configured().constData()
            << " " << inForce().constData();
    }
}

TEST(PipeWire, LoudnessIsTheServersOwn) {
    PrivateWorld world;
    const auto backend = connected();
    ASSERT_TRUE(backend);
    const auto output = [&] {
        for (const DeviceRecord &record : backend->devices()) {
            if (record.uid == "builtin_output")
                return record.output;
        }
        return DeviceSide();
    };
    ASSERT_TRUE(eventually([&] { return output().gains.size() == 2; }));
    ASSERT_TRUE(backend->setGains("builtin_output", Direction::Output, {0.125f, 0.125f}));
    EXPECT_EQ(output().gains[0], 0.125f);
    const QString id = world.idOf("builtin_output");
    EXPECT_TRUE(eventually([&] { return world.run("wpctl", {"get-volume", id}).contains("0.50"); }));
    world.run("wpctl", {"set-mute", id, "1"});
    EXPECT_TRUE(eventually([&] { return output().muted; }));
    EXPECT_FALSE(backend->setGains("nobody", Direction::Output, {1}));
}

TEST(PipeWire, ServerThatDiesIsMetAgain) {
    PrivateWorld world;
    const auto backend = connected();
    ASSERT_TRUE(backend);
    ASSERT_TRUE(backend->makeAggregate({"test.both", "Both", {"builtin_microphone", "Tessolar_AudioDevice"}, {}}));
    Client client;
    auto stream = backend->openStream(reading("Tessolar_AudioDevice"), client);
    ASSERT_TRUE(stream);
    world.killServer();
    ASSERT_TRUE(eventually([&] { return client.endings == 1; }));
    EXPECT_TRUE(backend->devices().empty());
    EXPECT_FALSE(backend->openStream(reading("Tessolar_AudioDevice"), client));
    EXPECT_FALSE(backend->setConfiguredDefault(Direction::Output, QString("builtin_output"), std::nullopt));
    ASSERT_TRUE(world.startServer());
    ASSERT_TRUE(eventually([&] { return uids(*backend).contains("test.both"); })) << "the aggregate is made again";
    stream.reset();
    const std::uint32_t before = client.cycles;
    ASSERT_TRUE(eventually([&] {
        stream = backend->openStream(reading("Tessolar_AudioDevice"), client);
        return stream != nullptr;
    }));
    EXPECT_TRUE(eventually([&] { return client.cycles > before; }));
}

TEST(PipeWire, ServerThatComesLaterIsMetAndTold) {
    PipeWireBackend backend(test::kLoopbackNames);
    EXPECT_FALSE(backend.reach(std::chrono::milliseconds(200)));
    std::atomic<bool> told{false};
    backend.subscribe([&] { told = told || backend.reach({}); });
    const PrivateWorld world;
    EXPECT_TRUE(eventually([&] { return told && backend.devices().size() == 3; }));
    EXPECT_EQ(backend.defaultDevice(Direction::Output), "builtin_output");
    backend.subscribe({});
}

// Links that somebody takes away: the server drives the stream on, on silence.
TEST(PipeWire, LinksThatAreTakenAwayAreMissed) {
    const PrivateWorld world;
    const auto backend = connected();
    ASSERT_TRUE(backend);
    ASSERT_TRUE(backend->makeAggregate({"test.both", "Both", {"builtin_microphone", "Tessolar_AudioDevice"}, {}}));
    const auto isLinked = [&] { return world.links().contains("builtin_microphone:capture_FL\n  |-> test.both"); };
    ASSERT_TRUE(eventually(isLinked)) << world.links().constData();
    Client client;
    const auto stream = backend->openStream(reading("Tessolar_AudioDevice"), client);
    ASSERT_TRUE(stream);
    world.run("pw-link", {"Tessolar_AudioDevice:monitor_FL", "cantorel-capture:input_FR"});
    world.run("pw-link", {"-d", "Tessolar_AudioDevice:monitor_FL", "cantorel-capture:input_FR"});
    EXPECT_FALSE(eventually([&] { return client.endings > 0; }, 200)) << "one too many";
    world.run("pw-link", {"-d", "Tessolar_AudioDevice:monitor_FL", "cantorel-capture:input_FL"});
    EXPECT_TRUE(eventually([&] { return client.endings == 1; }));
    world.run("pw-link", {"-d", "builtin_microphone:capture_FL", "test.both:input_AUX0"});
    EXPECT_TRUE(eventually(isLinked)) << world.links().constData();
}

TEST(PipeWire, SaysWhyThereIsNoSound) {
    const auto sentence = [](int milliseconds) {
        const auto backend = PipeWireBackend::connect(std::chrono::milliseconds(milliseconds), test::kLoopbackNames);
        return backend ? QString() : Lang::english(backend.failure().sentence);
    };
    EXPECT_TRUE(sentence(50).contains("No PipeWire sound server is running"));
    const QString run = qEnvironmentVariable("XDG_RUNTIME_DIR");
    QDir().mkpath(run + "/pulse");
    test::touch(run + "/pulse/native");
    EXPECT_TRUE(sentence(50).contains("PulseAudio carries the sound"));
    QFile::remove(run + "/pulse/native");
    QProcess server;
    server.start("pipewire", QStringList());
    ASSERT_TRUE(eventually([&] { return QFile::exists(run + "/pipewire-0"); }));
    EXPECT_TRUE(sentence(300).contains("wireplumber"));
    test::finish(server);
    qunsetenv("XDG_RUNTIME_DIR");
    EXPECT_TRUE(sentence(50).contains("XDG_RUNTIME_DIR"));
}

// Who routes right after the start displaces the person's choice, and has to know it to give it back.
TEST(PipeWire, ConnectedBackendKnowsTheChoicesAndDevicesAtOnce) {
    PrivateWorld world;
    world.run("pw-metadata", {"0", "default.configured.audio.sink", "{\"name\":\"usb_gone\"}", "Spa:String:JSON"});
    for (int i = 0; i < 30; ++i) {
        const auto backend = connected();
        ASSERT_TRUE(backend);
        ASSERT_EQ(backend->configuredDefault(Direction::Output), "usb_gone") << i;
        ASSERT_EQ(backend->defaultDevice(Direction::Output), "builtin_output") << i;
        ASSERT_EQ(backend->devices().size(), 3u) << i;
    }
}

// While a client introduces itself, the server swallows the news of the defaults for all others.
TEST(PipeWire, ChoicesAreKnownWhateverClientsComeAndGo) {
    const PrivateWorld world({.moreSources = {"lent=Lent"}});
    const auto backend = connected();
    ASSERT_TRUE(backend);
    const auto newcomers = world.start("sh", {"-c", "while :; do pw-metadata 0 nothing; done"});
    for (int i = 0; i < 50; ++i) {
        const QString device = i % 2 ? "lent" : "builtin_microphone";
        ASSERT_TRUE(backend->setConfiguredDefault(Direction::Input, device, std::nullopt)) << i;
        ASSERT_EQ(backend->configuredDefault(Direction::Input), device) << i;
        ASSERT_EQ(backend->defaultDevice(Direction::Input), device) << i;
    }
    // Also what somebody else chooses comes to be known.
    world.choose("audio.source", "lent");
    test::finish(*newcomers);
    EXPECT_TRUE(eventually([&] { return backend->defaultDevice(Direction::Input) == "lent"; }));
}

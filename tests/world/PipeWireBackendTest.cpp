// The PipeWire backend against a real server: what the server shows to other programs, and what happens when it, a
// device or this program goes away.

#include "platform/hal/pipewire/PipeWireBackend.h"

#include "tests/support/EmbeddedWorld.h"
#include "tests/support/PrivateWorld.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

using namespace cantorel;
using namespace cantorel::hal;
using test::eventually;
using test::PrivateWorld;

namespace {

// Keeps what its stream brings, up to a bound, and plays a stamped sound.
struct Client : StreamClient {
    Client() { heard.resize(48000 * 20); }
    void cycle(const CycleTime &time, const float *input, float *output, std::uint32_t frames) noexcept override {
        const std::uint32_t seen = cycles.fetch_add(1);
        if (seen > 0 && time.sampleTime != nextTime)
            jumps.fetch_add(1);
        nextTime = time.sampleTime + frames;
        lost.fetch_add(time.discontinuity ? 1 : 0);
        if (other)
            otherAtCycle.store(other->cycles.load());
        for (std::uint32_t i = 0; input && i < frames && count < heard.size(); ++i)
            heard[count++] = input[i * channels];
        for (std::uint32_t i = 0; output && i < frames * channels; ++i) {
            dirty = dirty || output[i] != 0;
            output[i] = level;
        }
        framesOfCycle.store(frames);
    }
    void ended() override { endings.fetch_add(1); }

    std::uint32_t channels = 2;
    std::vector<float> heard; // left channel
    std::atomic<std::size_t> count{0};
    std::int64_t nextTime = 0;
    float level = 0.25f;
    bool dirty = false;
    Client *other = nullptr;
    std::atomic<std::uint32_t> cycles{0}, jumps{0}, lost{0}, endings{0}, framesOfCycle{0}, otherAtCycle{0};
};

std::unique_ptr<PipeWireBackend> connected() {
    auto backend = PipeWireBackend::connect(std::chrono::seconds(10));
    EXPECT_TRUE(backend.ok()) << (backend.ok() ? "" : backend.failure().sentence.toStdString());
    return backend ? std::move(backend).value() : nullptr;
}

QStringList uids(const HardwareBackend &backend) {
    QStringList found;
    for (const DeviceRecord &record : backend.devices())
        found.append(record.uid);
    return found;
}

StreamRequest reading(const char *uid) { return {QString::fromLatin1(uid), true, false, 512, nullptr}; }
StreamRequest playing(const char *uid) { return {QString::fromLatin1(uid), false, true, 512, nullptr}; }

} // namespace

TEST(PipeWire, ListsDevicesWithTheirSides) {
    PrivateWorld::Options options;
    options.moreSinks = {"headset_a=USB Headset", "headset_b=USB Headset"};
    options.moreSources = {"headset_mic=USB Headset"};
    PrivateWorld world(options);
    ASSERT_TRUE(world.ready());
    const auto backend = connected();
    ASSERT_TRUE(backend);
    ASSERT_TRUE(eventually([&] { return backend->devices().size() == 6; })) << uids(*backend).join(' ').toStdString();
    for (const DeviceRecord &record : backend->devices()) {
        const bool source = record.uid == "builtin_microphone" || record.uid == "headset_mic";
        EXPECT_EQ(record.input.channels, source || record.isLoopback ? 2 : 0) << record.uid.toStdString();
        EXPECT_EQ(record.output.channels, source ? 0 : 2) << record.uid.toStdString();
        EXPECT_EQ(record.isLoopback, record.uid == "Tessolar_AudioDevice");
        EXPECT_EQ(record.sampleRate, 48000);
    }
    HardwareSystem system(connected(), QDir::homePath());
    QStringList names = test::EmbeddedWorld::names();
    names.sort();
    EXPECT_EQ(names, (QStringList{"Built-in Microphone", "Built-in Output", "Tessolar_AudioDevice", "USB Headset",
                                  "USB Headset (2)", "USB Headset (Input)"}));
}

TEST(PipeWire, WithoutAMicrophoneThereIsNoDefaultInput) {
    PrivateWorld::Options options;
    options.microphone = false;
    PrivateWorld world(options);
    const auto backend = connected();
    ASSERT_TRUE(backend);
    EXPECT_TRUE(eventually([&] { return !world.metadata("default.audio.source").isEmpty(); }));
    EXPECT_EQ(backend->defaultDevice(Direction::Input), QString());
    EXPECT_EQ(backend->defaultDevice(Direction::Output), "builtin_output");
}

TEST(PipeWire, DefaultsAreChosenTakenAwayAndGuarded) {
    PrivateWorld world;
    auto backend = connected();
    ASSERT_TRUE(backend);
    EXPECT_EQ(backend->configuredDefault(Direction::Output), std::nullopt);
    ASSERT_TRUE(backend->setConfiguredDefault(Direction::Output, QString("Tessolar_AudioDevice"), std::nullopt));
    EXPECT_EQ(backend->defaultDevice(Direction::Output), "Tessolar_AudioDevice") << "in force at once";
    EXPECT_TRUE(world.metadata("default.audio.sink").contains("Tessolar_AudioDevice"));
    ASSERT_TRUE(
        backend->setConfiguredDefault(Direction::Output, {std::nullopt, QString("builtin_output")}, std::nullopt));
    EXPECT_EQ(world.metadata("default.configured.audio.sink"), "");
    EXPECT_EQ(backend->defaultDevice(Direction::Output), "builtin_output");
    EXPECT_TRUE(world.metadata("default.audio.sink").contains("builtin_output"));
}

// What the program leaves when it is killed: the choice that it displaced, absence included; but never a choice that
// somebody made meanwhile.
TEST(PipeWire, KilledProgramGivesTheDefaultBack) {
    const struct {
        const char *before;
        const char *meanwhile;
        const char *after;
    } cases[] = {{"", "", ""}, {"builtin_output", "", "builtin_output"}, {"builtin_output", "headset", "headset"}};
    PrivateWorld::Options options;
    options.moreSinks = {"headset=Headset"};
    PrivateWorld world(options);
    ASSERT_TRUE(world.ready());
    const auto choose = [&](const char *name) {
        if (*name)
            world.run("pw-metadata", {"0", "default.configured.audio.sink", QString("{\"name\":\"%1\"}").arg(name),
                                      "Spa:String:JSON"});
        else
            world.run("pw-metadata", {"-d", "0", "default.configured.audio.sink"});
    };
    for (const auto &[before, meanwhile, after] : cases) {
        choose(before);
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t child = fork();
        if (child == 0) {
            auto backend = PipeWireBackend::connect(std::chrono::seconds(10));
            const std::optional<QString> choice =
                *before ? std::optional<QString>(QString::fromLatin1(before)) : std::nullopt;
            const bool done =
                backend
                && backend.value()->setConfiguredDefault(Direction::Output, QString("Tessolar_AudioDevice"),
                                                         DefaultSetting(choice, QString("builtin_output")));
            (void)!write(ready[1], done ? "y" : "n", 1);
            pause();
            _exit(0);
        }
        char answer = 0;
        ASSERT_EQ(read(ready[0], &answer, 1), 1);
        EXPECT_EQ(answer, 'y');
        EXPECT_TRUE(world.metadata("default.audio.sink").contains("Tessolar_AudioDevice"));
        if (*meanwhile)
            choose(meanwhile);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(ready[0]);
        close(ready[1]);
        EXPECT_TRUE(eventually([&] {
            const QByteArray now = world.metadata("default.configured.audio.sink");
            return (*after ? now.contains(after) : now.isEmpty())
                   && !world.metadata("default.audio.sink").contains("Tessolar");
        })) << before
            << " became " << world.metadata("default.configured.audio.sink").toStdString();
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

TEST(PipeWire, StreamsRunWithASteadyCount) {
    PrivateWorld world;
    const auto backend = connected();
    ASSERT_TRUE(backend);
    Client client;
    EXPECT_FALSE(backend->openStream(reading("nobody"), client));
    EXPECT_FALSE(backend->openStream(reading("builtin_output"), client)) << "a plain sink has no input side";
    auto stream = backend->openStream(reading("Tessolar_AudioDevice"), client);
    ASSERT_TRUE(stream);
    ASSERT_TRUE(eventually([&] { return client.cycles > 50; }));
    stream.reset();
    const std::uint32_t cycles = client.cycles;
    EXPECT_EQ(client.jumps, 0u);
    EXPECT_EQ(client.endings, 0u) << "a stream that we close has not ended by itself";
    stream = backend->openStream(playing("builtin_output"), client);
    ASSERT_TRUE(stream);
    ASSERT_TRUE(eventually([&] { return client.cycles > cycles + 50; }));
    EXPECT_FALSE(client.dirty);
}

TEST(PipeWire, FollowerRunsInsideItsLeadersCycle) {
    PrivateWorld world;
    const auto backend = connected();
    ASSERT_TRUE(backend);
    Client leader, follower;
    follower.other = &leader;
    auto first = backend->openStream(reading("Tessolar_AudioDevice"), leader);
    ASSERT_TRUE(first);
    StreamRequest request = playing("builtin_output");
    request.leader = first.get();
    auto second = backend->openStream(request, follower);
    ASSERT_TRUE(second);
    ASSERT_TRUE(eventually([&] { return follower.cycles > 20; }));
    const std::uint32_t distance = leader.cycles - follower.cycles;
    for (int i = 0; i < 20; ++i) {
        const std::uint32_t before = follower.cycles;
        ASSERT_TRUE(eventually([&] { return follower.cycles > before; }));
        EXPECT_EQ(leader.framesOfCycle, follower.framesOfCycle);
    }
    EXPECT_LE(leader.cycles - follower.cycles - distance, 1u);
    first.reset();
    const std::uint32_t played = follower.cycles;
    EXPECT_TRUE(eventually([&] { return follower.cycles > played + 20; })) << "it goes on by its own clock";
}

TEST(PipeWire, VanishedDeviceEndsItsStreamAndNoOtherTakesItsPlace) {
    PrivateWorld world;
    const auto backend = connected();
    ASSERT_TRUE(backend);
    std::atomic<int> changes{0};
    backend->subscribe([&] { ++changes; });
    Client client;
    auto stream = backend->openStream(reading("builtin_microphone"), client);
    ASSERT_TRUE(stream);
    ASSERT_TRUE(eventually([&] { return client.cycles > 5; }));
    world.unplug("builtin_microphone");
    ASSERT_TRUE(eventually([&] { return client.endings == 1; }));
    EXPECT_FALSE(world.links().contains("cantorel-capture"));
    EXPECT_GT(changes, 0);
    stream.reset();
    ASSERT_TRUE(world.plugSource("builtin_microphone", "Built-in Microphone"));
    ASSERT_TRUE(eventually([&] { return uids(*backend).contains("builtin_microphone"); }));
    const std::uint32_t before = client.cycles;
    stream = backend->openStream(reading("builtin_microphone"), client);
    ASSERT_TRUE(stream);
    EXPECT_TRUE(eventually([&] { return client.cycles > before; }));
    EXPECT_EQ(client.endings, 1u);
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

TEST(PipeWire, AggregateIsASourceOfItsMembersInOrder) {
    PrivateWorld world;
    const auto backend = connected();
    ASSERT_TRUE(backend);
    ASSERT_TRUE(backend->makeAggregate({"test.both", "Both", {"builtin_microphone", "Tessolar_AudioDevice"}, {}}));
    const auto record = [&]() -> std::optional<DeviceRecord> {
        for (const DeviceRecord &device : backend->devices()) {
            if (device.uid == "test.both")
                return device;
        }
        return std::nullopt;
    };
    ASSERT_TRUE(record());
    EXPECT_EQ(record()->input.channels, 4);
    EXPECT_EQ(record()->output.channels, 0);
    EXPECT_EQ(record()->name, "Both");
    EXPECT_TRUE(eventually([&] { return world.links().contains("Tessolar_AudioDevice:monitor_FR"); }));
    EXPECT_TRUE(world.run("wpctl", {"status"}).contains("Both")) << "other programs see it";

    Client player;
    const auto sound = backend->openStream(playing("Tessolar_AudioDevice"), player);
    Client client;
    client.channels = 4;
    auto stream = backend->openStream(reading("test.both"), client);
    ASSERT_TRUE(stream);
    ASSERT_TRUE(eventually([&] { return client.cycles > 20; }));
    world.unplug("builtin_microphone");
    EXPECT_TRUE(eventually([&] { return !record(); })) << "it goes with a member";
    EXPECT_TRUE(eventually([&] { return client.endings == 1; }));
    ASSERT_TRUE(world.plugSource("builtin_microphone", "Built-in Microphone"));
    EXPECT_TRUE(eventually([&] { return record().has_value(); }));
    backend->removeAggregate("test.both");
    EXPECT_FALSE(record());
}

TEST(PipeWire, SaysWhyThereIsNoSound) {
    const auto sentence = [](int milliseconds) {
        const auto backend = PipeWireBackend::connect(std::chrono::milliseconds(milliseconds));
        return backend ? QString() : backend.failure().sentence;
    };
    EXPECT_TRUE(sentence(50).contains("No PipeWire sound server is running"));
    const QString run = qEnvironmentVariable("XDG_RUNTIME_DIR");
    QDir().mkpath(run + "/pulse");
    QFile socket(run + "/pulse/native");
    ASSERT_TRUE(socket.open(QIODevice::WriteOnly));
    EXPECT_TRUE(sentence(50).contains("PulseAudio carries the sound"));
    socket.remove();
    QProcess server;
    server.start("pipewire", QStringList());
    ASSERT_TRUE(eventually([&] { return QFile::exists(run + "/pipewire-0"); }));
    EXPECT_TRUE(sentence(300).contains("wireplumber"));
    test::finish(server);
    qunsetenv("XDG_RUNTIME_DIR");
    EXPECT_TRUE(sentence(50).contains("XDG_RUNTIME_DIR"));
}

// What every backend of the hardware promises, on each of them: what HardwareBackend.h says, seen from outside.

#include "tests/contract/hal/BackendWorld.h"
#include "tests/support/StampedSound.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace cantorel;
using namespace cantorel::hal;
using test::BackendWorld;
using test::longestStampedRun;

namespace {

constexpr std::size_t kEnough = 24000; // frames that have to come through without a gap
const QString kOutput = "builtin_output";
const QString kMicrophone = "builtin_microphone";
const QString kLoopback = "Tessolar_AudioDevice";
const QString kMonitor = QLatin1String(kOutputMonitorUid);

// Keeps what its stream brings, up to a bound, and plays stamps.
struct Client : StreamClient {
    explicit Client(int width = 2) : channels(static_cast<std::uint32_t>(width)) {
        kept.resize(std::size_t(48000 * 15) * channels);
    }

    void cycle(const CycleTime &time, const float *input, float *output, std::uint32_t frames) noexcept override {
        jumps += cycles > 0 && time.sampleTime != next ? 1u : 0u;
        jumps += cycles == 0 && time.sampleTime != 0 ? 1u : 0u;
        next = time.sampleTime + frames;
        if (leader) {
            const std::int64_t distance = leader->next - next;
            steady = leader->last == frames && distance == behind && std::this_thread::get_id() == leader->thread
                         ? steady + 1
                         : 0;
            longestSteady = std::max<std::uint32_t>(longestSteady, steady);
            behind = distance;
        }
        const std::size_t room = std::min<std::size_t>(std::size_t(frames) * channels, kept.size() - count);
        if (input) {
            std::copy_n(input, room, kept.data() + count);
            count += room;
        }
        for (std::uint32_t i = 0; output && i < frames * channels; ++i)
            dirty = dirty || output[i] != 0;
        if (output && plays)
            test::stamp({output, std::size_t(frames) * channels}, static_cast<int>(channels), time.sampleTime);
        last = frames;
        thread = std::this_thread::get_id();
        ++cycles;
    }
    void ended() override { ++endings; }
    // Of what was kept so far; the channel of the left stamps.
    std::size_t run(int first = 0) const {
        return longestStampedRun({kept.data(), count}, static_cast<int>(channels), first);
    }

    const std::uint32_t channels;
    std::vector<float> kept;
    std::atomic<std::size_t> count{0};
    bool plays = true;
    Client *leader = nullptr;
    std::atomic<std::uint32_t> cycles{0}, endings{0}, jumps{0}, longestSteady{0};
    std::atomic<bool> dirty{false};
    // The real-time thread's own.
    std::int64_t next = 0, behind = 0;
    std::uint32_t last = 0, steady = 0;
    std::thread::id thread;
};

StreamRequest reading(const QString &uid) { return {uid, true, false, 512, nullptr}; }
StreamRequest playing(const QString &uid) { return {uid, false, true, 512, nullptr}; }

struct World {
    const char *name;
    std::unique_ptr<BackendWorld> (*make)();
};

void PrintTo(const World &world, std::ostream *out) { *out << world.name; }

struct HardwareContract : testing::TestWithParam<World> {
    HardwareContract() : world(GetParam().make()), backend(world->backend()) {}

    DeviceRecord record(const QString &uid) const {
        for (const DeviceRecord &device : backend.devices()) {
            if (device.uid == uid)
                return device;
        }
        return {};
    }
    bool isThere(const QString &uid) const { return !record(uid).uid.isEmpty(); }

    std::unique_ptr<BackendWorld> world;
    HardwareBackend &backend;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(, HardwareContract,
                         testing::Values(World{"Embedded", test::embeddedManualWorld},
                                         World{"EmbeddedOnTheWallClock", test::embeddedWallWorld},
                                         World{"PipeWire", test::pipeWireWorld}),
                         [](const auto &world) { return std::string(world.param.name); });

TEST_P(HardwareContract, DevicesAreListedWithTheirSides) {
    const struct {
        QString uid, name;
        int inputs, outputs;
        bool loopback;
    } expected[] = {{kOutput, "Built-in Output", 0, 2, false},
                    {kMicrophone, "Built-in Microphone", 2, 0, false},
                    {kLoopback, "Tessolar_AudioDevice", 2, 2, true}};
    EXPECT_EQ(backend.devices().size(), std::size(expected));
    for (const auto &[uid, name, inputs, outputs, loopback] : expected) {
        const DeviceRecord device = record(uid);
        EXPECT_EQ(device.name, name);
        EXPECT_EQ(device.input.channels, inputs);
        EXPECT_EQ(device.output.channels, outputs);
        EXPECT_EQ(device.isLoopback, loopback);
        EXPECT_EQ(device.sampleRate, 48000);
        EXPECT_GT(device.cycleFrames, 0u);
    }
}

TEST_P(HardwareContract, DefaultsAreChosenAndAbsenceIsKept) {
    const auto inForce = [&](const QString &uid) {
        return [this, uid] { return backend.defaultDevice(Direction::Output) == uid; };
    };
    EXPECT_EQ(backend.configuredDefault(Direction::Output), std::nullopt);
    EXPECT_EQ(backend.defaultDevice(Direction::Input), kMicrophone);
    EXPECT_TRUE(inForce(kOutput)());
    ASSERT_TRUE(backend.setConfiguredDefault(Direction::Output, kLoopback, std::nullopt));
    EXPECT_TRUE(inForce(kLoopback)()) << "at once";
    ASSERT_TRUE(backend.setConfiguredDefault(Direction::Output, {std::nullopt, kOutput}, std::nullopt));
    EXPECT_EQ(backend.configuredDefault(Direction::Output), std::nullopt);
    EXPECT_TRUE(inForce(kOutput)());

    const QString absent = "usb_output";
    ASSERT_TRUE(backend.setConfiguredDefault(Direction::Output, {absent, kOutput}, std::nullopt));
    EXPECT_EQ(backend.configuredDefault(Direction::Output), absent);
    EXPECT_TRUE(inForce(kOutput)());
    world->plug(absent, Direction::Output);
    EXPECT_TRUE(world->until(inForce(absent))) << "the choice counts as soon as the device is there";
    world->unplug(absent);
    // Which device takes its place is the server's to say: it may remember an earlier choice.
    EXPECT_TRUE(world->until([&] { return !inForce(absent)(); }));
    EXPECT_EQ(backend.configuredDefault(Direction::Output), absent);

    world->unplug(kMicrophone);
    EXPECT_TRUE(world->until([&] { return backend.defaultDevice(Direction::Input).isEmpty(); }))
        << "without a microphone nothing stands in: " << backend.defaultDevice(Direction::Input).toStdString();
}

TEST_P(HardwareContract, LoudnessIsKeptChannelByChannel) {
    const struct {
        QString uid;
        Direction direction;
    } cases[] = {{kOutput, Direction::Output}, {kMicrophone, Direction::Input}, {kLoopback, Direction::Output}};
    for (const auto &[uid, direction] : cases) {
        const auto side = [&, uid = uid, direction = direction] {
            const DeviceRecord device = record(uid);
            return direction == Direction::Input ? device.input : device.output;
        };
        ASSERT_TRUE(world->until([&] { return side().gains == std::vector<float>(2, 1.0f) && side().canMute; }));
        ASSERT_TRUE(backend.setGains(uid, direction, {0.125f, 0.5f}));
        ASSERT_TRUE(backend.setMuted(uid, direction, true));
        EXPECT_TRUE(world->until([&] { return side().gains == std::vector<float>({0.125f, 0.5f}) && side().muted; }));
        ASSERT_TRUE(backend.setMuted(uid, direction, false));
        EXPECT_TRUE(world->until([&] { return !side().muted; }));
    }
    EXPECT_TRUE(record(kLoopback).input.gains.empty()) << "what is recorded has no loudness of its own";
    EXPECT_FALSE(backend.setGains(kLoopback, Direction::Input, {0.5f, 0.5f}));
    EXPECT_FALSE(backend.setMuted(kLoopback, Direction::Input, true));
    EXPECT_FALSE(backend.setGains(kMicrophone, Direction::Output, {0.5f, 0.5f}));
    EXPECT_FALSE(backend.setGains("nobody", Direction::Output, {1, 1}));
    EXPECT_FALSE(backend.setMuted("nobody", Direction::Output, true));
    EXPECT_FALSE(backend.setGains(kOutput, Direction::Output, {}));
}

TEST_P(HardwareContract, NoStreamOpensOnWhatIsNotThere) {
    Client client;
    EXPECT_FALSE(backend.openStream(reading("nobody"), client));
    EXPECT_FALSE(backend.openStream(reading(kOutput), client)) << "an output has no side to read";
    EXPECT_FALSE(backend.openStream(playing(kMicrophone), client));
    EXPECT_FALSE(backend.openStream({kMicrophone, true, true, 512, nullptr}, client));
    EXPECT_EQ(client.cycles, 0u);
}

TEST_P(HardwareContract, CapturesEveryFrameAsItIs) {
    Client client;
    const auto stream = backend.openStream(reading(kMicrophone), client);
    ASSERT_TRUE(stream);
    const auto sound = world->feed(kMicrophone, 0);
    EXPECT_TRUE(world->until([&] { return client.run() > kEnough; })) << client.run();
    EXPECT_EQ(client.jumps, 0u) << "the time of a stream counts frames from 0";
}

TEST_P(HardwareContract, PlaysEveryFrameAsItIsIntoZeroedBuffers) {
    Client client;
    world->listen(kOutput);
    const auto stream = backend.openStream(playing(kOutput), client);
    ASSERT_TRUE(stream);
    EXPECT_TRUE(world->until([&] { return client.cycles > 2 * kEnough / 256; }));
    EXPECT_GT(longestStampedRun(world->heard()), kEnough);
    EXPECT_FALSE(client.dirty);
    EXPECT_EQ(client.jumps, 0u);
}

TEST_P(HardwareContract, LoopbackGivesBackWhatProgramsPlayWhateverItsLoudness) {
    ASSERT_TRUE(backend.setGains(kLoopback, Direction::Output, {0.25f, 0.25f}));
    ASSERT_TRUE(backend.setMuted(kLoopback, Direction::Output, true));
    Client client;
    const auto stream = backend.openStream(reading(kLoopback), client);
    ASSERT_TRUE(stream);
    const auto program = world->play(kLoopback, 0);
    EXPECT_TRUE(world->until([&] { return client.run() > kEnough; })) << client.run();
}

TEST_P(HardwareContract, OutputMonitorGivesBackWhatTheDefaultOutputPlaysWhicheverThatIs) {
    constexpr std::int64_t kFar = 4000000;
    world->plug("usb_output", Direction::Output);
    ASSERT_TRUE(world->until([&] { return isThere("usb_output"); }));
    ASSERT_TRUE(backend.setConfiguredDefault(Direction::Output, kOutput, std::nullopt));
    ASSERT_TRUE(backend.setGains(kOutput, Direction::Output, {0.25f, 0.25f}));
    Client client, second;
    EXPECT_FALSE(backend.openStream(playing(kMonitor), client));
    auto stream = backend.openStream(reading(kMonitor), client);
    ASSERT_TRUE(stream);
    auto program = world->play(kOutput, 0);
    EXPECT_TRUE(world->until([&] { return client.run() > kEnough; })) << client.run();
    program.reset(); // or a server takes it to the new default
    const auto other = world->play("usb_output", kFar);
    EXPECT_EQ(client.endings, 0u) << "what others play, and where, is no change";
    ASSERT_TRUE(backend.setConfiguredDefault(Direction::Output, QString("usb_output"), std::nullopt));
    EXPECT_TRUE(world->until([&] { return client.endings == 1; }));
    stream = backend.openStream(reading(kMonitor), second);
    ASSERT_TRUE(stream);
    EXPECT_TRUE(world->until([&] { return second.run() > kEnough; })) << second.run();
    EXPECT_GT(test::stampOf(second.kept[second.count / 2 * 2 - 2]), kFar);
}

TEST_P(HardwareContract, FollowerRunsInsideItsLeadersCyclesAndGoesOnAlone) {
    Client leader, follower;
    follower.leader = &leader;
    auto first = backend.openStream(reading(kLoopback), leader);
    ASSERT_TRUE(first);
    StreamRequest request = playing(kOutput);
    request.leader = first.get();
    const auto second = backend.openStream(request, follower);
    ASSERT_TRUE(second);
    EXPECT_TRUE(world->until([&] { return follower.longestSteady > 50; }))
        << "after the leader's, as long, on its thread, by a constant distance: " << follower.longestSteady;
    first.reset();
    const std::uint32_t led = follower.cycles;
    EXPECT_TRUE(world->until([&] { return follower.cycles > led + 20; })) << "by its own clock";
    EXPECT_EQ(follower.endings, 0u);
    EXPECT_FALSE(follower.dirty);
}

TEST_P(HardwareContract, VanishedDeviceEndsItsStreamOnceAndNoOtherTakesItsPlace) {
    world->plug("usb_microphone", Direction::Input);
    ASSERT_TRUE(world->until([&] { return isThere("usb_microphone"); }));
    Client client;
    auto stream = backend.openStream(reading("usb_microphone"), client);
    ASSERT_TRUE(stream);
    const auto other = world->feed(kMicrophone, 0);
    const auto program = world->play(kOutput, 0);
    ASSERT_TRUE(world->until([&] { return client.cycles > 20; }));
    world->unplug("usb_microphone");
    ASSERT_TRUE(world->until([&] { return client.endings > 0; }));
    EXPECT_FALSE(isThere("usb_microphone"));
    const std::uint32_t cycles = client.cycles;
    Client witness;
    const auto still = backend.openStream(reading(kMicrophone), witness);
    ASSERT_TRUE(world->until([&] { return witness.cycles > 50; }));
    EXPECT_EQ(client.cycles, cycles);
    EXPECT_EQ(client.endings, 1u);
    EXPECT_EQ(client.run(), 0u) << "not a frame of another device";
    stream.reset();

    world->plug("usb_microphone", Direction::Input);
    ASSERT_TRUE(world->until([&] { return isThere("usb_microphone"); }));
    Client again;
    const auto second = backend.openStream(reading("usb_microphone"), again);
    ASSERT_TRUE(second);
    EXPECT_TRUE(world->until([&] { return again.cycles > 20; }));
    EXPECT_EQ(client.endings, 1u);
}

TEST_P(HardwareContract, AggregateHasItsMembersChannelsInOrder) {
    constexpr std::int64_t kFar = 4000000;
    const QStringList orders[] = {{kMicrophone, kLoopback}, {kLoopback, kMicrophone}, {kMicrophone, kMonitor}};
    for (const QStringList &members : orders) {
        const bool microphoneFirst = members[0] == kMicrophone;
        ASSERT_TRUE(backend.makeAggregate({"test.both", "Both", members, kMicrophone}));
        EXPECT_EQ(record("test.both").input.channels, 4) << "there when the call returns";
        EXPECT_EQ(record("test.both").output.channels, 0);
        EXPECT_EQ(record("test.both").name, "Both");
        Client client(4);
        const auto stream = backend.openStream(reading("test.both"), client);
        ASSERT_TRUE(stream);
        const auto voice = world->feed(kMicrophone, 0);
        const auto program = world->play(members.contains(kMonitor) ? kOutput : kLoopback, kFar);
        EXPECT_TRUE(world->until([&] { return client.run(0) > kEnough && client.run(2) > kEnough; }))
            << client.run(0) << " " << client.run(2);
        const std::size_t end = client.count / 4 - 1;
        const bool farIsFirst = test::stampOf(client.kept[end * 4]) > test::stampOf(client.kept[end * 4 + 2]);
        EXPECT_EQ(farIsFirst, !microphoneFirst);
    }
    backend.removeAggregate("test.both");
    EXPECT_FALSE(isThere("test.both"));
}

TEST_P(HardwareContract, AMemberThatGoesIsSilentAndTheOthersOfItsAggregateGoOn) {
    ASSERT_TRUE(backend.makeAggregate({"test.both", "Both", {kMicrophone, kLoopback}, kMicrophone}));
    Client client(4);
    const auto stream = backend.openStream(reading("test.both"), client);
    ASSERT_TRUE(stream);
    const auto program = world->play(kLoopback, 0);
    ASSERT_TRUE(world->until([&] { return client.run(2) > kEnough; }));
    for (int round = 0; round < 2; ++round) {
        world->unplug(kMicrophone);
        ASSERT_TRUE(world->until([&] { return !isThere(kMicrophone); }));
        const std::uint32_t cycles = client.cycles;
        EXPECT_TRUE(world->until([&] { return client.cycles > cycles + 20; })) << "the other goes on";
        EXPECT_TRUE(isThere("test.both"));
        world->plug(kMicrophone, Direction::Input);
        const auto voice = world->feed(kMicrophone, 0);
        const auto heard = [&] { return test::stampOf(client.kept[client.count / 4 * 4 - 4]) > 0; };
        EXPECT_TRUE(world->until(heard)) << "picked up again";
    }
    EXPECT_EQ(client.endings, 0u);
    backend.removeAggregate("test.both");
}

TEST_P(HardwareContract, SubscriberIsToldOfEveryKindOfChangeUntilItLeaves) {
    std::atomic<int> told{0};
    backend.subscribe([&] { ++told; });
    const std::function<void()> changes[] = {
        [&] { world->plug("usb_output", Direction::Output); },
        [&] {
            (void)backend.setGains(kOutput, Direction::Output, {0.5f, 0.5f});
        },
        [&] { (void)backend.setConfiguredDefault(Direction::Output, QString("usb_output"), std::nullopt); },
        [&] { world->unplug("usb_output"); },
    };
    for (const auto &change : changes) {
        const int before = told;
        change();
        EXPECT_TRUE(world->until([&] { return told > before; }));
    }
    backend.subscribe({});
    const int before = told;
    world->plug("usb_output", Direction::Output);
    EXPECT_TRUE(world->until([&] { return isThere("usb_output"); }));
    EXPECT_EQ(told, before);
}

// The client's memory goes the moment its stream has gone: a cycle after that would touch it.
TEST_P(HardwareContract, ClosedStreamHasHadItsLastCycle) {
    Client steady;
    const auto runs = backend.openStream(reading(kLoopback), steady);
    ASSERT_TRUE(runs);
    for (int i = 0; i < 15; ++i) {
        auto client = std::make_unique<Client>();
        StreamRequest request = playing(kOutput);
        request.leader = i % 2 == 0 ? runs.get() : nullptr;
        auto stream = backend.openStream(request, *client);
        ASSERT_TRUE(stream);
        ASSERT_TRUE(world->until([&] { return client->cycles > 2; }));
        stream.reset();
        EXPECT_EQ(client->endings, 0u) << "what we close has not ended by itself";
        client.reset();
    }
    const std::uint32_t cycles = steady.cycles;
    EXPECT_TRUE(world->until([&] { return steady.cycles > cycles + 20; }));
}

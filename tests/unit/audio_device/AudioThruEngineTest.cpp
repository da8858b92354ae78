#include "audio_device/AudioThruEngine.h"

#include "tests/support/EmbeddedWorld.h"

#include <gtest/gtest.h>

using namespace cantorel;
using namespace cantorel::hal;
using test::EmbeddedWorld;
using test::named;
using test::stamp;
using test::stampOf;

namespace {

const QString kVirtual = "Tessolar_AudioDevice";
const QString kOutput = "builtin_output";

// What an output hears while a stamped program plays into the virtual device.
struct ThruWorld : EmbeddedWorld {
    ThruWorld() { listen(kOutput); }
    void listen(const QString &uid) {
        backend->setTap(uid, [this](std::span<const float> samples, int channels, std::int64_t) {
            width = channels;
            heard.insert(heard.end(), samples.begin(), samples.end());
        });
    }
    std::vector<std::int64_t> leftStamps() const {
        std::vector<std::int64_t> stamps;
        for (std::size_t i = 0; i < heard.size(); i += static_cast<std::size_t>(width))
            stamps.push_back(stampOf(heard[i]));
        return stamps;
    }
    std::vector<float> heard;
    int width = 2;
    std::shared_ptr<void> program = backend->play(stamp, kVirtual);
};

} // namespace

TEST(ThruEngine, CarriesEveryFrameOnceWithTheLatencyItComputes) {
    for (const std::uint32_t cycle : {512u, 1024u, 256u}) {
        ThruWorld world;
        world.backend->unplug(kVirtual);
        world.backend->unplug(kOutput);
        world.virtualInstalled = false;
        SoftwareDevice loopback = EmbeddedBackend::loopbackDevice("loop");
        loopback.record.cycleFrames = cycle;
        SoftwareDevice output = EmbeddedBackend::plainDevice(kOutput, "Built-in Output", 0, 2);
        output.record.cycleFrames = cycle;
        output.record.safetyOffsetFrames = 24;
        world.backend->plug(std::move(loopback));
        world.backend->plug(std::move(output));
        world.listen(kOutput);
        std::int64_t played = 0, lag = -1; // frames
        world.program = world.backend->play(
            [&](std::span<float> samples, int channels, std::int64_t position) {
                stamp(samples, channels, position);
                played = position;
            },
            "loop");

        AudioThruEngine engine;
        engine.SetDevices(named("loop"), named("Built-in Output"));
        engine.SetBufferSize(512);
        engine.SetDevices(named("loop"), named("Built-in Output"));
        engine.Start();
        ASSERT_TRUE(engine.IsRunning());
        const std::uint32_t latency = engine.ComputeThruOffset();
        const std::uint32_t reblocking = cycle > 512 ? cycle - 512 : 0;
        EXPECT_EQ(latency, 1024 + 24 + 2 * reblocking);

        world.heard.clear();
        world.advance(500);
        const auto stamps = world.leftStamps();
        ASSERT_GT(stamps.size(), 10000u);
        // Once sound has begun, frame follows frame.
        std::size_t first = 0;
        while (first < stamps.size() && stamps[first] < 0)
            ++first;
        ASSERT_LT(first, 4096u);
        for (std::size_t i = first; i < stamps.size(); ++i)
            ASSERT_EQ(stamps[i], stamps[first] + std::int64_t(i - first)) << cycle << " at " << i;
        world.backend->setTap(
            kOutput, [&](std::span<const float> samples, int, std::int64_t) { lag = played - stampOf(samples[0]); });
        world.advance(50);
        EXPECT_NEAR(static_cast<double>(lag), latency, std::max(cycle, 512u)) << "as late as it says, but for a block";
        EXPECT_TRUE(engine.Stop());
        EXPECT_FALSE(engine.Stop());
        EXPECT_EQ(engine.ComputeThruOffset(), 0u);
    }
}

TEST(ThruEngine, SwitchesTheInputToTheRateOfTheOutput) {
    ThruWorld world;
    ASSERT_TRUE(world.backend->setSampleRate(kVirtual, 44100));
    AudioThruEngine engine;
    engine.SetInputDevice(named("Tessolar_AudioDevice"));
    EXPECT_FALSE(engine.IsRunning()) << "there is no output yet";
    engine.SetOutputDevice(named("Built-in Output"));
    EXPECT_TRUE(engine.IsRunning());
    for (const DeviceRecord &record : world.backend->devices())
        EXPECT_EQ(record.sampleRate, 48000) << record.uid.toStdString();

    // A rate that cannot be matched leaves it stopped.
    SoftwareDevice stubborn = EmbeddedBackend::plainDevice("odd", "Odd", 0, 2);
    stubborn.record.sampleRate = 32000;
    world.backend->plug(std::move(stubborn));
    engine.SetOutputDevice(named("Odd"));
    EXPECT_FALSE(engine.IsRunning());
}

TEST(ThruEngine, GivesUpWhenADeviceNeverCalls) {
    ThruWorld world;
    AudioThruEngine engine;
    engine.SetInputDevice(named("Tessolar_AudioDevice"));
    const auto before = world.clock->now();
    world.virtualInstalled = false;
    engine.SetOutputDevice(named("Built-in Output"));
    EXPECT_FALSE(engine.IsRunning());
    EXPECT_EQ(engine.ComputeThruOffset(), 0u);
    EXPECT_LE(world.clock->now() - before, std::chrono::milliseconds(2100));
}

TEST(ThruEngine, LetsGoOfADeviceThatVanishedWhileItRan) {
    ThruWorld world;
    AudioThruEngine engine;
    engine.SetInputDevice(named("Tessolar_AudioDevice"));
    engine.SetOutputDevice(named("Built-in Output"));
    ASSERT_TRUE(engine.IsRunning());
    world.backend->unplug(kOutput);
    world.advance(50);
    const auto before = world.clock->now();
    EXPECT_TRUE(engine.Stop());
    EXPECT_LE(world.clock->now() - before, std::chrono::milliseconds(1100));
}

TEST(ThruEngine, MixesByItsChannelMap) {
    const struct {
        const char *what;
        bool muting, thruing, spread;
        std::uint32_t mapFirst;
        std::array<bool, 4> sounding;
    } cases[] = {
        {"identity", false, true, false, 0, {true, true, false, false}},
        {"muting", true, true, false, 0, {false, false, false, false}},
        {"spread", false, true, true, 0, {true, true, true, true}},
        {"mapped", false, true, false, 3, {false, true, false, true}},
    };
    for (const auto &[what, muting, thruing, spread, mapFirst, sounding] : cases) {
        ThruWorld world;
        world.backend->plug(EmbeddedBackend::plainDevice("quad", "Quad", 0, 4));
        world.listen("quad");
        AudioThruEngine engine;
        engine.setMuting(muting);
        engine.setThruing(thruing);
        engine.setSpreadStereo(spread);
        engine.setChannelMap(0, mapFirst);
        engine.SetInputDevice(named("Tessolar_AudioDevice"));
        engine.SetOutputDevice(named("Quad"));
        EXPECT_EQ(engine.GetOutputNchnls(), 4u);
        world.advance(100);
        ASSERT_EQ(world.width, 4);
        for (std::size_t channel = 0; channel < 4; ++channel) {
            const float last = world.heard[world.heard.size() - 4 + channel];
            EXPECT_EQ(last != 0, sounding[channel]) << what << ", channel " << channel;
        }
    }
}

TEST(ThruEngine, StaysSilentWhenItPlaysIntoWhatItReads) {
    ThruWorld world;
    std::vector<float> loop;
    world.backend->setTap(kVirtual, [&](std::span<const float> samples, int, std::int64_t) {
        loop.assign(samples.begin(), samples.end());
    });
    world.program.reset();
    AudioThruEngine engine;
    engine.SetInputDevice(named("Tessolar_AudioDevice"));
    engine.SetOutputDevice(named("Tessolar_AudioDevice"));
    world.program = world.backend->play(test::constant(0.5f), kVirtual);
    world.advance(300);
    for (const float sample : loop)
        ASSERT_EQ(sample, 0.5f) << "nothing is fed back";
}

// The way from the virtual device to a real output on a private server, in frames: ours, the peer's (pw-loopback on the
// same route) and plain links', which add nothing. A recorder hears both devices in one clock while a player plays
// stamped frames, so each recorded frame tells how far the output is behind. Also the CPU of our way.

#include "audio_device/AudioThruEngine.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/StampedSound.h"

#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <map>

using namespace cantorel;
using test::PrivateWorld;

namespace {

double cpuSeconds() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// Frames that the output is behind the virtual device, and how many frames said so.
std::map<std::int64_t, std::size_t> behind(const PrivateWorld &world) {
    const QString sound = QDir::homePath() + "/stamped.wav", heard = QDir::homePath() + "/heard.wav";
    test::writeWav(sound, test::stamped(8 * 48000));
    const auto probe = world.start("pw-cat", {"-r", "--target", "0", "-P", "{ node.name=probe }", "--format", "f32",
                                              "--rate", "48000", "--channels", "2", heard});
    test::eventually([&] { return world.run("pw-link", {"-i"}).contains("probe:input_FR"); });
    world.run("pw-link", {"Tessolar_AudioDevice:monitor_FL", "probe:input_FL"});
    world.run("pw-link", {"builtin_output:monitor_FL", "probe:input_FR"});
    world.run("pw-cat", {"-p", "--target", "Tessolar_AudioDevice", sound});
    test::finish(*probe, SIGINT);
    const std::vector<float> samples = test::readWav(heard);
    std::map<std::int64_t, std::size_t> counts;
    for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
        const std::int64_t played = test::stampOf(samples[i]), out = test::stampOf(samples[i + 1]);
        if (played >= 0 && out >= 0)
            ++counts[played - out];
    }
    return counts;
}

std::int64_t report(const char *route, const std::map<std::int64_t, std::size_t> &counts) {
    std::size_t all = 0;
    std::pair<std::int64_t, std::size_t> most{0, 0};
    for (const auto &entry : counts) {
        all += entry.second;
        if (entry.second > most.second)
            most = entry;
    }
    std::printf("%-12s %5lld frames in %.2f %% of %zu frames; %zu distances\n", route,
                static_cast<long long>(most.first),
                all > 0 ? 100.0 * static_cast<double>(most.second) / static_cast<double>(all) : 0, all, counts.size());
    return most.first;
}

} // namespace

TEST(ThruBench, Compare) {
    const PrivateWorld world;
    ASSERT_TRUE(world.ready());
    const auto link = [&](const QStringList &before) {
        for (const char *channel : {"FL", "FR"})
            world.run("pw-link", before
                                     + QStringList{QString("Tessolar_AudioDevice:monitor_") + channel,
                                                   QString("builtin_output:playback_") + channel});
    };
    link({});
    const std::int64_t plain = report("plain links", behind(world));
    link({"-d"});
    {
        const QString properties = "{ node.latency=512/48000 %1 }";
        const auto peer =
            world.start("pw-loopback", {"-C", "Tessolar_AudioDevice", "-P", "builtin_output", "-i",
                                        properties.arg("stream.capture.sink=true"), "-o", properties.arg("")});
        test::eventually([&] { return world.links().contains("builtin_output:playback_FR\n  |<-"); });
        report("pw-loopback", behind(world));
        test::finish(*peer);
    }
    auto backend = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
    ASSERT_TRUE(backend.ok());
    const hal::HardwareSystem system(std::move(backend).value(), QDir::homePath());
    for (int i = 0; i < 3; ++i) {
        AudioThruEngine engine;
        engine.SetInputDevice(test::EmbeddedWorld::deviceNamed("Tessolar_AudioDevice"));
        engine.SetOutputDevice(test::EmbeddedWorld::deviceNamed("Built-in Output"));
        ASSERT_TRUE(engine.IsRunning());
        const double cpu = cpuSeconds();
        const auto begin = std::chrono::steady_clock::now();
        const std::int64_t ours = report("ours", behind(world));
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        std::printf("             beyond plain links: %lld; the engine computes: %u; CPU %.2f s a minute\n",
                    static_cast<long long>(ours - plain), engine.ComputeThruOffset(),
                    (cpuSeconds() - cpu) / seconds.count() * 60);
    }
}

// The system's sound goes through the virtual device of a real server: what is heard, what follows the person's choice,
// and what a program that is killed leaves behind.

#include "audio_device/ZQAudioKextKit.h"
#include "platform/desktop/Services.h"
#include "platform/desktop/ShellScriptHost.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/StampedSound.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using namespace cantorel;
using test::eventually;
using test::PrivateWorld;

namespace {

constexpr std::size_t kSecond = 48000;
constexpr const char *kOddName = "odd \" \\ \t \xc3\xb6"; // absent, as JSON must carry it

std::unique_ptr<hal::HardwareSystem> hardware() {
    auto backend = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
    return backend ? std::make_unique<hal::HardwareSystem>(std::move(backend).value(), QDir::homePath()) : nullptr;
}

PrivateWorld::Options withHeadset() {
    PrivateWorld::Options options;
    options.pulse = true;
    options.moreSinks = {"headset=Headset"};
    return options;
}

bool names(const QByteArray &value, const char *device) {
    return QJsonDocument::fromJson(value).object()["name"].toString() == QString::fromUtf8(device);
}

struct RoutingTest : testing::Test {
    explicit RoutingTest(const PrivateWorld::Options &options = withHeadset()) : world(options) {}
    ~RoutingTest() override { ZQAudioKextKit::end(); }

    QByteArray configured() const { return world.metadata("default.configured.audio.sink"); }
    QByteArray inForce() const { return world.metadata("default.audio.sink"); }
    void choose(const QString &device) const { world.choose("audio.sink", device); }
    // The longest run of what a program plays to the default device that a sink gives out.
    std::size_t heardAt(const QString &sink) const {
        const QString sound = QDir::homePath() + "/stamped.wav", heard = QDir::homePath() + "/heard.wav";
        test::writeWav(sound, test::stamped(4 * kSecond));
        QFile::remove(heard);
        const auto listener = world.listen(sink, heard);
        const auto player = world.start("pw-cat", {"-p", sound});
        eventually([&] { return player->state() == QProcess::NotRunning; }, 20000);
        test::finish(*player);
        test::finish(*listener, SIGINT);
        return test::longestStampedRun(test::readWav(heard));
    }

    PrivateWorld world;
};

// On a server without the virtual device, which the product then installs.
struct FreshRoutingTest : RoutingTest {
    FreshRoutingTest()
        : RoutingTest([] {
              PrivateWorld::Options options;
              options.virtualDevice = false;
              return options;
          }()) {}
};

} // namespace

TEST_F(FreshRoutingTest, WhatIsPlayedToTheInstalledDeviceIsHeardAtTheRealOne) {
    desktop::Services services;
    services.scripts = std::make_unique<desktop::ShellScriptHost>();
    const desktop::InstalledServices installed(std::move(services));
    const auto system = hardware();
    ASSERT_TRUE(system);
    ASSERT_TRUE(ZQAudioKextKit::loadAudioKext());
    ASSERT_TRUE(ZQAudioKextKit::activateSVAD());
    ASSERT_TRUE(ZQAudioKextKit::setSVAD());
    EXPECT_TRUE(names(inForce(), "Tessolar_AudioDevice")) << inForce().constData();
    EXPECT_EQ(ZQAudioKextKit::getDefaultAudioOutputName(), "Tessolar_AudioDevice");
    EXPECT_GT(heardAt("builtin_output"), kSecond);
    ZQAudioKextKit::unsetSVAD();
    EXPECT_TRUE(names(inForce(), "builtin_output"));
    EXPECT_EQ(configured(), "") << "nothing was chosen before";
    ZQAudioKextKit::end();
}

TEST_F(RoutingTest, AnotherProgramsChoiceIsFollowedAndHeard) {
    const auto system = hardware();
    ASSERT_TRUE(system);
    ASSERT_TRUE(ZQAudioKextKit::activateSVAD());
    ASSERT_TRUE(ZQAudioKextKit::setSVAD());
    const char *heard = "builtin_output";
    for (const auto &[chooser, device] : {std::pair("pactl", "headset"), std::pair("pw-metadata", "builtin_output")}) {
        if (QByteArray(chooser) == "pactl")
            world.run("pactl", {"set-default-sink", device});
        else
            choose(device);
        ASSERT_TRUE(eventually([&] {
            return names(inForce(), "Tessolar_AudioDevice")
                   && world.links().contains(QByteArray(device) + ":playback_FL\n  |<- cantorel-playback");
        })) << chooser
            << ": the system's sound is routed again, and heard at the chosen device\n"
            << world.links().constData();
        EXPECT_FALSE(world.links().contains(QByteArray(heard) + ":playback_FL\n  |<- cantorel-playback"));
        EXPECT_GT(heardAt(device), kSecond) << chooser;
        heard = device;
    }
    world.run("pactl", {"set-default-sink", "headset"});
    ASSERT_TRUE(eventually([&] { return names(inForce(), "Tessolar_AudioDevice"); }));
    ZQAudioKextKit::unsetSVAD();
    EXPECT_TRUE(names(configured(), "headset")) << "the last choice is what comes back: " << configured().constData();
    ZQAudioKextKit::end();
}

// What the person had chosen comes back, absence and absent devices included; what they chose meanwhile stands.
TEST_F(RoutingTest, KilledWhileItRoutesTheProgramGivesTheDefaultBack) {
    const struct {
        const char *before;
        const char *meanwhile;
        const char *after;
    } cases[] = {{"", "", ""},
                 {"headset", "", "headset"},
                 {"usb_gone", "", "usb_gone"},
                 {kOddName, "", kOddName},
                 {"builtin_output", "headset", "headset"}};
    for (const auto &[before, meanwhile, after] : cases) {
        SCOPED_TRACE(std::string(before) + " then " + meanwhile);
        choose(before);
        ASSERT_TRUE(eventually([&] { return !names(inForce(), "Tessolar_AudioDevice"); }));
        const QByteArray used = *meanwhile ? QByteArray(meanwhile) : inForce().split('"').value(3);
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t child = fork();
        if (child == 0) {
            const auto system = hardware();
            const bool routed = system && ZQAudioKextKit::activateSVAD() && ZQAudioKextKit::setSVAD();
            (void)!write(ready[1], routed ? "y" : "n", 1);
            while (true) { // The event loop is the parent's: its wakings are shared.
                if (system)
                    system->deliverChanges();
                usleep(1000);
            }
        }
        char answer = 0;
        ASSERT_EQ(read(ready[0], &answer, 1), 1);
        EXPECT_EQ(answer, 'y');
        EXPECT_TRUE(names(inForce(), "Tessolar_AudioDevice"));
        if (*meanwhile) {
            choose(meanwhile);
            EXPECT_TRUE(eventually([&] { return names(configured(), "Tessolar_AudioDevice"); })) << "followed";
        }
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(ready[0]);
        close(ready[1]);
        EXPECT_TRUE(eventually([&] {
            return (*after ? names(configured(), after) : configured().isEmpty()) && names(inForce(), used.constData());
        })) << configured().constData()
            << " " << inForce().constData();
    }
}

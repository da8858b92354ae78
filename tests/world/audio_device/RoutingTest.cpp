// The system's sound goes through the virtual device of a real server: what is heard, and what follows the person's
// choice.

#include "audio_device/ZQAudioKextKit.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/StampedSound.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <csignal>

using namespace cantorel;
using test::eventually;
using test::PrivateWorld;

namespace {

constexpr std::size_t kSecond = 48000;

std::unique_ptr<hal::HardwareSystem> hardware() {
    auto backend = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
    return backend ? std::make_unique<hal::HardwareSystem>(std::move(backend).value(), QDir::homePath()) : nullptr;
}

bool names(const QByteArray &value, const char *device) {
    return QJsonDocument::fromJson(value).object()["name"].toString() == device;
}

struct RoutingTest : testing::Test {
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

    const PrivateWorld world{{.pulse = true, .moreSinks = {"headset=Headset"}, .cycle = PrivateWorld::kUnhurried}};
};

} // namespace

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

#include "audio_device/AudioDeviceEngine.h"

#include "tests/support/EmbeddedWorld.h"

#include <gtest/gtest.h>

using namespace cantorel;
using namespace cantorel::hal;
using test::EmbeddedWorld;
using test::named;
using test::stamp;

namespace {

struct RoutedWorld : EmbeddedWorld {
    using EmbeddedWorld::EmbeddedWorld;
    // Whether the output hears what a program plays to the default device.
    bool hears(const QString &uid) {
        bool sound = false;
        backend->setTap(uid,
                        [&](std::span<const float> samples, int, std::int64_t) { sound = sound || samples[0] != 0; });
        const auto program = backend->play(stamp);
        advance(200);
        backend->setTap(uid, {});
        return sound;
    }
    AudioDeviceEngine engine;
};

SoftwareDevice outputDevice(const char *name) { return EmbeddedBackend::plainDevice(name, name, 0, 2); }

} // namespace

TEST(DeviceEngine, PrefersItsOwnVirtualDeviceWhateverComesFirst) {
    const struct {
        QStringList present;
        const char *found;
    } cases[] = {
        {{"Soundflower (2ch)", "Tessolar_AudioDevice", "System Sound"}, "Tessolar_AudioDevice"},
        {{"Soundflower (2ch)", "System Sound"}, "Soundflower (2ch)"},
        {{"System Sound", "Soundflower (2ch)"}, "System Sound"},
        {{"Soundflower", "tessolar_audiodevice"}, nullptr},
        {{}, nullptr},
    };
    for (const auto &[present, found] : cases) {
        RoutedWorld world(EmbeddedWorld::Virtual::Missing);
        for (const QString &name : present)
            world.backend->plug(EmbeddedBackend::plainDevice(name + "-uid", name, 2, 2));
        EXPECT_EQ(world.engine.availableSVAD(), found != nullptr);
        EXPECT_EQ(world.engine.getSystemSoundDeviceName(), QString()) << "looking has no side effects";
        EXPECT_EQ(world.engine.activateSVAD(), found != nullptr);
        EXPECT_EQ(world.engine.getSystemSoundDeviceName(), found);
    }
}

TEST(DeviceEngine, RoutesSystemSoundAndGivesTheDeviceBack) {
    RoutedWorld world;
    EXPECT_FALSE(world.engine.setSVAD()) << "not activated";
    ASSERT_TRUE(world.engine.activateSVAD());
    ASSERT_TRUE(world.engine.setSVAD());
    EXPECT_EQ(world.engine.defaultOutputDevice(), "Tessolar_AudioDevice");
    EXPECT_TRUE(world.hears("builtin_output"));
    world.engine.unsetSVAD();
    EXPECT_EQ(world.engine.defaultOutputDevice(), "Built-in Output");
    EXPECT_EQ(world.backend->configuredDefault(Direction::Output), std::nullopt) << "an absent choice stays absent";
    world.engine.unsetSVAD();
    EXPECT_EQ(world.backend->configuredDefault(Direction::Output), std::nullopt);
}

// However often the devices are given back, and whatever became of the virtual one meanwhile.
TEST(DeviceEngine, AChoiceOfAnAbsentDeviceStays) {
    for (const bool vanishes : {false, true}) {
        RoutedWorld world;
        world.backend->setConfiguredDefault(Direction::Output, {QString("usb_gone"), QString()}, std::nullopt);
        ASSERT_TRUE(world.engine.activateSVAD());
        world.engine.unsetSVAD();
        EXPECT_EQ(world.backend->configuredDefault(Direction::Output), "usb_gone") << "nothing was routed";
        ASSERT_TRUE(world.engine.setSVAD());
        world.virtualInstalled = !vanishes;
        world.system->deliverChanges();
        for (int i = 0; i < 2; ++i) {
            world.engine.unsetSVAD();
            EXPECT_EQ(world.backend->configuredDefault(Direction::Output), "usb_gone") << vanishes << i;
        }
    }
}

// The news of a choice may still be on its way when the recording ends.
TEST(DeviceEngine, AChoiceMadeAtTheLastMomentStands) {
    RoutedWorld world;
    world.backend->plug(outputDevice("Headset"));
    ASSERT_TRUE(world.engine.activateSVAD());
    ASSERT_TRUE(world.engine.setSVAD());
    world.backend->setConfiguredDefault(Direction::Output, QString("Headset"), std::nullopt);
    world.engine.unsetSVAD();
    EXPECT_EQ(world.backend->configuredDefault(Direction::Output), "Headset");
}

TEST(DeviceEngine, PlaysToAnotherRealOutputWhenTheVirtualDeviceWasTheDefault) {
    RoutedWorld world;
    world.backend->unplug("builtin_output");
    world.backend->plug(outputDevice("AirPlay"));
    world.backend->plug(outputDevice("Headset"));
    world.backend->setConfiguredDefault(Direction::Output, QString("Tessolar_AudioDevice"), std::nullopt);
    ASSERT_TRUE(world.engine.activateSVAD());
    ASSERT_TRUE(world.engine.setSVAD());
    EXPECT_TRUE(world.hears("Headset"));
    world.engine.unsetSVAD();
    EXPECT_EQ(world.engine.defaultOutputDevice(), "Headset");
}

TEST(DeviceEngine, FollowsThePersonsChoice) {
    RoutedWorld world;
    world.backend->plug(outputDevice("Headset"));
    ASSERT_TRUE(world.engine.activateSVAD());
    // Before the recording: what was remembered at the start is past.
    world.backend->setConfiguredDefault(Direction::Output, QString("Headset"), std::nullopt);
    world.engine.unsetSVAD();
    EXPECT_EQ(world.engine.defaultOutputDevice(), "Headset");
    ASSERT_TRUE(world.engine.setSVAD());
    EXPECT_TRUE(world.hears("Headset"));
    // While it runs: another choice is heard from now on, the recording goes on, and the choice is what stands
    // afterwards.
    world.backend->setConfiguredDefault(Direction::Output, QString("builtin_output"), std::nullopt);
    world.system->deliverChanges();
    EXPECT_EQ(world.engine.defaultOutputDevice(), "Tessolar_AudioDevice");
    EXPECT_TRUE(world.hears("builtin_output"));
    // The output vanishes: another real one takes its place, and is what stands afterwards.
    world.backend->unplug("builtin_output");
    world.system->deliverChanges();
    EXPECT_TRUE(world.hears("Headset"));
    EXPECT_EQ(world.engine.defaultOutputDevice(), "Tessolar_AudioDevice");
    world.engine.unsetSVAD();
    EXPECT_EQ(world.engine.defaultOutputDevice(), "Headset");
}

// A cable, a dock, or a server that starts anew: what is recorded is heard again, no later than before.
TEST(DeviceEngine, TheOnlyOutputThatComesBackIsHeardAsBefore) {
    const struct {
        int away; // ms
        int channels;
        QStringList gone;
        int streams; // opened for its return: one that is opened twice disturbs players that begin just then
    } cases[] = {{5000, 2, {"builtin_output"}, 1},
                 {1200, 2, {"builtin_output"}, 1},
                 {700, 4, {"builtin_output"}, 2},
                 {1200, 2, {"builtin_output", "Tessolar"}, 2},
                 {1200, 2, {"Tessolar"}, 2}};
    for (const auto &[away, channels, gone, streams] : cases) {
        SCOPED_TRACE(testing::Message() << away << " ms, " << channels << " channels, " << gone.size());
        RoutedWorld world;
        std::vector<bool> told;
        const auto hearing = foundation::NotificationCenter::defaultCenter().subscribe<bool>(
            kNotificationRoutedSoundIsHeard, [&](const bool &heard) { told.push_back(heard); });
        ASSERT_TRUE(world.engine.activateSVAD());
        ASSERT_TRUE(world.engine.setSVAD());
        std::int64_t played = 0, lag = -1;
        const auto program = world.backend->play([&](std::span<float> samples, int width, std::int64_t position) {
            stamp(samples, width, position);
            played = position;
        });
        const auto lagNow = [&] {
            lag = -1;
            world.backend->setTap("builtin_output", [&](std::span<const float> samples, int, std::int64_t) {
                lag = samples[0] == 0 ? -1 : played - test::stampOf(samples[0]);
            });
            world.advance(200);
            return lag;
        };
        const std::int64_t before = lagNow();
        ASSERT_GE(before, 0);
        const bool output = gone.first() == "builtin_output";
        if (output)
            world.backend->unplug("builtin_output");
        world.virtualInstalled = gone.last() != "Tessolar";
        world.system->deliverChanges();
        world.advance(away);
        EXPECT_EQ(told, std::vector<bool>{false});
        world.virtualInstalled = true;
        if (output)
            world.backend->plug(EmbeddedBackend::plainDevice("builtin_output", "Built-in Output", 0, channels));
        world.backend->openings = 0;
        world.system->deliverChanges();
        world.system->deliverChanges();
        EXPECT_EQ(world.backend->openings, streams);
        EXPECT_EQ(lagNow(), before);
        EXPECT_EQ(told, (std::vector{false, true}));
    }
}

// What is heard meanwhile, at whatever device there is, is no choice of the person's.
TEST(DeviceEngine, AnAbsenceLeavesThePersonsChoiceAsItWas) {
    const struct {
        std::optional<QString> choice;
        bool atTheStart; // nothing to hear with
        bool comesBack;
    } cases[] = {{QString("Headset"), false, true},
                 {QString("Headset"), false, false},
                 {std::nullopt, true, true},
                 {QString("Headset"), true, true}};
    for (const auto &[choice, atTheStart, comesBack] : cases) {
        SCOPED_TRACE(testing::Message() << choice.value_or("none").toStdString() << atTheStart << comesBack);
        RoutedWorld world;
        if (atTheStart)
            world.backend->unplug("builtin_output");
        else
            world.backend->plug(outputDevice("Headset"));
        world.backend->setConfiguredDefault(Direction::Output, {choice, QString()}, std::nullopt);
        ASSERT_TRUE(world.engine.activateSVAD());
        ASSERT_TRUE(world.engine.setSVAD());
        world.backend->unplug("Headset");
        world.system->deliverChanges();
        EXPECT_EQ(world.hears("builtin_output"), !atTheStart);
        if (comesBack)
            world.backend->plug(outputDevice("Headset"));
        world.system->deliverChanges();
        EXPECT_EQ(world.hears("Headset"), comesBack);
        world.engine.unsetSVAD();
        EXPECT_EQ(world.backend->configuredDefault(Direction::Output), choice);
        EXPECT_EQ(world.engine.defaultOutputDevice(), comesBack ? "Headset" : "Built-in Output");
    }
}

TEST(DeviceEngine, ListsRealDevicesBySide) {
    RoutedWorld world;
    world.engine.activateSVAD();
    world.backend->plug(EmbeddedBackend::plainDevice("duplex", "Duplex", 1, 2));
    world.backend->plug(outputDevice("AirPlay"));
    EXPECT_EQ(world.engine.getAllAudioInputDeviceNames(), (QStringList{"Built-in Microphone", "Duplex"}));
    EXPECT_EQ(world.engine.getAllAudioOutputDeviceNames(), QStringList{"Built-in Output"})
        << "a device with input streams never counts as an output";
    EXPECT_FALSE(world.engine.changeAudioOutputDeviceWithName("Nobody"));
    EXPECT_TRUE(world.engine.changeAudioInputDeviceWithName("Duplex"));
    EXPECT_EQ(world.engine.defaultInputDevice(), "Duplex");
}

TEST(DeviceEngine, ResetsDefaultsThatWereLeftOnItsOwnDevices) {
    const struct {
        const char *left;
        bool builtIn;
        const char *expected;
    } cases[] = {{"Tessolar_AudioDevice", true, "Built-in Output"},
                 {"Tessolar_AudioDevice", false, "Headset"},
                 {"Soundflower", true, "Built-in Output"},
                 {"Headset", true, "Headset"}};
    for (const auto &[left, builtIn, expected] : cases) {
        RoutedWorld world;
        world.backend->plug(outputDevice("Headset"));
        world.backend->plug(EmbeddedBackend::plainDevice("Soundflower", "Soundflower", 0, 2));
        if (!builtIn)
            world.backend->unplug("builtin_output");
        world.backend->setConfiguredDefault(Direction::Output, QString::fromLatin1(left), std::nullopt);
        world.engine.activateSVAD();
        world.engine.resetDefaultAudioDevice();
        EXPECT_EQ(world.engine.defaultOutputDevice(), expected) << left << builtIn;
    }
}

TEST(DeviceEngine, JoinsMicrophoneAndSystemSound) {
    RoutedWorld world;
    EXPECT_TRUE(world.engine.createAggregateDevice().isEmpty()) << "no virtual device was found yet";
    ASSERT_TRUE(world.engine.activateSVAD());
    EXPECT_TRUE(world.engine.isAggregateDeviceChanged({}));
    const QVariantMap saved = world.engine.createAggregateDevice();
    EXPECT_EQ(saved, (QVariantMap{{"AggregateInputUID", "builtin_microphone"},
                                  {"AggregateOutputUID", "Tessolar_AudioDevice"}}));
    EXPECT_TRUE(world.engine.isExistAggregateDevice());
    EXPECT_FALSE(world.engine.isAggregateDeviceChanged(saved));
    EXPECT_FALSE(world.engine.getAllAudioInputDeviceNames().contains("Tessolar_AggregateDevice"));

    world.backend->plug(EmbeddedBackend::plainDevice("usb", "USB Microphone", 1, 0));
    world.engine.changeAudioInputDeviceWithName("USB Microphone");
    EXPECT_TRUE(world.engine.isAggregateDeviceChanged(saved));
    world.engine.destroyAggregateDevice();
    EXPECT_FALSE(world.engine.isExistAggregateDevice());
    world.engine.destroyAggregateDevice();
    EXPECT_EQ(EmbeddedWorld::devices().size(), 4u) << "destroying what is not there touches nothing";
    EXPECT_EQ(world.engine.createAggregateDevice().value("AggregateInputUID"), "usb");
}

TEST(DeviceEngine, AnnouncesDefaultDevices) {
    RoutedWorld world;
    world.backend->plug(outputDevice("Headset"));
    std::vector<QString> heard;
    auto &center = foundation::NotificationCenter::defaultCenter();
    const auto onOutput =
        center.subscribe<QVariantMap>(kNotificationDefaultOutputDidChange, [&](const QVariantMap &info) {
            heard.push_back(info.value("AudioDevice_name").toString());
        });
    const auto onInput =
        center.subscribe<QVariantMap>(kNotificationDefaultInputDidChange, [&](const QVariantMap &info) {
            heard.push_back("input " + QString::number(info.size()));
        });
    world.engine.addSystemAudioDeviceChangeListener();
    world.engine.changeAudioOutputDeviceWithName("Headset");
    world.backend->unplug("builtin_microphone");
    EXPECT_TRUE(heard.empty());
    world.system->deliverChanges();
    EXPECT_EQ(heard, (std::vector<QString>{"Headset", "input 0"}));
    world.engine.removeSystemAudioDeviceChangeListener();
    world.engine.changeAudioOutputDeviceWithName("Built-in Output");
    world.system->deliverChanges();
    EXPECT_EQ(heard.size(), 2u);
}

TEST(DeviceVolume, ReadsAndSetsByName) {
    RoutedWorld world;
    world.engine.activateSVAD();
    EXPECT_EQ(world.engine.getVolumeValueFromDeviceName("Nobody"), 50.0f);
    EXPECT_FALSE(world.engine.setVolume(1, "Nobody"));
    EXPECT_TRUE(world.engine.setVolume(0.5f, "Built-in Output"));
    EXPECT_FLOAT_EQ(world.engine.getVolumeValueFromDeviceName("Built-in Output"), 0.5f);

    const auto output = [&] {
        for (const DeviceRecord &record : world.backend->devices()) {
            if (record.uid == "builtin_output")
                return record.output;
        }
        return DeviceSide();
    };
    EXPECT_TRUE(world.engine.setVolume(0.0005f, "Built-in Output"));
    EXPECT_TRUE(output().muted);
    EXPECT_FLOAT_EQ(output().gains[0], 0.125f) << "muting leaves the level";
    EXPECT_TRUE(world.engine.setVolume(0.001f, "Built-in Output"));
    EXPECT_FALSE(output().muted);

    // The aggregate's name stands for the virtual device.
    EXPECT_TRUE(world.engine.setVolume(0.25f, "Tessolar_AggregateDevice"));
    EXPECT_FLOAT_EQ(world.engine.getVolumeValueFromDeviceName("Tessolar_AudioDevice"), 0.25f);

    SoftwareDevice mute = outputDevice("NoMute");
    mute.record.output.canMute = false;
    world.backend->plug(std::move(mute));
    EXPECT_FALSE(world.engine.setVolume(0.5f, "NoMute")) << "set, but it can't be unmuted";
    EXPECT_FLOAT_EQ(world.engine.getVolumeValueFromDeviceName("NoMute"), 0.5f);
    // Without that property and without muting, each preferred channel is set.
    EXPECT_TRUE(world.engine.setVolume(0, "NoMute"));
    EXPECT_FLOAT_EQ(world.engine.getVolumeValueFromDeviceName("NoMute"), 0);

    SoftwareDevice bare = EmbeddedBackend::plainDevice("bare", "Bare", 1, 0);
    bare.record.input.gains.clear();
    bare.record.input.canMute = false;
    world.backend->plug(std::move(bare));
    EXPECT_EQ(world.engine.getVolumeValueFromDeviceName("Bare"), -1.0f);
    EXPECT_FALSE(world.engine.setVolume(1, "Bare"));
    EXPECT_EQ(world.engine.numberOfInputChannels(named("Bare")), 4) << "the bytes of one stream";
    EXPECT_EQ(world.engine.numberOfInputChannels(9999), -1);
    EXPECT_FLOAT_EQ(world.engine.getInputDeviceVolume(named("Built-in Microphone")), 1.0f);
}

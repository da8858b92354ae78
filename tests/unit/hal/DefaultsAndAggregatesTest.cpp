#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace cantorel;
using namespace cantorel::hal;
using test::EmbeddedWorld;
using test::named;

namespace {

OSStatus setDefaultOutput(AudioDeviceID device) {
    return AudioHardwareSetProperty(kAudioHardwarePropertyDefaultOutputDevice, sizeof device, &device);
}

} // namespace

// What the person had chosen before, what happens meanwhile, and what must stand when the program goes back.
TEST(Defaults, GoingBackRestoresExactlyTheChoiceThatWasDisplaced) {
    const QString output = "builtin_output";
    const QString headset = "headset";
    const struct {
        const char *what;
        std::optional<QString> before;
        std::optional<QString> chosenMeanwhile;
        std::optional<QString> after;
    } cases[] = {
        {"no choice stays no choice", std::nullopt, std::nullopt, std::nullopt},
        {"a choice of an absent device stays", "gone", std::nullopt, "gone"},
        {"a plain choice comes back", output, std::nullopt, output},
        {"a choice made meanwhile stands", output, headset, headset},
        {"the same device, chosen meanwhile, stays chosen", std::nullopt, output, output},
    };
    for (const auto &[what, before, meanwhile, after] : cases) {
        EmbeddedWorld world;
        world.backend->plug(EmbeddedBackend::plainDevice(headset, "Headset", 0, 2));
        world.backend->setConfiguredDefault(Direction::Output, {before, QString()}, std::nullopt);
        const AudioDeviceID real = EmbeddedWorld::defaultOutput();
        ASSERT_EQ(setDefaultOutput(named("Tessolar_AudioDevice")), 0);
        ASSERT_EQ(EmbeddedWorld::defaultOutput(), named("Tessolar_AudioDevice"));
        if (meanwhile)
            world.backend->setConfiguredDefault(Direction::Output, {meanwhile, QString()}, std::nullopt);
        ASSERT_EQ(setDefaultOutput(meanwhile == headset ? named("Headset") : real), 0);
        EXPECT_EQ(world.backend->configuredDefault(Direction::Output), after) << what;
    }
}

// A real device that is lent for a while is no choice of the person's, in either direction.
TEST(Defaults, WhatIsBorrowedIsGivenBackUnlessAnotherWasChosenMeanwhile) {
    const QString gone = "gone", other = "other";
    const struct {
        Direction direction;
        std::optional<QString> before;
        std::optional<QString> chosenMeanwhile;
        std::optional<QString> after;
    } cases[] = {{Direction::Input, std::nullopt, std::nullopt, std::nullopt},
                 {Direction::Input, gone, std::nullopt, gone},
                 {Direction::Input, gone, other, other},
                 {Direction::Output, std::nullopt, std::nullopt, std::nullopt},
                 {Direction::Output, std::nullopt, other, other}};
    for (const auto &[direction, before, meanwhile, after] : cases) {
        EmbeddedWorld world;
        const bool input = direction == Direction::Input;
        for (const QString &uid : {QStringLiteral("lent"), other})
            world.backend->plug(EmbeddedBackend::plainDevice(uid, uid, input ? 2 : 0, input ? 0 : 2));
        world.backend->setConfiguredDefault(direction, {before, QString()}, std::nullopt);
        ASSERT_EQ(HardwareSystem::borrowDefault(direction, named("lent")), 0);
        EXPECT_EQ(input ? EmbeddedWorld::defaultInput() : EmbeddedWorld::defaultOutput(), named("lent"));
        if (meanwhile)
            world.backend->setConfiguredDefault(direction, {meanwhile, QString()}, std::nullopt);
        HardwareSystem::giveBackDefault(direction);
        EXPECT_EQ(world.backend->configuredDefault(direction), after);
        HardwareSystem::giveBackDefault(direction); // Nothing is left to give back.
        EXPECT_EQ(world.backend->configuredDefault(direction), after);
    }
    EXPECT_NE(HardwareSystem::borrowDefault(Direction::Input, 4711), 0) << "without a system";
}

// What is lent may please: a choice that the person makes here is told from the loan of the same device.
TEST(Defaults, TheDeviceThatIsLentStaysWhenItIsChosenMeanwhile) {
    for (const bool isGivenBack : {false, true}) { // as well as the server lets it
        EmbeddedWorld world;
        world.backend->plug(EmbeddedBackend::plainDevice(QStringLiteral("lent"), QStringLiteral("lent"), 0, 2));
        ASSERT_EQ(HardwareSystem::borrowDefault(Direction::Output, named("lent")), 0);
        world.backend->keepDefaults(!isGivenBack);
        if (isGivenBack)
            HardwareSystem::giveBackDefault(Direction::Output);
        world.backend->keepDefaults(true);
        ASSERT_EQ(setDefaultOutput(named("lent")), 0);
        HardwareSystem::giveBackDefault(Direction::Output);
        world.system->deliverChanges();
        EXPECT_EQ(world.backend->configuredDefault(Direction::Output), QStringLiteral("lent"));
        EXPECT_FALSE(QFile::exists(QDir::homePath() + QStringLiteral("/state/displaced-output.json")));
    }
}

// A server takes a choice at once, and tells later that it is in force.
TEST(Defaults, AChoiceThatIsNotYetInForceIsGivenBackAsWell) {
    struct SlowServer : EmbeddedBackend {
        using EmbeddedBackend::EmbeddedBackend;
        bool setConfiguredDefault(Direction direction, const DefaultSetting &setting,
                                  const std::optional<DefaultSetting> &guard) override {
            (void)EmbeddedBackend::setConfiguredDefault(direction, setting, guard);
            return false;
        }
    };
    auto backend = std::make_unique<SlowServer>(
        std::make_shared<ManualClock>(), [] { return true; }, test::kLoopbackNames.first());
    SlowServer &server = *backend;
    server.setConfiguredDefault(Direction::Output, QStringLiteral("gone"), std::nullopt);
    const HardwareSystem system(std::move(backend), QDir::homePath() + QStringLiteral("/state"));
    EXPECT_NE(setDefaultOutput(named("Tessolar_AudioDevice")), 0);
    ASSERT_EQ(server.configuredDefault(Direction::Output), QStringLiteral("Tessolar_AudioDevice"));
    HardwareSystem::giveBackDefault(Direction::Output);
    EXPECT_EQ(server.configuredDefault(Direction::Output), QStringLiteral("gone"));
}

// Killed with its guard, a power cut, a log-out that ends the server first: the next start gives back what was chosen.
TEST(Defaults, WhatAProgramLeftDisplacedIsGivenBackByTheNextOne) {
    const QString state = QDir::homePath() + "/state";
    const QString ours = "Tessolar_AudioDevice", other = "builtin_output";
    const auto nextStart = [&](const std::optional<QString> &stored, LeftDefault expected) {
        auto backend = std::make_unique<EmbeddedBackend>(
            std::make_shared<ManualClock>(), [] { return true; }, test::kLoopbackNames.first());
        EmbeddedBackend &server = *backend;
        (void)server.devices();
        server.setConfiguredDefault(Direction::Output, {stored, QString()}, std::nullopt);
        const HardwareSystem system(std::move(backend), state);
        EXPECT_EQ(HardwareSystem::leftDefault(Direction::Output), expected);
        return server.configuredDefault(Direction::Output);
    };
    for (const auto &choice : {std::optional<QString>(), std::optional(QStringLiteral("gone \"\\\n"))}) {
        {
            EmbeddedWorld world;
            world.backend->setConfiguredDefault(Direction::Output, {choice, QString()}, std::nullopt);
            ASSERT_EQ(setDefaultOutput(named("Tessolar_AudioDevice")), 0);
            EXPECT_EQ(nextStart(ours, LeftDefault::InUse), ours) << "its program lives";
        }
        EXPECT_EQ(nextStart(ours, LeftDefault::GivenBack), choice);
        EXPECT_EQ(nextStart(ours, LeftDefault::Nothing), ours) << "a choice that nobody displaced";
    }
    {
        EmbeddedWorld world;
        ASSERT_EQ(setDefaultOutput(named("Tessolar_AudioDevice")), 0);
    }
    EXPECT_EQ(nextStart(other, LeftDefault::Nothing), other) << "somebody has chosen meanwhile";
}

TEST(Defaults, WhatCannotBeGivenBackNowIsGivenBackLater) {
    for (const bool newsComes : {true, false}) {
        EmbeddedWorld world;
        world.backend->setConfiguredDefault(Direction::Output, QStringLiteral("gone"), std::nullopt);
        ASSERT_EQ(setDefaultOutput(named("Tessolar_AudioDevice")), 0);
        world.backend->keepDefaults(false);
        HardwareSystem::giveBackDefault(Direction::Output);
        world.system->deliverChanges();
        world.backend->keepDefaults(true);
        if (newsComes)
            world.system->deliverChanges();
        else // It is lent again at once.
            ASSERT_EQ(setDefaultOutput(named("Tessolar_AudioDevice")), 0);
        EXPECT_EQ(world.backend->configuredDefault(Direction::Output), newsComes ? "gone" : "Tessolar_AudioDevice");
        HardwareSystem::giveBackDefault(Direction::Output);
        EXPECT_EQ(world.backend->configuredDefault(Direction::Output), "gone");
        EXPECT_FALSE(QFile::exists(QDir::homePath() + "/state/displaced-output.json"));
    }
}

TEST(Defaults, RefuseDevicesWithoutThatSide) {
    EmbeddedWorld world;
    EXPECT_NE(setDefaultOutput(named("Built-in Microphone")), 0);
    EXPECT_NE(setDefaultOutput(0), 0);
    EXPECT_NE(setDefaultOutput(4711), 0);
    world.backend->unplug("builtin_microphone");
    EXPECT_EQ(EmbeddedWorld::defaultInput(), 0u) << "no microphone: no default input, never a monitor in its place";
}

TEST(Aggregate, JoinsItsMembersInOrderAndOutlivesTheProcess) {
    const QStringList members{"builtin_microphone", "Tessolar_AudioDevice"};
    {
        EmbeddedWorld world;
        ASSERT_NE(EmbeddedWorld::makeAggregate(members), 0u);
    }
    EmbeddedWorld world;
    ASSERT_TRUE(EmbeddedWorld::names().contains("Both"));
    const AudioDeviceID both = named("Both");
    CFArrayRef list = nullptr;
    std::uint32_t size = sizeof list;
    const AudioObjectPropertyAddress group = {kAudioAggregateDevicePropertyFullSubDeviceList,
                                              kAudioObjectPropertyScopeGlobal, 0};
    ASSERT_EQ(AudioObjectGetPropertyData(both, &group, 0, nullptr, &size, &list), 0);
    EXPECT_EQ(adoptRef(list), members);

    // The device goes with its last member, and comes back with the first.
    world.backend->unplug("builtin_microphone");
    EXPECT_EQ(named("Both"), both);
    world.virtualInstalled = false;
    EXPECT_EQ(named("Both"), 0u);
    world.virtualInstalled = true;
    EXPECT_EQ(named("Both"), both);

    AudioDeviceID doomed = both;
    size = sizeof doomed;
    const AudioObjectPropertyAddress destroy = {kAudioPlugInDestroyAggregateDevice, kAudioObjectPropertyScopeGlobal, 0};
    EXPECT_EQ(AudioObjectGetPropertyData(EmbeddedWorld::plugIn(), &destroy, 0, nullptr, &size, &doomed), 0);
    EXPECT_EQ(named("Both"), 0u);
    doomed = named("Built-in Output");
    EXPECT_NE(AudioObjectGetPropertyData(EmbeddedWorld::plugIn(), &destroy, 0, nullptr, &size, &doomed), 0);
}

TEST(Aggregate, DamagedStoreHoldsNothingAndHurtsNothing) {
    QDir().mkpath(QDir::homePath() + "/state");
    for (const QByteArray &damage : {QByteArray(), QByteArray("[{\"uid\":3},[],null,{}"), QByteArray("{\"a\":1}"),
                                     QByteArray("[{\"uid\":3},[],null,{}]"), QByteArray(1000, '[')}) {
        test::store(QDir::homePath() + "/state/aggregate-devices.json", damage);
        EmbeddedWorld world;
        EXPECT_EQ(EmbeddedWorld::devices().size(), 3u);
    }
}

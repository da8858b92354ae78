#include "tests/support/EmbeddedWorld.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cantorel;
using namespace cantorel::hal;
using test::EmbeddedWorld;
using test::named;

namespace {

template <class T> OSStatus read(AudioObjectID object, const AudioObjectPropertyAddress &address, T &value) {
    std::uint32_t size = sizeof value;
    return AudioObjectGetPropertyData(object, &address, 0, nullptr, &size, &value);
}

AudioObjectPropertyAddress at(AudioObjectPropertySelector selector,
                              AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal,
                              AudioObjectPropertyElement element = 0) {
    return {selector, scope, element};
}

std::uint32_t buffers(AudioDeviceID device, AudioObjectPropertyScope scope) {
    AudioBufferList list = {};
    return read(device, at(kAudioDevicePropertyStreamConfiguration, scope), list) ? 99 : list.mNumberBuffers;
}

struct Heard {
    std::vector<AudioObjectPropertySelector> selectors;
    int calls = 0;
    static OSStatus listen(AudioObjectID, std::uint32_t count, const AudioObjectPropertyAddress *addresses,
                           void *client) {
        auto *heard = static_cast<Heard *>(client);
        ++heard->calls;
        for (std::uint32_t i = 0; i < count; ++i)
            heard->selectors.push_back(addresses[i].mSelector);
        return 0;
    }
};

} // namespace

TEST(DeviceNames, AreUniqueWhateverTheServerCallsTheDevices) {
    EmbeddedWorld world;
    const auto plug = [&](const char *uid, const char *name, int in, int out) {
        world.backend->plug(EmbeddedBackend::plainDevice(uid, name, in, out));
    };
    plug("headset_a_mic", "USB Headset", 1, 0);
    plug("headset_a", "USB Headset", 0, 2);
    plug("headset_b", "USB Headset", 0, 2);
    plug("headset_b_mic", "USB Headset", 1, 0);
    plug("nameless", "", 0, 2);

    QStringList names = EmbeddedWorld::names();
    names.sort();
    // One headset after the other was plugged in, so the first microphone had the plain name before any output did.
    EXPECT_EQ(names, (QStringList{"Built-in Microphone", "Built-in Output", "Tessolar_AudioDevice", "USB Headset",
                                  "USB Headset (2)", "USB Headset (Input)", "USB Headset (Input) (2)", "nameless"}));
}

TEST(DeviceNames, AndIdentifiersComeBackWithTheirDevice) {
    EmbeddedWorld world;
    const AudioDeviceID microphone = named("Built-in Microphone");
    world.backend->unplug("builtin_microphone");
    EXPECT_EQ(named("Built-in Microphone"), 0u);
    world.backend->plug(EmbeddedBackend::plainDevice("other", "Other", 1, 0));
    EXPECT_NE(named("Other"), microphone);
    world.backend->plug(EmbeddedBackend::plainDevice("builtin_microphone", "Renamed", 2, 0));
    EXPECT_EQ(named("Built-in Microphone"), microphone);
    for (const AudioDeviceID device : EmbeddedWorld::devices())
        EXPECT_LT(device, 32768u);
}

TEST(DeviceProperties, TellSidesSizesAndFormats) {
    EmbeddedWorld world;
    world.backend->plug(EmbeddedBackend::plainDevice("duplex", "Duplex", 1, 4));
    const struct {
        const char *name;
        std::uint32_t inputBuffers, outputBuffers;
    } expected[] = {
        {"Built-in Output", 0, 1}, {"Built-in Microphone", 1, 0}, {"Tessolar_AudioDevice", 1, 1}, {"Duplex", 1, 1}};
    for (const auto &[name, inputs, outputs] : expected) {
        const AudioDeviceID device = named(name);
        EXPECT_EQ(buffers(device, kAudioDevicePropertyScopeInput), inputs) << name;
        EXPECT_EQ(buffers(device, kAudioDevicePropertyScopeOutput), outputs) << name;
    }
    const AudioDeviceID duplex = named("Duplex");
    AudioStreamBasicDescription format = {};
    ASSERT_EQ(read(duplex, at(kAudioDevicePropertyStreamFormat, kAudioDevicePropertyScopeOutput), format), 0);
    EXPECT_EQ(format.mSampleRate, 48000);
    EXPECT_EQ(format.mChannelsPerFrame, 4u);
    EXPECT_EQ(format.mBytesPerFrame, 16u);

    // A rate that the device can do is taken, others and other layouts are refused and change nothing.
    const auto address = at(kAudioDevicePropertyStreamFormat, kAudioDevicePropertyScopeOutput);
    for (const double rate : {44100.0, 12345.0, 0.0, double(NAN)}) {
        AudioStreamBasicDescription wanted = format;
        wanted.mSampleRate = rate;
        const OSStatus status = AudioObjectSetPropertyData(duplex, &address, 0, nullptr, sizeof wanted, &wanted);
        EXPECT_EQ(status == 0, rate == 44100) << rate;
    }
    AudioStreamBasicDescription wrong = format;
    wrong.mChannelsPerFrame = 2;
    EXPECT_EQ(AudioObjectSetPropertyData(duplex, &address, 0, nullptr, sizeof wrong, &wrong),
              kAudioDeviceUnsupportedFormatError);
    ASSERT_EQ(read(duplex, address, format), 0);
    EXPECT_EQ(format.mSampleRate, 44100);
}

TEST(DeviceProperties, NamesFitTheRoomGiven) {
    EmbeddedWorld world;
    const QString longName(100, 'x');
    world.backend->plug(EmbeddedBackend::plainDevice("long", longName, 1, 0));
    const AudioDeviceID device = named(longName);
    char name[64 + 1];
    std::memset(name, '!', sizeof name);
    std::uint32_t size = 64;
    ASSERT_EQ(AudioDeviceGetProperty(device, 0, true, kAudioDevicePropertyDeviceName, &size, name), 0);
    EXPECT_EQ(std::strlen(name), 63u);
    EXPECT_EQ(name[64], '!');
    AudioDeviceID room = 0;
    size = 2;
    EXPECT_EQ(AudioHardwareGetProperty(kAudioHardwarePropertyDefaultInputDevice, &size, &room),
              kAudioHardwareBadPropertySizeError);
    EXPECT_EQ(AudioDeviceGetProperty(12345, 0, true, kAudioDevicePropertyDeviceName, &size, name),
              kAudioHardwareBadObjectError);
}

TEST(Volume, MovesByTheCubeRootAndIsAnnounced) {
    EmbeddedWorld world;
    const AudioDeviceID output = named("Built-in Output");
    const auto master = at(kAudioHardwareServiceDeviceProperty_VirtualMasterVolume, kAudioDevicePropertyScopeOutput);
    const auto left = at(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeOutput, 1);
    Heard heard;
    ASSERT_EQ(AudioObjectAddPropertyListener(output, &master, Heard::listen, &heard), 0);
    ASSERT_EQ(AudioObjectAddPropertyListener(output, &left, Heard::listen, &heard), 0);

    const float half = 0.5f;
    ASSERT_EQ(AudioHardwareServiceSetPropertyData(output, &master, 0, nullptr, sizeof half, &half), 0);
    const auto gains = world.backend->devices();
    for (const DeviceRecord &record : gains) {
        if (record.uid == "builtin_output") {
            EXPECT_FLOAT_EQ(record.output.gains[1], 0.125f);
        }
    }
    float value = 0;
    ASSERT_EQ(read(output, left, value), 0);
    EXPECT_FLOAT_EQ(value, 0.5f);
    ASSERT_EQ(read(output, at(kAudioDevicePropertyVolumeDecibels, kAudioDevicePropertyScopeOutput, 2), value), 0);
    EXPECT_NEAR(value, -18.06f, 0.01f);
    EXPECT_FALSE(AudioObjectHasProperty(output, &master) && AudioObjectHasProperty(output, &left)
                 && read(output, at(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeOutput, 0), value) == 0);
    EXPECT_EQ(heard.calls, 0) << "listeners are never called from within a call";
    world.system->deliverChanges();
    EXPECT_EQ(heard.calls, 1) << "one procedure hears of all its properties at once";
    EXPECT_EQ(heard.selectors.size(), 2u);

    for (const float wild : {-1.0f, 2.0f, NAN}) {
        ASSERT_EQ(AudioHardwareServiceSetPropertyData(output, &master, 0, nullptr, sizeof wild, &wild), 0);
        ASSERT_EQ(read(output, master, value), 0);
        EXPECT_TRUE(value >= 0 && value <= 1) << wild;
    }
}

TEST(Listeners, HearOfDevicesAndDefaultsAndNothingAfterRemoval) {
    EmbeddedWorld world;
    Heard heard;
    const auto list = at(kAudioHardwarePropertyDevices);
    const auto defaultOutput = at(kAudioHardwarePropertyDefaultOutputDevice);
    for (const auto &address : {list, defaultOutput})
        AudioObjectAddPropertyListener(kAudioObjectSystemObject, &address, Heard::listen, &heard);
    world.backend->unplug("builtin_output");
    world.system->deliverChanges();
    EXPECT_EQ(heard.selectors, (std::vector{kAudioHardwarePropertyDefaultOutputDevice, kAudioHardwarePropertyDevices}));
    EXPECT_EQ(EmbeddedWorld::defaultOutput(), 0u) << "the virtual device is never chosen by itself";

    AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &list, Heard::listen, &heard);
    world.backend->plug(EmbeddedBackend::plainDevice("in", "In", 1, 0));
    world.system->deliverChanges();
    EXPECT_EQ(heard.selectors.size(), 2u);
}

TEST(Api, WithoutASystemAnswersThatNothingRuns) {
    AudioDeviceID device = 0;
    std::uint32_t size = sizeof device;
    EXPECT_EQ(AudioHardwareGetProperty(kAudioHardwarePropertyDevices, &size, &device), kAudioHardwareNotRunningError);
}

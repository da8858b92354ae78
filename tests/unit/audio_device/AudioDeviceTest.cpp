#include "audio_device/AudioDevice.h"

#include "audio_device/AudioDevices.h"
#include "audio_device/AudioProperty.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"

#include <gtest/gtest.h>

using namespace cantorel;
using namespace cantorel::hal;
using test::EmbeddedWorld;
using test::named;

TEST(PropertyAccess, OlderCallsTakeThePropertyAndNewerOnesAlwaysTheDeviceList) {
    EmbeddedWorld world;
    const auto devices = EmbeddedWorld::devices();
    AudioDeviceID answer[8] = {};
    std::uint32_t size = sizeof answer;
    ASSERT_EQ(PDAudioHardwareGetProperty(kAudioHardwarePropertyDefaultInputDevice, &size, answer), 0);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(answer[0], named("Built-in Microphone"));
    EXPECT_EQ(PDAudioDeviceGetObjectID("builtin_output"), named("Built-in Output"));
    EXPECT_EQ(PDAudioDeviceGetObjectID("nobody"), 0u);

    g_isAudioFuncDeprecaited = true;
    size = sizeof answer;
    ASSERT_EQ(PDAudioHardwareGetProperty(kAudioHardwarePropertyDefaultInputDevice, &size, answer), 0);
    EXPECT_EQ(std::vector(answer, answer + size / 4), devices);
    EXPECT_NE(PDAudioHardwareSetProperty(kAudioHardwarePropertyDefaultOutputDevice, 4, &devices[0]), 0);
    // Device properties read the same either way.
    EXPECT_EQ(getDevice_Name_FromDevice(devices[0]), EmbeddedWorld::nameOf(devices[0]));
    const AudioDeviceIOProc idle = [](AudioObjectID, const AudioTimeStamp *, const AudioBufferList *,
                                      const AudioTimeStamp *, AudioBufferList *, const AudioTimeStamp *,
                                      void *) { return OSStatus(0); };
    AudioDeviceIOProcID id = nullptr;
    EXPECT_EQ(PDAudioDeviceAddIOProc(devices[0], idle, nullptr, &id), 0);
    EXPECT_NE(id, nullptr);
    EXPECT_NE(id, idle);
    EXPECT_EQ(PDAudioDeviceRemoveIOProc(devices[0], id), 0);
    g_isAudioFuncDeprecaited = false;
    id = nullptr;
    EXPECT_EQ(PDAudioDeviceAddIOProc(devices[0], idle, nullptr, &id), 0);
    EXPECT_EQ(id, nullptr) << "the older call writes no identifier";
    EXPECT_EQ(PDAudioDeviceRemoveIOProc(devices[0], idle), 0);
}

TEST(PropertyAccess, DescribesDevicesAndTheirAbsence) {
    EmbeddedWorld world;
    EXPECT_EQ(getDevice_Name_FromDevice(0), QString());
    EXPECT_EQ(getDevice_UID_FromDevice(0), QString());
    EXPECT_EQ(getDevice_Name_FromDevice(999), "(null)");
    EXPECT_EQ(getDevice_UID_FromDevice(named("Built-in Output")), "builtin_output");
    EXPECT_TRUE(GetDeviceInfo(0).isEmpty());

    const AudioDeviceID device = named("Tessolar_AudioDevice");
    const QVariantMap info = GetDeviceInfo(device);
    EXPECT_EQ(info.value("AudioDevice_id").metaType(), QMetaType::fromType<short>());
    EXPECT_EQ(info.value("AudioDevice_id").toInt(), int(device));
    EXPECT_EQ(info.value("AudioDevice_name"), "Tessolar_AudioDevice");
    EXPECT_EQ(info.value("AudioDevice_ich"), 2);
    EXPECT_EQ(info.value("AudioDevice_och"), 2);
    EXPECT_EQ(GetDeviceInfo(999).keys(), QStringList{"AudioDevice_id"}) << "only what was obtained is set";
}

TEST(AudioDevice, ReadsItsSideAndKeepsFieldsOnFailure) {
    EmbeddedWorld world;
    world.backend->plug(EmbeddedBackend::plainDevice("duplex", "Duplex", 1, 4));
    AudioDevice record;
    record.Init(named("Duplex"), true);
    EXPECT_EQ(record.CountChannels(), 1u);
    EXPECT_EQ(record.bufferFrames, 512u);
    record.Init(named("Duplex"), false);
    EXPECT_EQ(record.CountChannels(), 4u);
    record.SetBufferSize(7);
    EXPECT_EQ(record.bufferFrames, 16u) << "the device rounds";
    EXPECT_EQ(record.SetSampleRate(44100), 0);
    EXPECT_EQ(record.streamFormat.mSampleRate, 44100);
    EXPECT_NE(record.SetSampleRate(1), 0);
    EXPECT_EQ(record.streamFormat.mSampleRate, 44100) << "a refused rate is read again";

    world.backend->unplug("duplex");
    record.SetBufferSize(1024);
    record.UpdateFormat();
    EXPECT_EQ(record.bufferFrames, 16u);
    EXPECT_EQ(record.streamFormat.mSampleRate, 44100);
    EXPECT_EQ(record.CountChannels(), 0u);
    record.Init(0, false);
    EXPECT_EQ(record.bufferFrames, 16u);
}

TEST(AudioDevices, AreThoseThatCanBeRecorded) {
    EmbeddedWorld world;
    const AudioDevices devices;
    EXPECT_EQ(devices.audioDevices(), (QStringList{"Tessolar_AudioDevice", "Built-in Microphone"}));
    ASSERT_TRUE(devices.getTheCaptureDeviceWithName("Built-in Microphone"));
    EXPECT_EQ(devices.getTheCaptureDeviceWithName("Built-in Microphone")->uniqueID, "builtin_microphone");
    EXPECT_FALSE(devices.getTheCaptureDeviceWithName("built-in microphone"));
    EXPECT_FALSE(devices.getTheCaptureDeviceWithName("Built-in Output"));
}

TEST(ExtendedAudioFile, WritesAWaveAndRefusesTheRest) {
    const FSRef folder{QDir::homePath()};
    const QString name = "new.wav";
    AudioStreamBasicDescription format = {
        48000, kAudioFormatLinearPCM, kAudioFormatFlagsNativeFloatPacked, 8, 1, 8, 2, 32, 0};
    ExtAudioFileRef file = nullptr;
    EXPECT_NE(PDExtAudioFileCreateNew(&folder, &name, fourCharCode("m4af"), &format, nullptr, &file), 0);
    ASSERT_EQ(PDExtAudioFileCreateNew(&folder, &name, kAudioFileWAVEType, &format, nullptr, &file), 0);
    float samples[2 * 100] = {};
    AudioBufferList data = {1, {{2, sizeof samples, samples}}};
    EXPECT_EQ(ExtAudioFileWrite(file, 100, &data), 0);
    EXPECT_NE(ExtAudioFileWrite(file, 101, &data), 0) << "more than the buffer holds";
    EXPECT_EQ(ExtAudioFileDispose(file), 0);
    const QByteArray bytes = test::contents(QDir::homePath() + "/new.wav");
    EXPECT_EQ(bytes.size(), 44 + 800);
    EXPECT_EQ(bytes.mid(36, 4), "data");
    EXPECT_EQ(bytes.mid(40, 4), QByteArray("\x20\x03\0\0", 4));
    EXPECT_NE(PDExtAudioFileCreateNew(&folder, &name, kAudioFileWAVEType, &format, nullptr, &file), 0)
        << "nothing is overwritten";
}

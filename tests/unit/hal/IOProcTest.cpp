#include "tests/support/EmbeddedWorld.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <numeric>

using namespace cantorel;
using namespace cantorel::hal;
using test::EmbeddedWorld;
using test::named;
using test::stamp;
using test::stampOf;

namespace {

// Writes down every call of its procedures, and does what a test wants inside them.
struct Recorder {
    std::vector<float> heard; // left channel of the input
    std::vector<double> inputTimes, outputTimes;
    std::vector<std::uint32_t> sizes; // bytes of each call
    std::vector<std::uint32_t> flags;
    std::vector<char> order; // of 'i' and 'o'
    bool dirtyOutput = false;
    float play = 0;
    AudioDeviceID stopDevice = 0;
    AudioDeviceIOProcID stopProc = nullptr;
    OSStatus stopStatus = -1;

    static OSStatus input(AudioObjectID, const AudioTimeStamp *now, const AudioBufferList *data,
                          const AudioTimeStamp *time, AudioBufferList *, const AudioTimeStamp *, void *client) {
        auto *self = static_cast<Recorder *>(client);
        self->order.push_back('i');
        self->flags.push_back(now->mFlags);
        self->inputTimes.push_back(time->mSampleTime);
        const AudioBuffer &buffer = data->mBuffers[0];
        self->sizes.push_back(buffer.mDataByteSize);
        const auto *samples = static_cast<const float *>(buffer.mData);
        for (std::uint32_t i = 0; i < buffer.mDataByteSize / sizeof(float); i += buffer.mNumberChannels)
            self->heard.push_back(samples[i]);
        if (self->stopDevice)
            self->stopStatus = AudioDeviceStop(self->stopDevice, self->stopProc);
        return 0;
    }
    static OSStatus output(AudioObjectID, const AudioTimeStamp *, const AudioBufferList *, const AudioTimeStamp *,
                           AudioBufferList *data, const AudioTimeStamp *time, void *client) {
        auto *self = static_cast<Recorder *>(client);
        self->order.push_back('o');
        self->outputTimes.push_back(time->mSampleTime);
        if (data->mNumberBuffers == 0)
            return 0;
        auto *samples = static_cast<float *>(data->mBuffers[0].mData);
        for (std::uint32_t i = 0; i < data->mBuffers[0].mDataByteSize / sizeof(float); ++i) {
            self->dirtyOutput = self->dirtyOutput || samples[i] != 0;
            samples[i] += self->play;
        }
        return 0;
    }
};

void setBufferFrames(AudioDeviceID device, std::uint32_t frames) {
    ASSERT_EQ(
        AudioDeviceSetProperty(device, nullptr, 0, true, kAudioDevicePropertyBufferFrameSize, sizeof frames, &frames),
        0);
}

} // namespace

class Reblocking : public testing::TestWithParam<std::pair<std::uint32_t, std::uint32_t>> {};

TEST_P(Reblocking, GivesExactlyTheBlockSizeAndEveryFrameOnce) {
    const auto [cycle, block] = GetParam();
    EmbeddedWorld world;
    SoftwareDevice device = EmbeddedBackend::plainDevice("odd", "Odd", 2, 0);
    device.record.cycleFrames = cycle;
    device.source = stamp;
    world.backend->plug(std::move(device));
    const AudioDeviceID id = named("Odd");
    setBufferFrames(id, block);

    Recorder recorder;
    AudioDeviceIOProcID proc = nullptr;
    ASSERT_EQ(AudioDeviceCreateIOProcID(id, Recorder::input, &recorder, &proc), 0);
    ASSERT_EQ(AudioDeviceStart(id, proc), 0);
    world.advance(500);
    ASSERT_EQ(AudioDeviceStop(id, proc), 0);

    ASSERT_GT(recorder.heard.size(), 20000u);
    for (std::size_t i = 0; i < recorder.heard.size(); ++i)
        ASSERT_EQ(stampOf(recorder.heard[i]), std::int64_t(i));
    for (std::size_t i = 0; i < recorder.sizes.size(); ++i) {
        ASSERT_EQ(recorder.sizes[i], block * 2 * sizeof(float));
        ASSERT_EQ(recorder.inputTimes[i], double(i * block));
    }
    // The added frames stand in the safety offset: none where a block holds whole cycles.
    std::uint32_t safety = 99, size = sizeof safety;
    AudioDeviceGetProperty(id, 0, true, kAudioDevicePropertySafetyOffset, &size, &safety);
    EXPECT_EQ(safety == 0, block % cycle == 0);
}
INSTANTIATE_TEST_SUITE_P(Sizes, Reblocking,
                         testing::Values(std::pair(512u, 512u), std::pair(1024u, 512u), std::pair(256u, 512u),
                                         std::pair(480u, 512u), std::pair(441u, 512u), std::pair(2048u, 100u),
                                         std::pair(16u, 4096u)));

TEST(Playing, KeepsEveryFrameAndMixesProcedures) {
    for (const std::uint32_t cycle : {512u, 1024u, 480u, 300u}) {
        EmbeddedWorld world;
        SoftwareDevice device = EmbeddedBackend::plainDevice("odd", "Odd", 0, 2);
        device.record.cycleFrames = cycle;
        std::vector<float> out;
        device.tap = [&](std::span<const float> samples, int, std::int64_t) {
            out.insert(out.end(), samples.begin(), samples.end());
        };
        world.backend->plug(std::move(device));
        const AudioDeviceID id = named("Odd");
        Recorder one, two;
        one.play = 0.25f;
        two.play = 0.5f;
        AudioDeviceIOProcID first = nullptr, second = nullptr;
        AudioDeviceCreateIOProcID(id, Recorder::output, &one, &first);
        AudioDeviceCreateIOProcID(id, Recorder::output, &two, &second);
        ASSERT_NE(first, second);
        AudioDeviceStart(id, first);
        AudioDeviceStart(id, second);
        world.advance(100);
        AudioDeviceStop(id, first);
        AudioDeviceStop(id, second);
        EXPECT_FALSE(one.dirtyOutput) << "the first procedure finds silence";
        ASSERT_FALSE(out.empty());
        for (const float sample : out)
            ASSERT_EQ(sample, 0.75f) << cycle;
    }
}

TEST(Stopping, FromItsOwnProcedureIsTheLastCall) {
    EmbeddedWorld world;
    const AudioDeviceID microphone = named("Built-in Microphone");
    Recorder recorder, other;
    ASSERT_EQ(AudioDeviceAddIOProc(microphone, Recorder::input, &recorder), 0);
    EXPECT_NE(AudioDeviceAddIOProc(microphone, Recorder::input, &other), 0) << "the procedure is its own name";
    recorder.stopDevice = microphone;
    recorder.stopProc = Recorder::input;
    AudioDeviceStart(microphone, Recorder::input);
    world.advance(200);
    EXPECT_EQ(recorder.stopStatus, 0);
    EXPECT_EQ(recorder.order.size(), 1u);

    recorder.stopDevice = named("Built-in Output");
    AudioDeviceStart(microphone, Recorder::input);
    world.advance(50);
    EXPECT_EQ(recorder.stopStatus, kAudioHardwareIllegalOperationError) << "only its own device";
    EXPECT_EQ(AudioDeviceStop(microphone, Recorder::input), 0);
    const std::size_t calls = recorder.order.size();
    world.advance(50);
    EXPECT_EQ(recorder.order.size(), calls);
    EXPECT_EQ(AudioDeviceRemoveIOProc(microphone, Recorder::input), 0);
    EXPECT_NE(AudioDeviceRemoveIOProc(microphone, Recorder::input), 0);
    EXPECT_NE(AudioDeviceStart(microphone, Recorder::input), 0);
}

TEST(Group, ReadsBeforeItPlaysAndKeepsItsDistance) {
    EmbeddedWorld world;
    const AudioDeviceID input = named("Tessolar_AudioDevice");
    const AudioDeviceID output = named("Built-in Output");
    Recorder group;
    AudioDeviceAddIOProc(input, Recorder::input, &group);
    AudioDeviceAddIOProc(output, Recorder::output, &group);
    AudioDeviceStart(input, Recorder::input);
    world.advance(37);
    AudioDeviceStart(output, Recorder::output);
    group.order.clear();
    group.inputTimes.clear();
    world.advance(300);
    ASSERT_GT(group.order.size(), 20u);
    for (std::size_t i = 0; i + 1 < group.order.size(); i += 2) {
        ASSERT_EQ(group.order[i], 'i');
        ASSERT_EQ(group.order[i + 1], 'o');
    }
    const double distance = group.outputTimes[0] - group.inputTimes[0];
    for (std::size_t i = 0; i < group.outputTimes.size(); ++i)
        ASSERT_EQ(group.outputTimes[i] - group.inputTimes[i], distance);
    AudioDeviceStop(input, Recorder::input);
    const std::size_t played = group.outputTimes.size();
    world.advance(100);
    EXPECT_GT(group.outputTimes.size(), played) << "who plays goes on without the one who read";
    AudioDeviceStop(output, Recorder::output);
}

TEST(Loopback, IsNotFedByItsOwnReaderUnlessAsked) {
    EmbeddedWorld world;
    const AudioDeviceID loopback = named("Tessolar_AudioDevice");
    Recorder recorder;
    recorder.play = 0.5f;
    AudioDeviceAddIOProc(loopback, Recorder::input, &recorder);
    AudioDeviceAddIOProc(loopback, Recorder::output, &recorder);
    AudioDeviceStart(loopback, Recorder::input);
    AudioDeviceStart(loopback, Recorder::output);
    world.advance(100);
    for (const float sample : recorder.heard)
        ASSERT_EQ(sample, 0.0f);
    AudioDeviceStop(loopback, Recorder::output);

    const AudioDeviceIOProcStreamUsage usage = {Recorder::output, 0, 1};
    ASSERT_EQ(AudioDeviceSetProperty(loopback, nullptr, 0, false, kAudioDevicePropertyIOProcStreamUsage, sizeof usage,
                                     &usage),
              0);
    recorder.heard.clear();
    AudioDeviceStart(loopback, Recorder::output);
    world.advance(100);
    ASSERT_FALSE(recorder.heard.empty());
    EXPECT_EQ(recorder.heard.back(), 0.5f);
    AudioDeviceStop(loopback, Recorder::output);
    AudioDeviceStop(loopback, Recorder::input);
}

TEST(Loopback, LoudnessTurnsWhatIsHeardAndNotWhatIsRecorded) {
    EmbeddedWorld world;
    const AudioDeviceID loopback = named("Tessolar_AudioDevice");
    const AudioDeviceID output = named("Built-in Output");
    float heard = -1;
    world.backend->setTap("builtin_output",
                          [&](std::span<const float> samples, int, std::int64_t) { heard = samples.back(); });
    const auto program = world.backend->play(test::constant(0.5f), "Tessolar_AudioDevice");
    Recorder thru;
    thru.play = 0.5f;
    AudioDeviceAddIOProc(loopback, Recorder::input, &thru);
    AudioDeviceAddIOProc(output, Recorder::output, &thru);
    AudioDeviceStart(loopback, Recorder::input);
    AudioDeviceStart(output, Recorder::output);
    world.advance(50);
    EXPECT_EQ(heard, 0.5f);

    world.backend->setGains("Tessolar_AudioDevice", Direction::Output, {0.25f, 0.25f});
    world.system->deliverChanges();
    world.advance(50);
    EXPECT_EQ(heard, 0.125f);
    EXPECT_EQ(thru.heard.back(), 0.5f);
    world.backend->setMuted("Tessolar_AudioDevice", Direction::Output, true);
    world.system->deliverChanges();
    world.advance(50);
    EXPECT_EQ(heard, 0.0f);
    EXPECT_EQ(thru.heard.back(), 0.5f);
    AudioDeviceStop(output, Recorder::output);
    AudioDeviceStop(loopback, Recorder::input);
}

TEST(Vanishing, DeviceIsTakenUpAgainWithItsOwnSoundOnly) {
    EmbeddedWorld world;
    world.backend->setSource("builtin_microphone", stamp);
    const AudioDeviceID microphone = named("Built-in Microphone");
    Recorder recorder;
    AudioDeviceIOProcID proc = nullptr;
    AudioDeviceCreateIOProcID(microphone, Recorder::input, &recorder, &proc);
    AudioDeviceStart(microphone, proc);
    world.advance(100);
    world.backend->unplug("builtin_microphone");
    world.backend->plug(EmbeddedBackend::plainDevice("other", "Other", 2, 0));
    const std::size_t calls = recorder.order.size();
    world.system->deliverChanges();
    world.advance(100);
    EXPECT_EQ(recorder.order.size(), calls) << "no other device takes its place";

    SoftwareDevice back = EmbeddedBackend::plainDevice("builtin_microphone", "Built-in Microphone", 2, 0);
    back.source = stamp;
    world.backend->plug(std::move(back));
    world.system->deliverChanges();
    world.advance(100);
    ASSERT_GT(recorder.order.size(), calls);
    EXPECT_TRUE(recorder.flags[calls] & kAudioTimeStampDiscontinuity);
    EXPECT_FALSE(recorder.flags[calls + 1] & kAudioTimeStampDiscontinuity);
    EXPECT_EQ(recorder.inputTimes[calls], recorder.inputTimes[calls - 1] + 512) << "the count of frames never jumps";
    EXPECT_EQ(AudioDeviceDestroyIOProcID(microphone, proc), 0);
}

TEST(Vanishing, ADeviceThatIsBackBeforeItIsReadyIsTriedAgainWithoutFurtherNews) {
    EmbeddedWorld world;
    const QString uid = QStringLiteral("builtin_microphone");
    const AudioDeviceID microphone = named("Built-in Microphone");
    Recorder recorder;
    AudioDeviceIOProcID proc = nullptr;
    AudioDeviceCreateIOProcID(microphone, Recorder::input, &recorder, &proc);
    AudioDeviceStart(microphone, proc);
    world.advance(100);
    world.backend->unplug(uid);
    world.system->deliverChanges();
    world.backend->plug(EmbeddedBackend::plainDevice(uid, QStringLiteral("Built-in Microphone"), 2, 0));
    world.backend->stall(uid, true);
    for (int news = 0; news < 10; ++news)
        QCoreApplication::processEvents();
    const std::size_t calls = recorder.order.size();
    world.backend->stall(uid, false);
    for (const QDeadlineTimer deadline(20000); recorder.order.size() == calls && !deadline.hasExpired();) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        world.advance(1);
    }
    EXPECT_GT(recorder.order.size(), calls);
    AudioDeviceStop(microphone, proc);
}

TEST(Vanishing, WallClockStreamsEndCleanlyUnderChurn) {
    auto owned = std::make_unique<EmbeddedBackend>(makeWallDeviceClock());
    EmbeddedBackend *backend = owned.get();
    HardwareSystem system(std::move(owned), QDir::homePath());
    for (int round = 0; round < 50; ++round) {
        const AudioDeviceID microphone = named("Built-in Microphone");
        Recorder recorder;
        AudioDeviceIOProcID proc = nullptr;
        ASSERT_EQ(AudioDeviceCreateIOProcID(microphone, Recorder::input, &recorder, &proc), 0);
        ASSERT_EQ(AudioDeviceStart(microphone, proc), 0);
        if (round % 3 == 0) {
            backend->unplug("builtin_microphone");
            system.deliverChanges();
            backend->plug(EmbeddedBackend::plainDevice("builtin_microphone", "Built-in Microphone", 2, 0));
        }
        system.deliverChanges();
        ASSERT_EQ(AudioDeviceStop(microphone, proc), 0);
        const std::size_t calls = recorder.order.size();
        ASSERT_EQ(AudioDeviceDestroyIOProcID(microphone, proc), 0);
        ASSERT_EQ(recorder.order.size(), calls);
    }
}

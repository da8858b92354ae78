#include "recording/session/RecordManager.h"

#include "lang/Lang.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <sys/resource.h>

namespace cantorel {
namespace {

class RecordManagerTest : public test::RecordingFixture {
public:
    RecordManagerTest() {
        manager.delegate = &owner;
        mStates = foundation::NotificationCenter::defaultCenter().subscribe<RecordingStateUpdate>(
            kNotificationUpdateRecordingState, [this](const RecordingStateUpdate &update) {
                EXPECT_EQ(update.manager, &manager);
                states.push_back(update.RecordState);
                preparing.push_back(manager.isPrepareRecording());
            });
    }
    ~RecordManagerTest() override { manager.clear(); }

    bool start(int source, const char *name = "a.m4a") {
        AppSettings::setAudioType(source);
        return manager.startRecord(QUrl::fromLocalFile(path(name)));
    }
    bool runsFor(double seconds) {
        return stepUntil([&] {
            const auto *recorder = ZQAVRecorderKit::sharedInstance().getAudioRecorder();
            return owner.started && recorder->recordingCounts().seconds() >= seconds;
        });
    }
    bool ends() {
        return stepUntil([&] { return owner.finished > 0; });
    }

    test::ManagerLog owner;
    RecordManager manager;
    std::vector<int> states;
    std::vector<bool> preparing;

private:
    foundation::NotificationCenter::Subscription mStates;
};

} // namespace

TEST_F(RecordManagerTest, SystemSoundIsBorrowedAndGivenBackAtTheStop) {
    EXPECT_TRUE(ZQAudioKextKit::setVolume(0.25f, "Tessolar_AudioDevice"));
    ASSERT_TRUE(start(0));
    EXPECT_FALSE(manager.isPrepareRecording());
    EXPECT_EQ(output(), "Tessolar_AudioDevice");
    EXPECT_EQ(ZQAudioKextKit::getVolumeValueFromDeviceName(output()), 1.0f);
    EXPECT_EQ(AppSettings::getAudioOutputDeviceNameBeforeRecording(), "Built-in Output");
    EXPECT_EQ(AppSettings::getAudioInputDeviceNameBeforeRecording(), "Built-in Microphone");
    EXPECT_EQ(AppSettings::getRecordingOutputDeviceName(), "Built-in Output");
    ASSERT_TRUE(runsFor(1.5));
    EXPECT_EQ(states, (std::vector{1, 2}));
    EXPECT_EQ(preparing, (std::vector{true, false})) << "the first is posted while startRecord runs";
    EXPECT_EQ(manager.recordingDuration(), 1) << "whole seconds";
    EXPECT_GT(manager.recordedFileSize(), 0);
    manager.stopRecord();
    EXPECT_EQ(output(), "Built-in Output") << "not only when the file is finished";
    EXPECT_EQ(chosenOutput(), std::nullopt) << "an absent choice stays absent";
    ASSERT_TRUE(ends());
    EXPECT_EQ(owner.sentence, QString());
    EXPECT_GE(owner.counts.seconds(), 1.5);
    EXPECT_NE(owner.counts.seconds(), std::floor(owner.counts.seconds())) << "the true length";
    EXPECT_EQ(owner.counts.bytes, QFileInfo(path("a.m4a")).size());
    manager.clear();
    EXPECT_EQ(manager.recordedFileSize(), owner.counts.bytes) << "known after the recorder has gone";
}

TEST_F(RecordManagerTest, AMicrophoneRecordingLeavesDefaultsAlone) {
    ASSERT_TRUE(start(1));
    EXPECT_EQ(output(), "Built-in Output");
    ASSERT_TRUE(runsFor(0.5));
    EXPECT_EQ(chosenOutput(), std::nullopt);
    world.backend->setConfiguredDefault(hal::Direction::Output, QStringLiteral("Tessolar_AudioDevice"), std::nullopt);
    manager.stopRecord();
    EXPECT_EQ(output(), "Tessolar_AudioDevice") << "whatever it is by now";
    ASSERT_TRUE(ends());
    EXPECT_EQ(AppSettings::getAudioOutputDeviceNameBeforeRecording(), "Built-in Output");
}

TEST_F(RecordManagerTest, AnUnknownSourceRecordsNothingAndSaysSo) {
    ASSERT_TRUE(start(7)) << "the recorder tells by its delegate";
    ASSERT_TRUE(ends());
    EXPECT_FALSE(owner.sentence.isEmpty());
    EXPECT_FALSE(manager.isRecording());
    EXPECT_EQ(chosenOutput(), std::nullopt);
}

TEST_F(RecordManagerTest, AFileThatIsNotWantedIsDeletedWithoutAReport) {
    owner.needsSave = false;
    ASSERT_TRUE(start(1));
    ASSERT_TRUE(runsFor(0.5));
    manager.stopRecord();
    ASSERT_TRUE(stepUntil([&] { return owner.asked > 0; }));
    EXPECT_FALSE(QFile::exists(path("a.m4a")));
    world.advance(500);
    QCoreApplication::processEvents();
    EXPECT_EQ(owner.finished, 0);
    manager.postRecordingNotification();
    EXPECT_EQ(states.back(), 2) << "the state stays";
}

TEST_F(RecordManagerTest, AnErrorLetsTheRecorderGoAndIsReportedOnce) {
    const auto *before = ZQAVRecorderKit::sharedInstance().getAudioRecorder();
    ASSERT_TRUE(start(0, "missing/a.m4a"));
    ASSERT_TRUE(ends());
    EXPECT_FALSE(owner.sentence.isEmpty());
    EXPECT_EQ(owner.started, 0);
    EXPECT_EQ(owner.asked, 0) << "whether to keep it is asked of good files only";
    EXPECT_NE(ZQAVRecorderKit::sharedInstance().getAudioRecorder(), before);
    manager.stopRecord();
    EXPECT_EQ(output(), "Built-in Output");
    EXPECT_EQ(owner.finished, 1);
}

TEST_F(RecordManagerTest, AVolumeThatThePersonChoseOutlivesASplit) {
    ASSERT_TRUE(start(0));
    ASSERT_TRUE(runsFor(0.3));
    ASSERT_TRUE(ZQAudioKextKit::setVolume(0.5f, "Tessolar_AudioDevice"));
    manager.joinNextRecording();
    manager.stopRecord();
    ASSERT_TRUE(ends());
    ASSERT_TRUE(start(0));
    EXPECT_FLOAT_EQ(ZQAudioKextKit::getVolumeValueFromDeviceName("Tessolar_AudioDevice"), 0.5f);
    manager.stopRecord();
    ASSERT_TRUE(ends());
}

} // namespace cantorel

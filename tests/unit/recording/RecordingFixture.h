#pragma once

#include "audio_device/ZQAudioKextKit.h"
#include "capture/ZQAVRecorderKit.h"
#include "lang/Lang.h"
#include "platform/desktop/Services.h"
#include "recording/library/RecordedList.h"
#include "recording/session/RecordingSession.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace cantorel::test {

// Writes down what a session tells.
struct SessionLog : RecordingSessionView {
    void recordingStarted(const QString &path, const QString &recorded) override {
        started.append(path);
        file = path;
        device = recorded;
    }
    void recordingFinished(const FinishedRecording &recording) override { finished.push_back(recording); }
    void recordingFailed(const RecordingTrouble &trouble) override {
        failed.append(Lang::english(trouble.sentence));
        kept = trouble.kept;
    }
    void recordingFiltered(const QString &path, double) override { filtered.append(path); }
    void recordingRecovered(const RecordingJournal::Recovered &recording) override { recovered.append(recording.file); }
    void recordingSilent(const foundation::Sentence &sentence) override { silent.append(Lang::english(sentence)); }
    void recordingEndsEarly(const foundation::Sentence &sentence) override { early.append(Lang::english(sentence)); }
    void recordingPaused(bool bySilence) override { pauses += bySilence ? 's' : 'p'; }
    void recordingResumed() override { pauses += 'r'; }
    void recordingDeviceLost(const QString &gone) override {
        devices += 'l';
        lostDevice = gone;
    }
    void recordingDeviceBack(const QString &) override { devices += 'b'; }
    void recordingFramesLost(qint64 frames) override { lostFrames += frames; }
    void recordingDisplay(const RecordingDisplay &shown) override { display = shown; }
    void recordingControlsDidChange(const RecordingControls &shown) override { controls = shown; }
    void recordingSettled() override { ++settled; }

    QStringList started, failed, filtered, recovered, silent, early;
    QString file, device, kept, lostDevice; // of the last that was told
    std::vector<FinishedRecording> finished;
    QByteArray pauses;  // "s" by silence, "p" by the person, "r" resumed
    QByteArray devices; // "l" lost, "b" back
    qint64 lostFrames = 0;
    RecordingDisplay display;
    RecordingControls controls;
    int settled = 0;
};

// Writes down what a RecordManager tells.
struct ManagerLog : QObject, RecordManagerDelegate {
    void RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &) override { ++started; }
    void RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &, const media::RecordingCounts &told,
                                                      const std::optional<foundation::Failure> &failure) override {
        ++finished;
        counts = told;
        sentence = failure ? Lang::english(failure->sentence) : QString();
    }
    void RecordManagerUpdateAudioLevel(RecordManager &, float) override { ++levels; }
    bool RecordManagerRecordFileIsNeedSave() override {
        ++asked;
        return needsSave;
    }

    int started = 0, finished = 0, levels = 0, asked = 0;
    media::RecordingCounts counts; // of the last
    QString sentence;
    bool needsSave = true;
};

// Recordings on software devices, stepped by hand: sound plays to the default output and into the microphone.
class RecordingFixture : public testing::Test {
public:
    explicit RecordingFixture(EmbeddedWorld::Virtual installed = EmbeddedWorld::Virtual::Installed) : world(installed) {
        standardUserDefaults().setArgument(setting::kOutputFolderPath.key, folder.path());
        ZQAudioKextKit::activateSVAD();
        world.backend->setSource("builtin_microphone", stamp);
        mPlayer = world.backend->play(stamp);
    }
    ~RecordingFixture() override {
        RecorderRelease(ZQAVRecorderKit::sharedInstance().getAudioRecorder());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ZQAudioKextKit::end();
    }

    void silencePlayer() { mPlayer.reset(); }
    // Lets time pass until the condition holds.
    bool stepUntil(const std::function<bool()> &condition) {
        // The converter stands back behind all else that the machine does.
        return eventually(
            [&] {
                world.advance(50);
                return condition();
            },
            60000);
    }
    static QString output() { return ZQAudioKextKit::getDefaultAudioOutputName(); }
    std::optional<QString> chosenOutput() const { return world.backend->configuredDefault(hal::Direction::Output); }
    RecorderCommons commonsIn(const char *stateFolder) const {
        return {QDir::homePath() + '/' + stateFolder, *world.clock, desktop::InstalledServices::current().sleep.get()};
    }
    QString path(const char *name) const { return folder.filePath(name); }

    EmbeddedWorld world;
    QTemporaryDir folder;

private:
    std::shared_ptr<void> mPlayer;
};

} // namespace cantorel::test

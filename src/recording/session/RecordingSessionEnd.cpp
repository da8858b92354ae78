#include "log/GuardedAction.h"
#include "platform/desktop/Services.h"
#include "platform/media/RecordingRepair.h"
#include "platform/media/SoundReader.h"
#include "recording/session/RecordingSession.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

// What becomes of a file that has ended, and what follows it.

namespace cantorel {

using foundation::Failure;
using foundation::Result;
using namespace std::chrono_literals;

namespace {

constexpr foundation::SentenceKey kFileRemoved("FileRemoved", "FileName");
constexpr foundation::SentenceKey kNoSound("NoSound", "Device");
constexpr foundation::SentenceKey kFolderRemoved("FolderRemoved", "FileName", "Folder");

constexpr auto kRestartInterval = 1s;
constexpr int kMostFailuresInARow = 3;

} // namespace

void RecordingSession::RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &url, double duration,
                                                                    const std::optional<Failure> &failure) {
    const qint64 dropped = mRecordManager->droppedFrames(); // The last ones came behind the last level.
    const FinishedRecording recording{url.toLocalFile(), duration, mRecordManager->recordedFileSize(), dropped,
                                      mLostFrames + dropped - mDroppedFrames};
    mIsWriting = false;
    mTaskSecondsBefore += duration;
    if (!mFile.isEmpty() && recording.file != mFile)
        rescued(recording.file);
    if (failure && !stopRecordingByRemoveFile) {
        interrupted(recording, *failure);
        return;
    }
    AppSettings::setOutputFileName({});
    const bool removed = std::exchange(stopRecordingByRemoveFile, false) || !QFileInfo::exists(recording.file);
    mRecordManager->clear();
    if (removed || recording.seconds <= 0) {
        if (mCurRecordAudioInfo)
            mList.remove(*mCurRecordAudioInfo);
        mJournal.end(recording.file);
        if (!failure)
            QFile::remove(recording.file); // It holds nothing.
        if (!failure && !removed && mGoesOnAfterSleep) {
            goOn();
            return;
        }
        end({failure ? failure->sentence : removed ? kFileRemoved(recording.file) : kNoSound(mDevice), {}});
        return;
    }
    mFailuresInARow = 0;
    filter(recording);
    if (mCurRecordAudioInfo)
        complete(recording);
    AppSettings::setrecordNameBaseOn(AppSettings::recordNameBaseOn() + 1);
    goOn();
}

// What could not be closed, on a full disk for one, is a leftover for the next start of the program.
void RecordingSession::endOrGiveUp(const QString &file) {
    if (media::isUnfinished(file))
        mJournal.giveUp(file);
    else
        mJournal.end(file);
}

// The folder was removed, and what was recorded is in another now. Nothing follows.
void RecordingSession::rescued(const QString &file) {
    mJournal.end(mFile);
    (void)mJournal.begin(file); // Ended as that of any file.
    if (mCurRecordAudioInfo)
        mCurRecordAudioInfo->setFileName(file);
    stopRecordingByRemoveFile = isStoppedBySilence = isAutoSplitEverySeconds = mStartsAfterFile = false;
    mView.recordingEndsEarly(kFolderRemoved(mFile, QFileInfo(file).path()));
    mFile = file;
}

void RecordingSession::filter(const FinishedRecording &recording) {
    const int shortest = AppSettings::autoFilterSeconds();
    if (!AppSettings::isAutoFilterAudioFile() || shortest < 1 || shortest <= recording.seconds)
        return;
    if (!QFile::remove(recording.file)) {
        mList.addInvalidFile(recording.file);
        return;
    }
    mJournal.end(recording.file);
    if (mCurRecordAudioInfo) {
        if (mCurRecordAudioInfo->shutdownEnable)
            mCurRecordAudioInfo->ShutdownMonitorDelegate->shutdownRequestedBy(*mCurRecordAudioInfo);
        mList.remove(*mCurRecordAudioInfo);
    }
    mView.recordingFiltered(recording.file, recording.seconds);
}

void RecordingSession::complete(const FinishedRecording &recording) {
    RecordedAudioInfo &item = *mCurRecordAudioInfo;
    const QString size = ToolFile::fileSizeFormatterToString(recording.bytes);
    item.isRecording = false;
    item.setStatus({});
    item.Seconds = recording.seconds;
    item.setDuration(ToolString::stringFromDuration(recording.seconds));
    item.setSize(size);
    mList.save(item);
    endOrGiveUp(recording.file);
    convert(recording);
    Log(QStringLiteral("did stop record succ :\n{\n    Path = %1\n    Duration = %2 s\n    FileSize = %3\n}")
            .arg(recording.file, QString::number(recording.seconds, 'f', 2), size));
}

void RecordingSession::convert(FinishedRecording recording) {
    mView.recordingConverting(recording.file);
    mConversions.convertRecordedfileFormat(*mCurRecordAudioInfo, [this, recording](const Result<QString> &result) {
        FinishedRecording finished = recording;
        if (result) {
            finished.file = result.value();
            finished.bytes = QFileInfo(finished.file).size();
            mView.recordingFinished(finished);
        } else {
            mView.recordingFailed(
                {result.failure().sentence, QFile::exists(recording.file) ? recording.file : QString()});
        }
        settle();
    });
}

// After an error the recording is started again, at most once a second, until three have brought nothing.
void RecordingSession::interrupted(const FinishedRecording &recording, const Failure &failure) {
    Log(QStringLiteral("did stop record failed"));
    const bool goesOn = mIsRecording || isSplitting();
    stopTimers();
    mRecordManager->stopRecord();
    mRecordManager->clear();
    if (QFileInfo(recording.file).size() > 0)
        mKept = recording.file;
    // What was captured is more than what is in the file.
    const auto written = media::openSound(recording.file, 44100, 2);
    const double seconds = written ? written.value()->durationSeconds() : 0;
    if (mCurRecordAudioInfo) {
        mCurRecordAudioInfo->isRecording = false;
        mCurRecordAudioInfo->setStatus({});
        mCurRecordAudioInfo->setDuration(ToolString::stringFromDuration(seconds));
        mList.save(*mCurRecordAudioInfo);
    }
    endOrGiveUp(recording.file);
    mFailuresInARow = seconds >= 1 ? 0 : mFailuresInARow + 1;
    isStoppedBySilence = isAutoSplitEverySeconds = false;
    if (mGoesOnAfterSleep) {
        goOn();
        return;
    }
    if (!goesOn || mFailuresInARow >= kMostFailuresInARow) {
        end({failure.sentence, mKept});
        return;
    }
    mIsRecording = true;
    mView.recordingInterrupted({failure.sentence, mKept});
    mTimerRestart = mClock.after(std::max(mLastStart + kRestartInterval - mClock.now(), foundation::Clock::Duration(0)),
                                 [this] { (void)guarded("startAgain", [this] { startAgain(); }); });
}

// A device that has gone between two files is waited for as within one.
void RecordingSession::startAgain() {
    const auto started = startRecording();
    if (started)
        return;
    if (!mLacksDevice) {
        end({started.failure().sentence, mKept});
        return;
    }
    if (!mIsDeviceAway)
        deviceIsAway(true);
    mIsRecording = true;
    showControls();
    mTimerRestart = mClock.after(kRestartInterval, [this] { (void)guarded("startAgain", [this] { startAgain(); }); });
}

// What follows a file that is whole: the next one, or the end.
void RecordingSession::goOn() {
    mCurRecordAudioInfo.clear();
    if (!isFollowed()) {
        endTask();
        settle();
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (mIsWriting) // Begun meanwhile.
                return;
            if (!isFollowed()) { // Stopped meanwhile.
                end({});
                return;
            }
            if (mMachineSleeps && mGoesOnAfterSleep) {
                releaseMachine();
                return; // It goes on when the machine is awake.
            }
            isStoppedBySilence = isAutoSplitEverySeconds = mStartsAfterFile = mGoesOnAfterSleep = false;
            (void)guarded("startAgain", [this] { startAgain(); });
        },
        Qt::QueuedConnection);
}

void RecordingSession::endTask() {
    mTaskSecondsBefore = 0;
    if (mTask)
        tasks->taskRecordingDidEnd();
}

// Nothing follows.
void RecordingSession::end(const RecordingTrouble &trouble) {
    isStoppedBySilence = isAutoSplitEverySeconds = mStartsAfterFile = mGoesOnAfterSleep = false;
    mFailuresInARow = 0;
    mCurRecordAudioInfo.clear();
    if (mRecordManager)
        mRecordManager->stopRecord(); // It may still wait for the next file of a split.
    if (mIsRecording)
        showStopped();
    endTask();
    if (!trouble.sentence.isEmpty())
        mView.recordingFailed(trouble);
    mKept.clear();
    settle();
}

// When the machine sleeps.

// Finishes the file while the machine waits. What the person has paused stays as it is over a sleep: nothing is
// written.
void RecordingSession::machineWillSleep(bool shutsDown) {
    mMachineSleeps = true;
    if ((mIsRecording || isFollowed()) && (shutsDown || !isPausedByUser)) {
        Log(QStringLiteral("the machine sleeps or shuts down: the recording is finished"));
        isStoppedBySilence = isAutoSplitEverySeconds = mStartsAfterFile = false;
        mGoesOnAfterSleep = true;
        if (mIsRecording)
            showStopped();
        if (mRecordManager)
            mRecordManager->stopRecord();
    } else if (isPausedByUser) {
        desktop::InstalledServices::current().sleep->release();
    }
    releaseMachine();
}

void RecordingSession::machineDidWake() {
    if (!std::exchange(mMachineSleeps, false))
        return;
    if (mGoesOnAfterSleep && !mIsWriting)
        goOn();
    else if (mIsWriting)
        holdMachine();
}

void RecordingSession::holdMachine() const {
    if (const auto &sleep = desktop::InstalledServices::current().sleep)
        sleep->hold(QStringLiteral("A recording is being finished"));
}

void RecordingSession::releaseMachine() const {
    const bool isOver = !mIsRecording && !isFollowed();
    const auto &sleep = desktop::InstalledServices::current().sleep;
    if (sleep && !mIsWriting && (isOver || mMachineSleeps))
        sleep->release();
}

} // namespace cantorel

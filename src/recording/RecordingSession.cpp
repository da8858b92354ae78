#include "recording/RecordingSession.h"

#include "audio_device/ZQAudioKextKit.h"
#include "convert/AudioConverter.h"
#include "log/GuardedAction.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/media/RecordingRepair.h"
#include "settings/AppSettings.h"
#include "util/ToolString.h"
#include "util/Tools.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QStorageInfo>
#include <QTemporaryFile>
#include <QThreadPool>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr int kRefreshMilliseconds = 500;
constexpr qint64 kLeastFreeBytes = 4 * 1024 * 1024;
const QString kOldAggregateKey =
    QStringLiteral("OldAggregateSubDeivceUIDs"); // Spelling is fixed: stored settings use it.

// Why nothing can be written to the folder; empty when something can.
QString folderTrouble(const QString &folder) {
    QTemporaryFile probe(folder + QStringLiteral("/.cantorel-XXXXXX")); // Rights alone do not tell.
    if (!QDir().mkpath(folder) || !probe.open())
        return QStringLiteral("Recordings can't be written to \"%1\"; choose a folder that you may write to.")
            .arg(folder);
    const QStorageInfo storage(folder);
    if (storage.isValid() && storage.bytesAvailable() < kLeastFreeBytes)
        return QStringLiteral("The disk that holds \"%1\" is full; make room or choose another folder.").arg(folder);
    return {};
}

} // namespace

RecordingSession::RecordingSession(RecordingSessionView &view, const QString &stateFolder)
    : mView(view), mJournal(stateFolder) {
    mTimerRecording.setInterval(kRefreshMilliseconds);
    connect(&mTimerRecording, &QTimer::timeout, this, [this] { (void)guarded("refresh", [this] { refresh(); }); });
}

RecordingSession::~RecordingSession() {
    if (mRecordManager) {
        mRecordManager->stopRecord();
        mRecordManager->clear();
    }
}

int RecordingSession::sourceNamed(const QString &name) {
    return static_cast<int>(
        QStringList{QStringLiteral("system"), QStringLiteral("mic"), QStringLiteral("both")}.indexOf(name));
}

Result<void> RecordingSession::prepareDevices(int source) {
    // What is remembered of the real devices follows the person's choice up to now.
    const bool hasVirtual = ZQAudioKextKit::activateSVAD();
    if (source != 1 && !hasVirtual)
        return Failure{QStringLiteral("There is no virtual device to record system sound from; install it with: "
                                      "cantorel-cli driver install"),
                       QStringLiteral("no virtual device")};
    if (source != 0 && ZQAudioKextKit::getDefaultAudioInputName().isEmpty())
        return Failure{QStringLiteral("There is no microphone; connect one, or record system sound alone."),
                       QStringLiteral("no default input")};
    if (source != 2)
        return {};
    const QVariantMap saved = AppSettings::getFromUserDefaults_Object(kOldAggregateKey).toMap();
    if (!ZQAudioKextKit::isAggregateDeviceChanged(saved))
        return {};
    ZQAudioKextKit::destroyAggregateDevice();
    const QVariantMap made = ZQAudioKextKit::createAggregateDevice();
    if (made.isEmpty())
        return Failure{
            QStringLiteral("Microphone and system sound could not be joined to one device; try again, or record "
                           "one of them alone."),
            QStringLiteral("createAggregateDevice failed")};
    AppSettings::saveToUserDefaultsForKeyObjectValue(kOldAggregateKey, made);
    return {};
}

Result<void> RecordingSession::startRecording() {
    // The file of a recording that is still being written must not be taken for one that a crash left behind.
    if (mIsWriting)
        return Failure{QStringLiteral("A recording is under way; stop it and wait until its file is finished."),
                       QStringLiteral("the file before is not finished")};
    if (!mJournal.claim())
        return Failure{QStringLiteral("Another Cantorel is recording already; stop that one first."),
                       QStringLiteral("the recorder lock is held")};
    for (const RecordingJournal::Recovered &recovered : mJournal.recover())
        mView.recordingRecovered(recovered);

    mSource = AppSettings::getAudioType();
    if (const QString trouble = folderTrouble(AppSettings::outputPath()); !trouble.isEmpty())
        return Failure{trouble, trouble};
    if (const auto prepared = prepareDevices(mSource); !prepared)
        return prepared;

    const QString file = ToolString::renameFromFilePath(Tools::getAudioNameFromTrack(), 0);
    if (!mJournal.begin(file))
        return Failure{QStringLiteral("The state folder can't be written to; check its rights and the free space."),
                       QStringLiteral("the journal could not be written")};
    mDevice = RecordManager::getAudioDeviceNameWithAudioDeviceType(mSource);
    mRecordManager = std::make_unique<RecordManager>();
    mRecordManager->delegate = this;
    if (!mRecordManager->startRecord(QUrl::fromLocalFile(file))) {
        mRecordManager->stopRecord();
        mRecordManager->clear();
        mJournal.end(file);
        return Failure{QStringLiteral("The recording could not be started; the log says why."),
                       QStringLiteral("startRecord answered false")};
    }
    mIsRecording = true;
    mIsWriting = true;
    mFile.clear();
    mSilence.begin(hal::HardwareSystem::clock().now());
    mTimerRecording.start();
    return {};
}

void RecordingSession::stopRecording() {
    if (!mIsRecording)
        return;
    mIsRecording = false;
    mTimerRecording.stop();
    mRecordManager->stopRecord();
}

void RecordingSession::pauseRecording() {
    if (mRecordManager)
        mRecordManager->pauseRecording();
}

void RecordingSession::resumeRecording() {
    if (mRecordManager)
        mRecordManager->resumeRecording();
    mSilence.resumed(hal::HardwareSystem::clock().now());
}

void RecordingSession::refresh() {
    mView.recordingProgress(mRecordManager->recordingDuration(), mRecordManager->recordedFileSize());
    // Somebody has removed the file or its folder: there is no use in going on, and the person shall know now.
    if (!mFile.isEmpty() && !QFileInfo::exists(mFile)) {
        stopRecording();
        return;
    }
    if (!mRecordManager->isPaused() && mSilence.isDue(hal::HardwareSystem::clock().now()))
        mView.recordingSilent(likelyCauseOfSilence(mSource, mDevice));
}

void RecordingSession::RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &url) {
    mSilence.begin(hal::HardwareSystem::clock().now());
    mFile = url.toLocalFile();
    mView.recordingStarted(mFile, mDevice);
}

void RecordingSession::RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &url, double duration,
                                                                    const std::optional<Failure> &failure) {
    const QString file = url.toLocalFile();
    mTimerRecording.stop();
    const FinishedRecording finished{file, duration, mRecordManager->recordedFileSize(),
                                     mRecordManager->droppedFrames()};
    // What could not be closed, on a full disk for one, is closed by the next start.
    if (!failure || !media::isUnfinished(file))
        mJournal.end(file);
    // Gives the devices back where an error has ended the recording.
    if (mIsRecording)
        mRecordManager->stopRecord();
    mIsRecording = false;
    mIsWriting = false;
    mRecordManager->clear();
    if (!failure && finished.seconds <= 0)
        QFile::remove(file); // It holds nothing.
    if (failure || finished.seconds <= 0 || !QFileInfo::exists(file)) {
        const QString why =
            failure ? failure->sentence
            : finished.seconds > 0
                ? QStringLiteral("\"%1\" was removed while it was being recorded; choose a folder that stays.")
                      .arg(file)
                : QStringLiteral("Nothing was recorded because \"%1\" brought no sound in time.").arg(mDevice);
        mView.recordingFailed(why, QFileInfo(file).size() > 0 ? file : QString());
        return;
    }
    AppSettings::setrecordNameBaseOn(AppSettings::recordNameBaseOn() + 1);
    convert(finished);
}

void RecordingSession::convert(const FinishedRecording &recording) {
    const QString file = recording.file;
    mView.recordingConverting(file);
    const int format = AppSettings::getAudioFormat();
    const QPointer<RecordingSession> self(this);
    QThreadPool::globalInstance()->start([self, recording, file, format] {
        Result<QString> result =
            Failure{QStringLiteral("The conversion ended unexpectedly; the log says why."), QString()};
        (void)guarded("convert", [&] {
            static foundation::WallClock clock;
            result = AudioConverter::convertRecording(format, file, {AppSettings::TessolarConverterPath(), clock});
        });
        // The session may be gone by now: then nobody wants to know.
        QMetaObject::invokeMethod(qApp, [self, recording, result] {
            if (self)
                self->converted(recording, result);
        });
    });
}

void RecordingSession::converted(FinishedRecording recording, const Result<QString> &result) {
    const QString file = recording.file;
    if (!result || QFileInfo(result.value()).size() == 0) {
        mView.recordingFailed(result ? QStringLiteral("The converted file is empty.") : result.failure().sentence,
                              QFile::exists(file) ? file : QString());
        return;
    }
    recording.file = result.value();
    recording.bytes = QFileInfo(recording.file).size();
    // The recording goes only now that its successor is whole.
    if (QFileInfo(file).absoluteFilePath() != QFileInfo(recording.file).absoluteFilePath())
        QFile::remove(file);
    mView.recordingFinished(recording);
}

} // namespace cantorel

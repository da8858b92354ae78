#include "cli/MovieRun.h"

#include "audio_device/ZQAudioKextKit.h"
#include "cli/RunningInstance.h"
#include "lang/Lang.h"
#include "platform/desktop/Services.h"
#include "platform/hal/HardwareBackend.h"
#include "recording/session/RecordingNames.h"

#include <QFileInfo>

#include <chrono>
#include <utility>

namespace cantorel {

namespace {

constexpr int kStoppedBySignal = 130;
// For a movie that does without sound.
constexpr std::chrono::seconds kShortPatience(2);

} // namespace

MovieRun::MovieRun(const CommandSession &command, MovieOptions options)
    : mCommand(command),
      mOptions(std::move(options)),
      mSignals([this] { stop(EndedBy::Signal); }),
      mJournal(Hardware::stateFolder()),
      mSleepGuard(desktop::InstalledServices::current().sleep.get()) {
    mEnd.setSingleShot(true);
    mEnd.setTimerType(Qt::PreciseTimer);
    connect(&mEnd, &QTimer::timeout, this, [this] { stop(EndedBy::Itself); });
}

Outcome MovieRun::open(HeardOtherwise otherwise) {
    if (!mJournal.claim())
        return refusedByOwner();
    if (mOptions.isSilent)
        return Outcome::done();
    auto hardware = Hardware::open(mCommand.backend, mOptions.audio.isEmpty() ? kShortPatience : Hardware::kPatience);
    if (hardware)
        mHardware = std::move(hardware).value();
    else if (!mOptions.audio.isEmpty())
        return Outcome::failed(hardware.failure().sentence);
    for (const QString &name : mOptions.audio) {
        const auto device = ZQAudioKextKit::getTheCaptureDeviceWithName(name);
        if (!device)
            return Outcome::failed(
                QStringLiteral("There is no device \"%1\" to record from; \"cantorel-cli devices\" lists them.")
                    .arg(name));
        mDevices.push_back(*device);
    }
    if (mHardware && mOptions.audio.isEmpty()) {
        const auto heard =
            otherwise == HeardOtherwise::Output
                ? media::captureDeviceWithUniqueID(QLatin1String(hal::kOutputMonitorUid))
                : ZQAudioKextKit::getTheCaptureDeviceWithName(ZQAudioKextKit::getDefaultAudioInputName());
        if (heard)
            mDevices.push_back(*heard);
    }
    return Outcome::done();
}

Outcome MovieRun::run(MovieRecorder &recorder) {
    mRecorder = &recorder;
    recorder.delegate = this;
    recorder.willWrite = [this](const QString &file) {
        mWrittenAs = file;
        (void)mJournal.begin(file); // at worst it is not looked for
    };
    recorder.rescue = movieRescuePath;
    if (mOptions.picturesPerSecond)
        recorder.setOutputFrameRate(static_cast<std::uint32_t>(*mOptions.picturesPerSecond));
    if (mEndedBy == EndedBy::Signal)
        return {kStoppedBySignal, QStringLiteral("Stopped before the recording began.")};
    if (!recorder.startRecording(QUrl::fromLocalFile(mOptions.output), nullptr)) {
        if (!mWrittenAs.isEmpty())
            mJournal.end(mWrittenAs);
        const QString reason = Lang::english(recorder.failure()->sentence);
        tell("failed", {{QStringLiteral("reason"), reason}}, {});
        return Outcome::failed(reason);
    }
    mSleep.hold();
    if (!recorder.hasSound() && !mOptions.isSilent)
        mCommand.note(QStringLiteral("There is no sound to record; the movie has none."));
    if (!mOptions.seconds)
        mCommand.note(QStringLiteral("Recording until Ctrl-C."));
    mLoop.exec();
    recorder.delegate = nullptr;
    recorder.willWrite = {};
    mSleep.release();
    if (mOutcome.status != 0)
        return mOutcome;
    switch (mEndedBy) {
    case EndedBy::Signal:
        return {kStoppedBySignal, QStringLiteral("Stopped by a signal; the movie is kept.")};
    case EndedBy::Sleep:
        return Outcome::failed(QStringLiteral("Ended before the machine sleeps or shuts down; the movie is kept."));
    case EndedBy::Itself:
        break;
    }
    return mOutcome;
}

void MovieRun::tell(const char *event, QJsonObject details, const QString &text) {
    details.insert(QStringLiteral("event"), QString::fromLatin1(event));
    if (mCommand.json)
        mCommand.answer(details, {});
    else if (!text.isEmpty())
        mCommand.note(text);
}

void MovieRun::stop(EndedBy why) {
    mEndedBy = why;
    mEnd.stop();
    if (mRecorder)
        mRecorder->stopRecording();
}

void MovieRun::captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url) {
    if (mOptions.seconds)
        mEnd.start(std::chrono::milliseconds(static_cast<std::int64_t>(*mOptions.seconds * 1000)));
    QJsonObject details{{QStringLiteral("file"), url.toLocalFile()},
                        {QStringLiteral("sound"), mRecorder->hasSound()},
                        {QStringLiteral("coder"), mRecorder->coder()}};
    details.insert(QStringLiteral("backend"), mHardware ? QJsonValue(mHardware->backendName()) : QJsonValue());
    tell("started", details, QStringLiteral("Recording to %1").arg(url.toLocalFile()));
}

void MovieRun::captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url,
                                                      const media::RecordingCounts &counts,
                                                      const std::optional<foundation::Failure> &failure) {
    const QString file = url.toLocalFile();
    const bool isKept = counts.bytes > 0 && QFileInfo::exists(file);
    mJournal.settle(mWrittenAs);
    if (isKept && file != mWrittenAs && file != mOptions.output)
        mCommand.note(Lang::english(kFolderRemoved(mOptions.output, QFileInfo(file).path())));
    if (failure) {
        const QString reason = Lang::english(failure->sentence);
        QJsonObject details{{QStringLiteral("reason"), reason}};
        if (isKept)
            details.insert(QStringLiteral("kept"), file);
        tell("failed", details, {});
        mOutcome = Outcome::failed(isKept && !reason.contains(file)
                                       ? QStringLiteral("%1 What was recorded is kept in \"%2\".").arg(reason, file)
                                       : reason);
    } else {
        const media::PictureSize size = mRecorder->movieSize();
        const QString lost = counts.droppedPictures > 0
                                 ? QStringLiteral(", %1 pictures were lost").arg(counts.droppedPictures)
                                 : QString();
        mCommand.answer({{QStringLiteral("event"), QStringLiteral("finished")},
                         {QStringLiteral("file"), file},
                         {QStringLiteral("seconds"), counts.seconds()},
                         {QStringLiteral("width"), size.width},
                         {QStringLiteral("height"), size.height},
                         {QStringLiteral("bytes"), static_cast<qint64>(counts.bytes)},
                         {QStringLiteral("droppedPictures"), static_cast<qint64>(counts.droppedPictures)},
                         {QStringLiteral("droppedFrames"), static_cast<qint64>(counts.droppedFrames)}},
                        QStringLiteral("%1  (%2 x %3, %4 s%5)")
                            .arg(file)
                            .arg(size.width)
                            .arg(size.height)
                            .arg(QString::number(counts.seconds(), 'f', 2), lost));
    }
    mLoop.quit();
}

} // namespace cantorel

#include "cli/RecordRun.h"

#include "audio_device/ZQAudioKextKit.h"
#include "platform/hal/HardwareSystem.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"
#include "util/ToolSystem.h"

#include <unistd.h>

#include <cstdio>

namespace cantorel {

namespace {

constexpr int kStoppedBySignal = 130;
// What was played last is still on its way to the recording.
constexpr auto kPlayedTail = std::chrono::milliseconds(300);
constexpr auto kFirstFramesPatience = std::chrono::seconds(15);

void setArgument(const char *key, const QVariant &value) {
    standardUserDefaults().setArgument(QString::fromLatin1(key), value);
}

} // namespace

RecordRun::RecordRun(const CommandSession &command, RecordOptions options)
    : mCommand(command),
      mOptions(std::move(options)),
      mSignals([this] { signalled(); }),
      mShowsProgress(!command.json && !command.quiet && ::isatty(STDOUT_FILENO)) {
    mEnd.setSingleShot(true);
    mEnd.setTimerType(Qt::PreciseTimer);
    connect(&mEnd, &QTimer::timeout, this, [this] { stop(); });
    mFirstFrames.setSingleShot(true);
    connect(&mFirstFrames, &QTimer::timeout, this, [this] { stop(); });
}

Outcome RecordRun::run() {
    // The options hold for this run only.
    if (mOptions.source)
        setArgument(setting::kAudioInputType.key, *mOptions.source);
    if (mOptions.format)
        setArgument(setting::kAudioFormat.key, *mOptions.format);
    if (!mOptions.folder.isEmpty())
        setArgument(setting::kOutputFolderPath.key, mOptions.folder);
    if (!mOptions.name.isEmpty()) {
        setArgument(setting::kIsAutoGenFileName.key, false);
        mNameAsker.emplace(mOptions.name);
        mInstalledAsker.emplace(*mNameAsker);
    }
    for (const auto &[key, value] : mOptions.settings)
        standardUserDefaults().setArgument(key, value);

    auto hardware = Hardware::open(mCommand.backend);
    if (!hardware)
        return Outcome::failed(hardware.failure().sentence);
    mHardware = std::move(hardware).value();
    if (mSignalCount > 0)
        return {kStoppedBySignal, QStringLiteral("Stopped before the recording began.")};

    (void)ZQAudioKextKit::activateSVAD(); // Makes the kit; the session looks whether there is a virtual device.
    if (!mOptions.play.isEmpty()) {
        foundation::Failure why;
        mPlayer = ZQAVAudioPlayer::initWithFilePath(mOptions.play, &why);
        if (!mPlayer)
            return Outcome::failed(why.sentence);
        mPlayer->delegate = this;
    }

    const bool borrows =
        !mOptions.microphone.isEmpty() && mOptions.microphone != ZQAudioKextKit::getDefaultAudioInputName();
    if (borrows && !ZQAudioKextKit::borrowAudioInputDeviceWithName(mOptions.microphone)) {
        return Outcome::failed(QStringLiteral("There is no microphone \"%1\"; \"cantorel-cli devices\" lists them.")
                                   .arg(mOptions.microphone));
    }

    mOutcome = start();
    mPlayer.reset();
    mSession.reset();
    mList.reset();
    if (borrows)
        ZQAudioKextKit::giveBackAudioInputDevice();
    mHardware.reset();
    return mOutcome;
}

Outcome RecordRun::start() {
    mList = std::make_unique<RecordedList>(Hardware::stateFolder(), hal::HardwareSystem::clock());
    mSession = std::make_unique<RecordingSession>(*this, *mList, Hardware::stateFolder());
    if (mSession->claim()) {
        mList->initRecordedList();
        mSession->recover();
    }
    if (const auto started = mSession->startRecording(); !started) {
        event("failed", {{QStringLiteral("reason"), started.failure().sentence}}, {});
        return Outcome::failed(started.failure().sentence);
    }
    if (!mOptions.seconds && !mPlayer)
        mCommand.note(QStringLiteral("Recording until Ctrl-C."));
    else
        mFirstFrames.start(kFirstFramesPatience);
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    mLoop.exec();
    ToolSystem::setAllowKeepSystemWakeEnable(false);
    if (mSignalCount > 0 && !mHasFrames)
        return {kStoppedBySignal, QStringLiteral("Stopped before the first sound; nothing was recorded.")};
    if (!mTrouble.isEmpty())
        return Outcome::failed(mTrouble);
    return mSignalCount > 0 ? Outcome{kStoppedBySignal, QStringLiteral("Stopped by a signal; the recording is kept.")}
                            : Outcome::done();
}

void RecordRun::event(const char *name, QJsonObject details, const QString &text) {
    clearProgressLine();
    details.insert(QStringLiteral("event"), QString::fromLatin1(name));
    if (mCommand.json)
        mCommand.answer(details, {});
    else if (!text.isEmpty())
        mCommand.note(text);
}

void RecordRun::clearProgressLine() {
    if (!mProgressShown)
        return;
    std::fputs("\r\033[K", stdout);
    std::fflush(stdout);
    mProgressShown = false;
}

void RecordRun::recordingRecovered(const RecordingJournal::Recovered &recovered) {
    if (recovered.failure.isEmpty())
        mCommand.note(QStringLiteral("A recording that was cut short is whole again: %1").arg(recovered.file));
    else
        mCommand.note(
            QStringLiteral("A recording that was cut short could not be repaired and is kept: %1").arg(recovered.file));
}

void RecordRun::recordingStarted(const QString &file, const QString &device) {
    mFile = file;
    mFirstFrames.stop();
    const bool isFirst = !std::exchange(mHasFrames, true);
    if (mOptions.seconds && isFirst)
        mEnd.start(std::chrono::milliseconds(static_cast<std::int64_t>(*mOptions.seconds * 1000)));
    static const char *const kSources[] = {"system", "mic", "both"};
    const QString source = QString::fromLatin1(kSources[std::clamp(AppSettings::getAudioType(), 0, 2)]);
    event("started",
          {{QStringLiteral("file"), file},
           {QStringLiteral("source"), source},
           {QStringLiteral("device"), device},
           {QStringLiteral("backend"), mHardware->backendName()}},
          QStringLiteral("Recording %1 (%2) to %3").arg(source, device, file));
    if (mPlayer && isFirst && !mPlayer->play()) {
        mCommand.note(QStringLiteral("There is no output to play \"%1\" to.").arg(mOptions.play));
        if (!mOptions.seconds)
            stop();
    }
}

void RecordRun::AVAudioPlayerDidFinishPlayingSuccessfully(ZQAVAudioPlayer &, bool successfully) {
    if (!successfully)
        mCommand.note(QStringLiteral("The output is gone; \"%1\" was not played to its end.").arg(mOptions.play));
    if (!mOptions.seconds)
        mEnd.start(kPlayedTail);
}

void RecordRun::recordingDisplay(const RecordingDisplay &display) {
    if (!mShowsProgress)
        return;
    const QByteArray line = QStringLiteral("\r\033[K%1  %2").arg(display.duration, display.size).toUtf8();
    std::fputs(line.constData(), stdout);
    std::fflush(stdout);
    mProgressShown = true;
}

void RecordRun::recordingPaused(bool bySilence) {
    event("paused", {{QStringLiteral("bySilence"), bySilence}},
          bySilence ? QStringLiteral("Paused until there is sound.") : QStringLiteral("Paused."));
}

void RecordRun::recordingResumed() { event("resumed", {}, QStringLiteral("The recording goes on.")); }

void RecordRun::recordingSilent(const QString &sentence) {
    event("silent", {{QStringLiteral("cause"), sentence}}, sentence);
}

void RecordRun::recordingDeviceLost(const QString &device) {
    event("deviceLost", {{QStringLiteral("device"), device}},
          QStringLiteral("\"%1\" is gone; the recording waits for it.").arg(device));
}

void RecordRun::recordingDeviceBack(const QString &device) {
    event("deviceBack", {{QStringLiteral("device"), device}},
          QStringLiteral("\"%1\" is back; the recording goes on.").arg(device));
}

void RecordRun::recordingConverting(const QString &file) {
    event("converting", {{QStringLiteral("file"), file}}, QStringLiteral("Converting ..."));
}

void RecordRun::recordingFinished(const FinishedRecording &finished) {
    clearProgressLine();
    const QString lost =
        finished.droppedFrames > 0 ? QStringLiteral(", %1 frames were lost").arg(finished.droppedFrames) : QString();
    mCommand.answer({{QStringLiteral("event"), QStringLiteral("finished")},
                     {QStringLiteral("file"), finished.file},
                     {QStringLiteral("seconds"), finished.seconds},
                     {QStringLiteral("bytes"), finished.bytes},
                     {QStringLiteral("droppedFrames"), finished.droppedFrames}},
                    QStringLiteral("%1  (%2 s%3)").arg(finished.file, QString::number(finished.seconds, 'f', 2), lost));
}

void RecordRun::recordingFiltered(const QString &file, double seconds) {
    event("filtered", {{QStringLiteral("file"), file}, {QStringLiteral("seconds"), seconds}},
          QStringLiteral("%1 is too short to be kept (%2 s).").arg(file, QString::number(seconds, 'f', 2)));
}

void RecordRun::recordingInterrupted(const RecordingTrouble &trouble) {
    event("interrupted", {{QStringLiteral("reason"), trouble.sentence}, {QStringLiteral("kept"), trouble.kept}},
          QStringLiteral("%1 The recording is started again.").arg(trouble.sentence));
}

void RecordRun::recordingFailed(const RecordingTrouble &trouble) {
    if (mSignalCount > 0 && !mHasFrames)
        return;
    QJsonObject details{{QStringLiteral("reason"), trouble.sentence}};
    if (!trouble.kept.isEmpty())
        details.insert(QStringLiteral("kept"), trouble.kept);
    event("failed", details, {});
    // Some sentences name the file already.
    const bool said = trouble.kept.isEmpty() || trouble.sentence.contains(trouble.kept);
    mTrouble = said ? trouble.sentence
                    : QStringLiteral("%1 What was recorded is kept in \"%2\".").arg(trouble.sentence, trouble.kept);
}

void RecordRun::recordingEndsEarly(const QString &sentence) {
    event("endsEarly", {{QStringLiteral("reason"), sentence}}, {});
    mTrouble = sentence;
}

void RecordRun::recordingSettled() { mLoop.quit(); }

void RecordRun::signalled() {
    ++mSignalCount;
    if (mSignalCount > 1 && mSession && !mSession->isRecording()) {
        // The person does not want to wait for the conversion: its child ends with us, the M4A stays.
        clearProgressLine();
        const QByteArray sentence =
            QStringLiteral("Left before the conversion; the recording is kept in \"%1\".\n").arg(mFile).toUtf8();
        (void)!::write(STDERR_FILENO, sentence.constData(), static_cast<std::size_t>(sentence.size()));
        ::_exit(kStoppedBySignal);
    }
    stop();
}

void RecordRun::stop() {
    if (mPlayer)
        mPlayer->pause();
    mEnd.stop();
    mFirstFrames.stop();
    if (mSession)
        mSession->stopRecording();
}

} // namespace cantorel

#include "cli/RecordingEvents.h"

#include "lang/Lang.h"
#include "recording/control/RecordingAdvice.h"
#include "recording/session/RecordingSpace.h"
#include "settings/AppSettings.h"
#include "settings/RecordingSource.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace cantorel {

RecordingEvents::RecordingEvents(const CommandSession &command)
    : mCommand(command), mShowsProgress(!command.json && !command.quiet && ::isatty(STDOUT_FILENO)) {}

void RecordingEvents::tellEvent(const char *name, QJsonObject details, const QString &text) {
    clearProgressLine();
    details.insert(QStringLiteral("event"), QString::fromLatin1(name));
    if (mCommand.json)
        mCommand.answer(details, {});
    else if (!text.isEmpty())
        mCommand.note(text);
}

void RecordingEvents::clearProgressLine() {
    if (!mProgressShown)
        return;
    std::fputs("\r\033[K", stdout);
    std::fflush(stdout);
    mProgressShown = false;
}

void RecordingEvents::recordingRecovered(const RecordingJournal::Recovered &recovered) {
    if (recovered.failure.isEmpty())
        mCommand.note(QStringLiteral("A recording that was cut short is whole again: %1").arg(recovered.file));
    else
        mCommand.note(
            QStringLiteral("A recording that was cut short could not be repaired and is kept: %1").arg(recovered.file));
}

void RecordingEvents::recordingStarted(const QString &file, const QString &device) {
    mFile = file;
    const auto recorded = recordingSource(AppSettings::getAudioType()).value_or(RecordingSource::SystemSound);
    const QString source = nameOf(recorded);
    tellEvent("started",
              {{QStringLiteral("file"), file},
               {QStringLiteral("source"), source},
               {QStringLiteral("device"), device},
               {QStringLiteral("backend"), mBackendName}},
              QStringLiteral("Recording %1 (%2) to %3").arg(source, device, file));
    const RecordingAdvice advice = RecordingAdvice::of(recorded);
    if (advice.lack == RecordingAdvice::Lack::VirtualDevice && !std::exchange(mHasAdvised, true))
        mCommand.note(QStringLiteral("%1 (cantorel-cli driver install)").arg(Lang::english(advice.sentence)));
}

void RecordingEvents::recordingDisplay(const RecordingDisplay &display) {
    if (!mShowsProgress)
        return;
    const QString left = display.secondsLeft
                             ? QStringLiteral("  (the disk lasts for %1)").arg(timeLeftText(*display.secondsLeft))
                             : QString();
    const QByteArray line = QStringLiteral("\r\033[K%1  %2%3").arg(display.duration, display.size, left).toUtf8();
    std::fputs(line.constData(), stdout);
    std::fflush(stdout);
    mProgressShown = true;
}

void RecordingEvents::recordingPaused(bool bySilence) {
    tellEvent("paused", {{QStringLiteral("bySilence"), bySilence}},
              bySilence ? QStringLiteral("Paused until there is sound.") : QStringLiteral("Paused."));
}

void RecordingEvents::recordingResumed() { tellEvent("resumed", {}, QStringLiteral("The recording goes on.")); }

void RecordingEvents::recordingSilent(const foundation::Sentence &sentence) {
    tellEvent("silent", {{QStringLiteral("cause"), Lang::english(sentence)}}, Lang::english(sentence));
}

void RecordingEvents::recordingDeviceLost(const QString &device) {
    tellEvent("deviceLost", {{QStringLiteral("device"), device}},
              QStringLiteral("\"%1\" is gone; the recording waits for it.").arg(device));
}

void RecordingEvents::recordingDeviceBack(const QString &device) {
    tellEvent("deviceBack", {{QStringLiteral("device"), device}},
              QStringLiteral("\"%1\" is back; the recording goes on.").arg(device));
}

void RecordingEvents::recordingConverting(const QString &file) {
    tellEvent("converting", {{QStringLiteral("file"), file}}, QStringLiteral("Converting ..."));
}

void RecordingEvents::recordingFinished(const FinishedRecording &finished) {
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

void RecordingEvents::recordingFiltered(const QString &file, double seconds) {
    tellEvent("filtered", {{QStringLiteral("file"), file}, {QStringLiteral("seconds"), seconds}},
              QStringLiteral("%1 is too short to be kept (%2 s).").arg(file, QString::number(seconds, 'f', 2)));
}

void RecordingEvents::recordingInterrupted(const RecordingTrouble &trouble) {
    const QString reason = Lang::english(trouble.sentence);
    tellEvent("interrupted", {{QStringLiteral("reason"), reason}, {QStringLiteral("kept"), trouble.kept}},
              QStringLiteral("%1 The recording is started again.").arg(reason));
}

QString RecordingEvents::sentenceOf(const RecordingTrouble &trouble) {
    // Some sentences name the file already.
    const QString reason = Lang::english(trouble.sentence);
    return trouble.kept.isEmpty() || reason.contains(trouble.kept)
               ? reason
               : QStringLiteral("%1 What was recorded is kept in \"%2\".").arg(reason, trouble.kept);
}

void RecordingEvents::showFailure(const RecordingTrouble &trouble, const QString &text) {
    QJsonObject details{{QStringLiteral("reason"), Lang::english(trouble.sentence)}};
    if (!trouble.kept.isEmpty())
        details.insert(QStringLiteral("kept"), trouble.kept);
    tellEvent("failed", details, text);
}

void RecordingEvents::recordingFailed(const RecordingTrouble &trouble) { showFailure(trouble, sentenceOf(trouble)); }

void RecordingEvents::recordingEndsEarly(const foundation::Sentence &sentence) {
    tellEvent("endsEarly", {{QStringLiteral("reason"), Lang::english(sentence)}}, Lang::english(sentence));
}

} // namespace cantorel

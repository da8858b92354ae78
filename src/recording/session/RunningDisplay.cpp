#include "recording/session/RunningDisplay.h"

#include "lang/Lang.h"
#include "recording/session/RecordingSpace.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

namespace cantorel {

namespace {

constexpr int kNotes = 7;
const QString kNoDuration = QStringLiteral("00:00:00");

} // namespace

bool RunningDisplay::showsTime() const { return mShown.duration != kNoDuration; }

void RunningDisplay::update(const FileUnderWay &file, double seconds, qint64 bytes) {
    mShown.seconds = seconds;
    mShown.bytes = bytes;
    mShown.duration = ToolString::stringFromDuration(seconds);
    mShown.size = ToolFile::fileSizeFormatterToString(bytes);
    mShown.lostFrames = file.lostFrames;
    mShown.badge = mShown.duration;
    mShown.durationVisible = true;
    mShown.silenceVisible = false;
    mShown.secondsLeft = recordingSecondsLeft(AppSettings::outputPath(), AppSettings::getAudioFormat(), seconds, bytes);
    if (!file.item)
        return;
    file.item->setDuration(mShown.duration);
    file.item->setSize(mShown.size);
    file.item->setStatus(Lang::tabRecordStatusRecording() + QStringLiteral("..."));
}

void RunningDisplay::blink(const FileUnderWay &file, bool waitsForSound) {
    const QString paused = Lang::tabRecordStatusPaused();
    if (file.item && file.item->status() != paused)
        file.item->setStatus(paused);
    mShown.badge = mShown.badge.isEmpty() ? mShown.duration : QString();
    mShown.durationVisible = !mShown.durationVisible;
    mShown.silenceVisible = waitsForSound && mShown.durationVisible;
}

void RunningDisplay::clear() {
    mShown = {};
    mShown.size = ToolFile::fileSizeFormatterToString(0);
}

int RunningDisplay::nextNote(bool isHeard) {
    mNote = isHeard ? mNote % kNotes + 1 : 0;
    return mNote;
}

} // namespace cantorel

#include "recording/control/RecorderPanel.h"

#include "audio_device/AudioDeviceEngine.h"
#include "lang/Lang.h"
#include "recording/session/RecordingSpace.h"
#include "settings/AppSettings.h"
#include "util/tools/Tools.h"

#include <QLocale>

#include <algorithm>
#include <utility>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kOutputGone("OutputGone");
constexpr std::size_t kMostMissed = 50; // remembered
constexpr qint64 kSoon = 300;           // seconds

QString counted(QString text, qint64 count) { return text.replace(QLatin1String("[#Count#]"), QString::number(count)); }

// As exactly as anybody plans with it.
QString hoursAndMinutes(qint64 seconds) {
    const QString hours = counted(Lang::windowHours(), seconds / 3600),
                  minutes = counted(Lang::windowMinutes(), seconds / 60 % 60);
    if (seconds < 3600)
        return minutes;
    return seconds < 36'000 ? hours + QLatin1Char(' ') + minutes : hours;
}

} // namespace

RecorderPanel::RecorderPanel() {
    mDevices = foundation::NotificationCenter::defaultCenter().subscribe<bool>(kNotificationSoundDevicesDidChange,
                                                                               [this](const bool &) {
                                                                                   if (mSentenceStays == Until::Devices)
                                                                                       setSentence({});
                                                                               });
}

QString RecorderPanel::stateText() const {
    switch (state()) {
    case RecorderState::Idle:
        return Lang::tabRecordStatusIdle();
    case RecorderState::Preparing:
        return Lang::commPreparing();
    case RecorderState::Recording:
        return Lang::tabRecordStatusRecording();
    case RecorderState::Paused:
        return Lang::tabRecordStatusPaused();
    case RecorderState::WaitingForSound:
        return Lang::windowWaitingForSound();
    case RecorderState::DeviceLost:
        return Lang::windowDeviceLost();
    case RecorderState::Finishing:
        return Lang::windowFinishing();
    }
    return {};
}

QString RecorderPanel::timeLeftText() const {
    const auto left = isRunning()
                          ? mDisplay.secondsLeft
                          : recordingSecondsLeft(AppSettings::outputPath(), AppSettings::getAudioFormat(), 0, 0);
    return left ? Lang::windowTimeLeft().replace(QLatin1String("[#Time#]"), hoursAndMinutes(*left)) : QString();
}

QString RecorderPanel::taskStartText() const {
    if (mCountdown.isExecuted)
        return Lang::tabRecordStatusRecording();
    if (mCountdown.taskName.isEmpty())
        return {};
    const QLocale locale = Lang::locale();
    const QDateTime start = mCountdown.start.toLocalTime();
    const QString time = locale.toString(start.time(), QLocale::ShortFormat);
    if (start.date() == QDate::currentDate())
        return time;
    return QStringLiteral("%1 %2 %3")
        .arg(locale.dayName(start.date().dayOfWeek(), QLocale::ShortFormat),
             locale.toString(start.date(), QLocale::ShortFormat), time);
}

QString RecorderPanel::taskSoonText() const {
    if (mCountdown.taskName.isEmpty() || mCountdown.isExecuted || mCountdown.seconds > kSoon)
        return {};
    const bool isMinutes = mCountdown.seconds > 60;
    const qint64 count = isMinutes ? (mCountdown.seconds + 59) / 60 : mCountdown.seconds;
    const QString time = isMinutes ? Lang::windowMinutes() : Lang::windowSeconds();
    return Lang::windowTaskSoon()
        .replace(QLatin1String("[#Time#]"), counted(time, count))
        .replace(QLatin1String("[#TaskName#]"), mCountdown.taskName);
}

QString RecorderPanel::taskAheadText() const {
    if (mCountdown.taskName.isEmpty() || mCountdown.isExecuted)
        return {};
    return Tools::fillTextMarkers(Lang::windowTaskAhead())
        .replace(QLatin1String("[#Time#]"),
                 Lang::locale().toString(mCountdown.start.toLocalTime(), QStringLiteral("ddd yyyy-MM-dd HH:mm")))
        .replace(QLatin1String("[#TaskName#]"), mCountdown.taskName);
}

QString RecorderPanel::sentence() const {
    const QString sentence = Lang::sentence(mSentence);
    return mKept.isEmpty() ? sentence : QStringLiteral("%1 (%2)").arg(sentence, mKept);
}

void RecorderPanel::setSentence(const foundation::Sentence &sentence, const QString &kept) {
    mSentence = sentence;
    mKept = kept;
    mSentenceStays = Until::Replaced;
    Q_EMIT changed();
}

void RecorderPanel::refuseStart(const foundation::Sentence &sentence) {
    setSentence(sentence);
    mSentenceStays = Until::Devices;
}

void RecorderPanel::recordingStarted(const QString &file, const QString &device) {
    mHistory.mark(mIsSettled ? SoundHistory::Mark::Start : SoundHistory::Mark::Split);
    mIsSettled = false;
    mLostFrames = 0;
    mFile = file;
    mDevice = device;
    setSentence({});
}

void RecorderPanel::recordingControlsDidChange(const RecordingControls &controls) {
    const bool begins = controls.startShowsStop && !isRunning();
    mControls = controls;
    if (begins) {
        setSentence({});
        mDisplay = {};
        if (mIsSettled)
            mHistory.clear();
    }
    if (!isRunning()) {
        for (LevelDisplay &level : mLevels)
            level.setLevel(0);
        mFile.clear();
        mDevice.clear();
        if (mSentenceStays == Until::Sound || mSentenceStays == Until::Output)
            setSentence({});
    }
    Q_EMIT changed();
    if (begins)
        Q_EMIT begun();
}

void RecorderPanel::recordingDisplay(const RecordingDisplay &display) {
    mDisplay = display;
    Q_EMIT ticked();
}

void RecorderPanel::recordingLevel(float level) {
    const auto lanes = std::exchange(mBoth, {}).value_or(std::array{level, level});
    float loudest = 0; // The picture shows the louder source: a silent one takes nothing from it.
    for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
        const float height = shownLevel(lanes[lane]);
        mLevels[lane].setLevel(height);
        loudest = std::max(loudest, height);
    }
    mHistory.add(loudest, state() == RecorderState::Recording);
    Q_EMIT levelCame();
}

void RecorderPanel::recordingLevelsOfBoth(float system, float microphone) { mBoth = {system, microphone}; }

void RecorderPanel::recordingFramesLost(qint64 frames) {
    mHistory.mark(SoundHistory::Mark::LostFrames);
    mLostFrames += frames;
    tellLostFrames(mLostFrames);
}

void RecorderPanel::tellLostFrames(qint64 frames) {
    setSentence(Lang::windowLostFrames().replace(QLatin1String("[#Count#]"), QString::number(frames)));
}

void RecorderPanel::recordingSilent(const foundation::Sentence &sentence) {
    setSentence(sentence);
    mSentenceStays = Until::Sound;
}

void RecorderPanel::recordingHeard() {
    if (mSentenceStays == Until::Sound)
        setSentence({});
}

void RecorderPanel::recordingIsHeard(bool isHeard) {
    if (!isHeard) {
        setSentence(kOutputGone());
        mSentenceStays = Until::Output;
    } else if (mSentenceStays == Until::Output) {
        setSentence({});
    }
}

void RecorderPanel::recordingDeviceLost(const QString &) {
    mHistory.mark(SoundHistory::Mark::DeviceLost);
    Q_EMIT changed();
}

void RecorderPanel::recordingFinished(const FinishedRecording &recording) {
    if (recording.lostFrames > 0)
        tellLostFrames(recording.lostFrames);
    Q_EMIT finished(recording);
}

void RecorderPanel::recordingFiltered(const QString &, double) { Q_EMIT changed(); }

void RecorderPanel::recordingInterrupted(const RecordingTrouble &trouble) {
    setSentence(trouble.sentence, trouble.kept);
}

void RecorderPanel::recordingFailed(const RecordingTrouble &trouble) {
    setSentence(trouble.sentence, trouble.kept);
    Q_EMIT failed(sentence());
}

void RecorderPanel::recordingEndsEarly(const foundation::Sentence &why) {
    setSentence(why);
    Q_EMIT failed(sentence());
}

void RecorderPanel::recordingSettled() {
    mIsSettled = true;
    Q_EMIT changed();
    Q_EMIT settled();
}

void RecorderPanel::stopPlayback() { Q_EMIT playbackShallStop(); }

void RecorderPanel::taskCountdown(const TaskCountdown &countdown) {
    const bool wasNear = !taskSoonText().isEmpty();
    mCountdown = countdown;
    Q_EMIT countdownDidChange();
    if (const QString text = taskSoonText(); !wasNear && !text.isEmpty())
        Q_EMIT taskIsNear(text);
}

void RecorderPanel::taskMissed(const ScheduleTaskInfo &task, const QDateTime &start, const foundation::Sentence &why) {
    if (mMissed.size() == kMostMissed)
        mMissed.pop_back();
    mMissed.insert(mMissed.begin(), {task._taskName, start, why});
    setSentence(why);
    Q_EMIT missed(sentence());
}

void RecorderPanel::shutdownCountdown(int secondsLeft) { Q_EMIT shutdownIn(secondsLeft); }

void RecorderPanel::shutdownCancelled() { Q_EMIT shutdownIn(-1); }

} // namespace cantorel

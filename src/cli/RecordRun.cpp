#include "cli/RecordRun.h"

#include "audio_device/ZQAudioKextKit.h"
#include "cli/RunningInstance.h"
#include "lang/Lang.h"
#include "platform/desktop/Services.h"
#include "platform/foundation/Console.h"
#include "platform/hal/HardwareSystem.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"
#include "util/tools/ToolSystem.h"

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
    : RecordingEvents(command), mOptions(std::move(options)), mSignals([this] { signalled(); }) {
    mEnd.setSingleShot(true);
    mEnd.setTimerType(Qt::PreciseTimer);
    connect(&mEnd, &QTimer::timeout, this, [this] { stop(); });
    mFirstFrames.setSingleShot(true);
    connect(&mFirstFrames, &QTimer::timeout, this, [this] { stop(); });
}

Outcome RecordRun::run() {
    // The options hold for this run only.
    if (mOptions.source)
        setArgument(setting::kAudioInputType.key, static_cast<int>(*mOptions.source));
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

    // Before any device is touched: the one that records may use it.
    if (!RecordingJournal(Hardware::stateFolder()).claim()) {
        Outcome refused = refusedByOwner();
        tellEvent("failed", {{QStringLiteral("reason"), refused.sentence}}, {});
        return refused;
    }
    auto hardware = Hardware::open(command().backend);
    if (!hardware)
        return Outcome::failed(hardware.failure().sentence);
    mHardware = std::move(hardware).value();
    setBackendName(mHardware->backendName());
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
    mControl.reset();
    mPlayer.reset();
    mSession.reset();
    mCommons.reset();
    mList.reset();
    if (borrows)
        ZQAudioKextKit::giveBackAudioInputDevice();
    mHardware.reset();
    return mOutcome;
}

Outcome RecordRun::start() {
    mList = std::make_unique<RecordedList>(Hardware::stateFolder(), hal::HardwareSystem::clock());
    mCommons = std::make_unique<RecorderCommons>(Hardware::stateFolder(), hal::HardwareSystem::clock(),
                                                 desktop::InstalledServices::current().sleep.get());
    mSession = std::make_unique<RecordingSession>(*this, *mList, *mCommons);
    if (mCommons->journal.claim()) {
        mList->initRecordedList();
        mSession->leftovers().recover();
        mControl = std::make_unique<RecordingControl>(*mSession, *mList, mTasks, RecordingControl::Begins::None,
                                                      desktop::InstalledServices::current().remote.get());
        mControl->offer();
    }
    if (const auto started = mSession->startRecording(); !started) {
        tellEvent("failed", {{QStringLiteral("reason"), Lang::english(started.failure().sentence)}}, {});
        return Outcome::failed(started.failure().sentence);
    }
    if (!mOptions.seconds && !mPlayer)
        command().note(QStringLiteral("Recording until Ctrl-C."));
    else
        mFirstFrames.start(kFirstFramesPatience);
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    mLoop.exec();
    ToolSystem::setAllowKeepSystemWakeEnable(false);
    if (mSignalCount > 0 && !mHasFrames)
        return {kStoppedBySignal, QStringLiteral("Stopped before the first sound; nothing was recorded.")};
    if (mTrouble.isEmpty())
        mTrouble = Lang::english(mList->storedAtLast());
    if (!mTrouble.isEmpty())
        return Outcome::failed(mTrouble);
    return mSignalCount > 0 ? Outcome{kStoppedBySignal, QStringLiteral("Stopped by a signal; the recording is kept.")}
                            : Outcome::done();
}

void RecordRun::recordingStarted(const QString &file, const QString &device) {
    mFirstFrames.stop();
    const bool isFirst = !std::exchange(mHasFrames, true);
    if (mOptions.seconds && isFirst)
        mEnd.start(std::chrono::milliseconds(static_cast<std::int64_t>(*mOptions.seconds * 1000)));
    RecordingEvents::recordingStarted(file, device);
    if (mPlayer && isFirst && !mPlayer->play()) {
        command().note(QStringLiteral("There is no output to play \"%1\" to.").arg(mOptions.play));
        if (!mOptions.seconds)
            stop();
    }
}

void RecordRun::AVAudioPlayerDidFinishPlayingSuccessfully(ZQAVAudioPlayer &, bool successfully) {
    if (!successfully)
        command().note(QStringLiteral("The output is gone; \"%1\" was not played to its end.").arg(mOptions.play));
    if (!mOptions.seconds)
        mEnd.start(kPlayedTail);
}

void RecordRun::recordingFailed(const RecordingTrouble &trouble) {
    if (mSignalCount > 0 && !mHasFrames)
        return;
    showFailure(trouble, {}); // A person reads it at the end.
    mTrouble = sentenceOf(trouble);
}

void RecordRun::recordingEndsEarly(const foundation::Sentence &sentence) {
    tellEvent("endsEarly", {{QStringLiteral("reason"), Lang::english(sentence)}}, {});
    mTrouble = Lang::english(sentence);
}

void RecordRun::recordingSettled() { mLoop.quit(); }

void RecordRun::signalled() {
    ++mSignalCount;
    if (mSignalCount > 1 && mSession && !mSession->isBusy()) {
        // The person does not want to wait for the conversion: its child ends with us, the M4A stays.
        clearProgressLine();
        foundation::printToConsole(
            QStringLiteral("Left before the conversion; the recording is kept in \"%1\".\n").arg(file()));
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

#include "cli/TasksRun.h"

#include "app/start/DesktopServices.h"
#include "audio_device/ZQAudioKextKit.h"
#include "lang/Lang.h"
#include "platform/desktop/Services.h"
#include "platform/foundation/Console.h"
#include "util/tools/ToolSystem.h"

#include <unistd.h>

namespace cantorel {

namespace {

constexpr int kStoppedBySignal = 130;

QJsonObject detailsOf(const ScheduleTaskInfo &task) { return {{QStringLiteral("task"), task._taskName}}; }

} // namespace

TasksRun::TasksRun(const CommandSession &command) : RecordingEvents(command), mSignals([this] { signalled(); }) {}

Outcome TasksRun::run() {
    auto hardware = Hardware::open(command().backend);
    if (!hardware)
        return Outcome::failed(hardware.failure().sentence);
    mHardware = std::move(hardware).value();
    setBackendName(mHardware->backendName());
    (void)ZQAudioKextKit::activateSVAD(); // Makes the kit; the session looks whether there is a virtual device.
    const Outcome outcome = mSignalCount > 0 ? Outcome{kStoppedBySignal, QStringLiteral("Stopped.")} : start();
    mControl.reset();
    mHotkeys.reset();
    mScheduled.reset();
    mSession.reset();
    mCommons.reset();
    mList.reset();
    mHardware.reset();
    return outcome;
}

Outcome TasksRun::start() {
    foundation::Clock &clock = hal::HardwareSystem::clock();
    mList = std::make_unique<RecordedList>(Hardware::stateFolder(), clock);
    mCommons = std::make_unique<RecorderCommons>(Hardware::stateFolder(), clock,
                                                 desktop::InstalledServices::current().sleep.get());
    mSession = std::make_unique<RecordingSession>(*this, *mList, *mCommons);
    if (!mCommons->journal.claim())
        return Outcome::failed(
            QStringLiteral("Another Cantorel is running and keeps the schedule; stop that one first."));
    mList->initRecordedList();
    mSession->leftovers().recover();
    mScheduled = std::make_unique<ScheduledSession>(*mSession, nullptr, mTasks, *this, clock);

    const auto tell = [this](const foundation::Sentence &sentence) { command().note(Lang::english(sentence)); };
    connect(mScheduled.get(), &ScheduledSession::startRefused, this, tell);
    auto hotKeys = desktopHotKeys();
    mHotkeys = std::make_unique<RecordingHotkeys>(*mScheduled, hotKeys ? std::move(hotKeys.value()) : nullptr, tell);
    mHotkeys->registerEnabled();

    mScheduled->schedule().initScheduleTaskList();
    mControl = std::make_unique<RecordingControl>(*mSession, *mList, mTasks, RecordingControl::Begins::Any,
                                                  desktop::InstalledServices::current().remote.get());
    mControl->offer();
    command().note(QStringLiteral("Waiting for scheduled tasks until Ctrl-C."));
    ToolSystem::setAllowKeepSystemWakeEnable(true);
    mLoop.exec();
    ToolSystem::setAllowKeepSystemWakeEnable(false);
    if (const auto unsaved = mList->storedAtLast(); !unsaved.isEmpty())
        return Outcome::failed(unsaved);
    return {kStoppedBySignal, QStringLiteral("Stopped by a signal; what was recorded is kept.")};
}

void TasksRun::signalled() {
    ++mSignalCount;
    if (!mSession)
        return;
    if (mSignalCount > 1 && !mSession->isBusy()) {
        // The person does not want to wait for the conversion: its child ends with us, the M4A stays.
        clearProgressLine();
        foundation::printToConsole(
            QStringLiteral("Left before the conversion; the recording is kept in \"%1\".\n").arg(file()));
        ::_exit(kStoppedBySignal);
    }
    if (mSession->isBusy() && mScheduled)
        mScheduled->stopByHand();
    if (mSession->isSettled())
        mLoop.quit();
}

void TasksRun::recordingSettled() {
    if (mSignalCount > 0)
        mLoop.quit();
}

void TasksRun::taskStarted(const ScheduleTaskInfo &task) {
    tellEvent("taskStarted", detailsOf(task), QStringLiteral("The task \"%1\" begins.").arg(task._taskName));
}

void TasksRun::taskEnded(const ScheduleTaskInfo &task) {
    tellEvent("taskEnded", detailsOf(task), QStringLiteral("The task \"%1\" has ended.").arg(task._taskName));
}

void TasksRun::taskMissed(const ScheduleTaskInfo &task, const QDateTime &start, const foundation::Sentence &sentence) {
    QJsonObject details = detailsOf(task);
    details.insert(QStringLiteral("start"), start.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    const QString reason = Lang::english(sentence);
    details.insert(QStringLiteral("reason"), reason);
    tellEvent("missed", details, reason);
}

void TasksRun::shutdownCountdown(int secondsLeft) {
    tellEvent("shutdown", {{QStringLiteral("seconds"), secondsLeft}},
              QStringLiteral("The computer is shut down in %1 s; Ctrl-C prevents it.").arg(secondsLeft));
}

} // namespace cantorel

#include "recording/control/RecordingControl.h"

#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "recording/control/ListRequests.h"
#include "recording/schedule/ScheduleTaskText.h"
#include "recording/schedule/TaskList.h"
#include "recording/session/MovieSession.h"
#include "recording/session/RecordingSpace.h"
#include "settings/AppSettings.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>

namespace cantorel {

using foundation::Failure;

namespace {

constexpr qsizetype kLongestText = 16'384; // letters of a file, a name or a task

const QString kState = QStringLiteral("state");
const QString kFile = QStringLiteral("file");
const QString kSeconds = QStringLiteral("seconds");
const QString kBytes = QStringLiteral("bytes");
const QString kTimeLeft = QStringLiteral("timeLeftSeconds");

Failure refusal(const foundation::Sentence &sentence) { return {sentence, Lang::english(sentence)}; }

void insertTimeLeft(QVariantMap &status, double seconds, qint64 bytes) {
    if (const auto left =
            recordingSecondsLeft(AppSettings::outputPath(), AppSettings::getAudioFormat(), seconds, bytes))
        status.insert(kTimeLeft, *left);
}

} // namespace

RecordingControl::RecordingControl(RecordingSession &session, RecordedList &list, TaskList &tasks, Begins begins,
                                   desktop::RemoteControl *remote, MovieSession *movies)
    : mSession(session), mMovies(movies), mList(list), mTasks(tasks), mBegins(begins), mRemote(remote) {}

RecordingControl::~RecordingControl() {
    if (mIsOffered)
        mRemote->withdraw();
}

void RecordingControl::offer() {
    if (mRemote == nullptr)
        return;
    const auto offered = mRemote->offer(*this);
    mIsOffered = offered.ok();
    if (!mIsOffered) // The recorder works without.
        Log(offered.failure().detail);
}

const std::vector<RecordingControl::Method> &RecordingControl::table() {
    static const QString file = kFile, name = QStringLiteral("name");
    static const std::vector<Method> methods{{control::kStart, {}, &RecordingControl::start},
                                             {control::kStop, {}, &RecordingControl::stop},
                                             {control::kToggle, {}, &RecordingControl::toggle},
                                             {control::kPause, {}, &RecordingControl::pause},
                                             {control::kSplit, {}, &RecordingControl::split},
                                             {control::kStatus, {}, &RecordingControl::status},
                                             {control::kShow, {}, &RecordingControl::showWindow},
                                             {control::kRenameRecording, {file, name}, &RecordingControl::rename},
                                             {control::kRemoveRecording, {file}, &RecordingControl::removeItem},
                                             {control::kDeleteRecording, {file}, &RecordingControl::deleteItem},
                                             {control::kTagsWritten, {file}, &RecordingControl::tagsWritten},
                                             {control::kAddTask, {QStringLiteral("task")}, &RecordingControl::addTask},
                                             {control::kRemoveTasks, {name}, &RecordingControl::removeTasks}};
    return methods;
}

std::vector<desktop::RemoteMethod> RecordingControl::methods() const {
    std::vector<desktop::RemoteMethod> methods;
    for (const Method &method : table())
        methods.push_back({QString::fromLatin1(method.name), method.arguments});
    return methods;
}

RecordingControl::Answer RecordingControl::call(const QString &method, const QStringList &arguments) {
    Answer answer = refusal(QStringLiteral("That ended unexpectedly; the log says why."));
    const auto found = std::find_if(table().begin(), table().end(),
                                    [&](const Method &one) { return QLatin1String(one.name) == method; });
    if (std::any_of(arguments.begin(), arguments.end(), [](const QString &one) { return one.size() > kLongestText; }))
        return refusal(QStringLiteral("A text of more than %1 letters names no file and no task.").arg(kLongestText));
    if (found != table().end() && found->arguments.size() == arguments.size())
        (void)guarded("remoteControl", [&] { answer = (this->*found->answer)(arguments); }); // what is thrown is logged
    if (!answer) // Other programs cannot look a sentence up by its key.
        return Failure{Lang::english(answer.failure().sentence), answer.failure().detail};
    return answer;
}

// Recording.

bool RecordingControl::recordsMovie() const { return mMovies && mMovies->isRecording(); }

RecordingControl::Answer RecordingControl::start(const QStringList &) {
    if (mSession.isBusy() || recordsMovie())
        return statusNow();
    if (mBegins == Begins::None)
        return refusal(QStringLiteral("The recording has ended and is being finished; begin another when that is done: "
                                      "cantorel-cli record"));
    if (const auto started = mSession.startRecording(); !started) {
        if (mSession.phase() == SessionPhase::Refused)
            mSession.stopRecording(); // A failed start leaves a recording shown, which only a window can show.
        return refusal(started.failure().sentence.isEmpty() ? QStringLiteral("The recording was not begun.")
                                                            : started.failure().sentence);
    }
    return statusNow();
}

RecordingControl::Answer RecordingControl::stop(const QStringList &) {
    if (recordsMovie())
        mMovies->stop();
    else if (mSession.isBusy())
        mSession.stopByHand();
    return statusNow();
}

RecordingControl::Answer RecordingControl::toggle(const QStringList &) {
    return mSession.isBusy() || recordsMovie() ? stop({}) : start({});
}

RecordingControl::Answer RecordingControl::pause(const QStringList &) {
    if (recordsMovie()) {
        mMovies->onPause();
        return statusNow();
    }
    if (!mSession.isBusy())
        return refusal(QStringLiteral("Nothing is being recorded, so there is nothing to pause."));
    mSession.onPauseRecording();
    return statusNow();
}

RecordingControl::Answer RecordingControl::split(const QStringList &) {
    if (!mSession.isBusy())
        return refusal(QStringLiteral("Nothing is being recorded, so there is nothing to split."));
    mSession.splitRecording();
    return statusNow();
}

RecordingControl::Answer RecordingControl::status(const QStringList &) { return statusNow(); }

RecordingControl::Answer RecordingControl::showWindow(const QStringList &) {
    if (!show)
        return foundation::Failure{QStringLiteral("The Cantorel that runs has no window."), {}};
    show();
    return statusNow();
}

const char *RecordingControl::state() const {
    switch (mMovies && !mMovies->isSettled() ? mMovies->state() : mSession.state()) {
    case RecorderState::Preparing:
        return "starting";
    case RecorderState::Paused:
        return "paused";
    case RecorderState::WaitingForSound:
        return "waiting";
    case RecorderState::Recording:
    case RecorderState::DeviceLost:
        return "recording";
    case RecorderState::Idle: // What a crash left is repaired.
    case RecorderState::Finishing:
        return "finishing";
    }
    return "";
}

QVariantMap RecordingControl::statusNow() const {
    if (mMovies && !mMovies->isSettled()) {
        const RecordingDisplay &shown = mMovies->shown();
        QVariantMap status{{kState, QString::fromLatin1(state())},
                           {kFile, mMovies->path()},
                           {kSeconds, shown.seconds},
                           {kBytes, shown.bytes}};
        if (shown.secondsLeft)
            status.insert(kTimeLeft, *shown.secondsLeft);
        return status;
    }
    if (mSession.isSettled())
        return stoppedStatus();
    QVariantMap status{{kState, QString::fromLatin1(state())}};
    const media::RecordingCounts counts = mSession.recordingCounts();
    double seconds = counts.wholeSeconds();
    qint64 bytes = counts.bytes;
    if (const QString file = mSession.currentFile().path; !file.isEmpty()) {
        status.insert(kFile, file);
        if (const RecordedAudioInfo *item = mList.itemWithFile(file); item && !mSession.isWriting()) {
            seconds = item->Seconds; // once the file is whole
            bytes = QFileInfo(file).size();
        }
    }
    status.insert(kSeconds, seconds);
    status.insert(kBytes, bytes);
    insertTimeLeft(status, seconds, bytes);
    return status;
}

QVariantMap RecordingControl::stoppedStatus() {
    QVariantMap status{{kState, QStringLiteral("stopped")}, {kSeconds, 0.0}, {kBytes, qint64{0}}};
    insertTimeLeft(status, 0, 0);
    return status;
}

// Lists.

RecordingControl::Answer RecordingControl::rename(const QStringList &arguments) {
    const auto renamed = renameRecording(mList, arguments[0], arguments[1]);
    if (!renamed)
        return renamed.failure();
    return QVariantMap{{kFile, renamed.value()}};
}

RecordingControl::Answer RecordingControl::removeItem(const QStringList &arguments) {
    if (const auto removed = removeRecording(mList, arguments[0], false); !removed)
        return removed.failure();
    return QVariantMap{};
}

RecordingControl::Answer RecordingControl::deleteItem(const QStringList &arguments) {
    if (const auto removed = removeRecording(mList, arguments[0], true); !removed)
        return removed.failure();
    return QVariantMap{};
}

RecordingControl::Answer RecordingControl::tagsWritten(const QStringList &arguments) {
    mList.takeTagsBehind(arguments);
    return QVariantMap{};
}

RecordingControl::Answer RecordingControl::addTask(const QStringList &arguments) {
    const auto task = taskFromJson(QJsonDocument::fromJson(arguments[0].toUtf8()).object());
    if (!task)
        return task.failure();
    if (const auto added = mTasks.add(task.value()); !added)
        return added.failure();
    return QVariantMap{};
}

RecordingControl::Answer RecordingControl::removeTasks(const QStringList &arguments) {
    const auto removed = mTasks.removeNamed(arguments[0]);
    if (!removed)
        return removed.failure();
    return QVariantMap{{QStringLiteral("removed"), static_cast<qint64>(removed.value().size())}};
}

} // namespace cantorel

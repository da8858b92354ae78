#pragma once

#include "platform/desktop/RemoteControl.h"
#include "recording/session/RecordingSession.h"

#include <functional>

namespace cantorel {

class MovieSession;
class TaskList;

// What the other programs of the person's session may ask of a recorder.
namespace control {

inline constexpr const char *kStart = "Start";   // records, if nothing is recorded yet
inline constexpr const char *kStop = "Stop";     // ends what is recorded, if anything is
inline constexpr const char *kToggle = "Toggle"; // the one or the other
inline constexpr const char *kPause = "Pause";   // pauses or resumes
inline constexpr const char *kSplit = "Split";   // goes on in another file
inline constexpr const char *kStatus = "Status";
inline constexpr const char *kShow = "Show";                       // shows the window, if there is one
inline constexpr const char *kRenameRecording = "RenameRecording"; // file, name
inline constexpr const char *kRemoveRecording = "RemoveRecording"; // file
inline constexpr const char *kDeleteRecording = "DeleteRecording"; // file, which goes as well
inline constexpr const char *kTagsWritten = "TagsWritten";         // file, whose tags another program has written
inline constexpr const char *kAddTask = "AddTask";                 // a task as JSON
inline constexpr const char *kRemoveTasks = "RemoveTasks";         // name

} // namespace control

// Executes those commands. The first seven return the status: "state", the "file" being written or converted,
// "seconds", "bytes", and "timeLeftSeconds" until the disk is full, if known. Owned by the application or a command;
// main thread.
class RecordingControl : public desktop::RemoteCommands {
public:
    // Whether it may begin recordings itself.
    enum class Begins { Any, None };

    // remote: how others reach it; null where the desktop has no way. movies: null where there are none; one that the
    // person has begun is paused and ended here too. All outlive the control.
    RecordingControl(RecordingSession &session, RecordedList &list, TaskList &tasks, Begins begins,
                     desktop::RemoteControl *remote, MovieSession *movies = nullptr);
    ~RecordingControl() override;

    // Makes it reachable; a failure is a line of the log.
    void offer();

    // Brings the window to the front; empty without a window.
    std::function<void()> show;

    std::vector<desktop::RemoteMethod> methods() const override;
    foundation::Result<QVariantMap> call(const QString &method, const QStringList &arguments) override;

    // The status while nothing is recorded.
    static QVariantMap stoppedStatus();

private:
    using Answer = foundation::Result<QVariantMap>;
    struct Method {
        const char *name;
        QStringList arguments;
        Answer (RecordingControl::*answer)(const QStringList &);
    };
    static const std::vector<Method> &table();

    Answer start(const QStringList &);
    Answer stop(const QStringList &);
    Answer toggle(const QStringList &);
    Answer pause(const QStringList &);
    Answer split(const QStringList &);
    Answer status(const QStringList &);
    Answer showWindow(const QStringList &);
    Answer rename(const QStringList &arguments);
    Answer removeItem(const QStringList &arguments);
    Answer deleteItem(const QStringList &arguments);
    Answer tagsWritten(const QStringList &arguments);
    Answer addTask(const QStringList &arguments);
    Answer removeTasks(const QStringList &arguments);

    const char *state() const; // while anything is going on
    QVariantMap statusNow() const;
    bool recordsMovie() const;

    RecordingSession &mSession;
    MovieSession *const mMovies;
    RecordedList &mList;
    TaskList &mTasks;
    const Begins mBegins;
    desktop::RemoteControl *const mRemote;
    bool mIsOffered = false;
};

} // namespace cantorel

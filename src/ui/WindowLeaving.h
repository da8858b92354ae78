#pragma once

#include <QObject>

namespace cantorel {
class RecorderPanel;
class RecordingNotices;
class ScheduledSession;
class ZQAudioConvertManager;
} // namespace cantorel

namespace cantorel::ui {

class MainWindow;
class RecordCards;

// How a person leaves the window: they are asked while something runs or lies ahead, what goes on is kept in sight, and
// the end waits until everything is written. Owned by the main window.
class WindowLeaving : public QObject {
    Q_OBJECT

public:
    // All outlive it.
    WindowLeaving(MainWindow &window, const RecorderPanel &panel, ScheduledSession &recorder,
                  const ZQAudioConvertManager &converter, RecordingNotices &notices);

    // The window has been closed.
    void close();
    // Ends the program, after asking if something is recorded or converted.
    void leave();
    // Ends it without asking, and what is recorded.
    void stopAndQuit();
    // An end that waits does not come.
    void stay();
    // The window is in sight again.
    void endSign();
    // A recording may have ended.
    void recordingDidChange();
    void endOnceSettled();

Q_SIGNALS:
    void mayEnd();

private:
    void ask();
    void stayHidden();
    void signDidChange(bool isThere);
    RecordCards &cards() const;

    MainWindow &mWindow;
    const RecorderPanel &mPanel;
    ScheduledSession &mRecorder;
    const ZQAudioConvertManager &mConverter;
    RecordingNotices &mNotices;
    // Signed: where there is no tray, a lasting message of the desktop stands for the hidden window that records, or is
    // about to.
    enum class State { Here, Signed, Leaving } mState = State::Here;
    bool mHasToldOfWaiting = false;
};

} // namespace cantorel::ui

#pragma once

#include "ui/Deck.h"

#include <array>

class QLabel;
class QToolButton;

namespace cantorel {
class RecorderPanel;
class RecordingSession;
class ScheduledSession;
} // namespace cantorel

namespace cantorel::ui {

class KeyCaps;
class RecordButton;

// The record button with pause and split beside it, and in the corners the next task and the hot key.
class RecordDeck : public Deck {
public:
    // All outlive it.
    RecordDeck(const RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session, QWidget *parent);

    // What goes on twice a second.
    void showNumbers();
    void showState();
    // Once a second while there are tasks.
    void showTask();
    void showTexts();
    // The focus goes to the record button.
    void begin();
    // What the record button does.
    void start();
    // How the keys for start and stop are pressed; empty where they are not.
    void setTriggers(const std::array<QString, 3> &triggers);
    void fit(bool isNarrow, bool isLow, int margin);

private:
    void showIcons();
    void changeEvent(QEvent *event) override;

    const RecorderPanel &mPanel;
    ScheduledSession &mRecorder;
    RecordButton *mRecord;
    QLabel *mRecordText;
    QToolButton *mPause, *mSplit;
    QLabel *mTaskIcon, *mTask, *mTaskStart;
    KeyCaps *mKeys;
    QLabel *mKeysText;
    QWidget *mCorners[2];
    std::array<QString, 3> mTriggers;
};

} // namespace cantorel::ui

#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QToolButton;

namespace cantorel {
class RecorderPanel;
class ScheduledSession;
} // namespace cantorel

namespace cantorel::ui {

class DigitLabel;
class MovieChips;

// State, time and file of what is recorded or will be; at the right the size and how long the disk lasts.
class Headline : public QWidget {
    Q_OBJECT

public:
    // Both outlive it.
    Headline(const RecorderPanel &panel, ScheduledSession &recorder, QWidget *parent);

    // What goes on twice a second.
    void showNumbers();
    // What is as it is until the state changes.
    void showState();
    void showSettings();
    void showTexts();
    // What the person has entered as the name of the next recording, where it is not named by itself.
    QString enteredName() const;
    void askForName();
    void forgetName();
    void setFileShown(bool isShown);
    // room: the width that there is.
    void fit(int room, bool isLow);

Q_SIGNALS:
    // The person has chosen another format or folder.
    void chosen();
    // The next recording is named and shall begin.
    void nameEntered();

private:
    void chooseFolder();
    void showFile();
    void showIcons();
    void changeEvent(QEvent *event) override;

    // Pictures are recorded as well, or will be.
    bool isMovie() const;
    QString readyText() const;

    const RecorderPanel &mPanel;
    const ScheduledSession &mRecorder;
    QLabel *mStateDot, *mState;
    DigitLabel *mElapsed, *mSize, *mTimeLeft;
    QWidget *mFileLine;
    QLabel *mFile, *mFileDetails, *mSilence;
    QLineEdit *mName;
    QComboBox *mFormat;
    MovieChips *mMovie; // null where no movies are recorded
    QToolButton *mFolder;
    int mRoom = QWIDGETSIZE_MAX;
};

} // namespace cantorel::ui

#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QToolButton;

namespace cantorel {
class RecorderPanel;
}

namespace cantorel::ui {

class DigitLabel;

// State, time and file of what is recorded or will be; at the right the size and how long the disk lasts.
class Headline : public QWidget {
    Q_OBJECT

public:
    // The panel outlives it.
    Headline(const RecorderPanel &panel, QWidget *parent);

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

    const RecorderPanel &mPanel;
    QLabel *mStateDot, *mState;
    DigitLabel *mElapsed, *mSize, *mTimeLeft;
    QWidget *mFileLine;
    QLabel *mFile, *mFileDetails, *mSilence;
    QLineEdit *mName;
    QComboBox *mFormat;
    QToolButton *mFolder;
    int mRoom = QWIDGETSIZE_MAX;
};

} // namespace cantorel::ui

#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "recording/control/RecordingAdvice.h"
#include "recording/session/RecordingSessionView.h"

#include <QWidget>

#include <array>

class QComboBox;
class QLabel;
class QMenu;
class QPushButton;
class QToolButton;

namespace cantorel {
class RecorderPanel;
class RecordingSession;
class ScheduledSession;
} // namespace cantorel

namespace cantorel::ui {

class DigitLabel;
class KeyCaps;
class MeterView;
class RecordButton;
class SoundPictureView;
class SourceSwitch;
class Strip;

// The record page: what will be recorded and from where, state, time and file, the sound as it comes, and below it the
// deck with the record button, which never scrolls away.
class RecordingTab : public QWidget {
    Q_OBJECT

public:
    // All outlive the tab.
    RecordingTab(RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session,
                 QWidget *parent = nullptr);

    // The focus goes to where one begins.
    void begin();
    // The language, the settings or the devices have changed.
    void setAudioInputSelectedStatus();
    void showSettings();
    // The panel has changed; a level has come.
    void showPanel();
    void levelCame();
    // A recording is ready; it is offered until the next start.
    void showResult(const FinishedRecording &recording);
    // How the keys for start and stop are pressed; empty where they are not.
    void showTriggers(const std::array<QString, 3> &triggers);

Q_SIGNALS:
    // The person wants the virtual device installed.
    void virtualDeviceWanted();
    void playWanted(const QString &file);
    void revealWanted(const QString &file);

private:
    void chooseSource(int type);
    void chooseFolder();
    QWidget *makeSources();
    void offerMicrophones(QMenu &menu);
    QWidget *makeHeadline();
    QWidget *makeLevel();
    QWidget *makeDeck();
    void makeStrips();
    void showAdvice();
    void mend();
    void fit();
    void showIcons();
    void showTexts();
    QString resultText() const;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

    RecorderPanel &mPanel;
    ScheduledSession &mRecorder;
    RecordingSession &mSession;
    QWidget *mPage, *mSourceLine = nullptr, *mFileLine = nullptr, *mDeck = nullptr, *mLevel = nullptr;
    SourceSwitch *mSources;
    QLabel *mSourceIcon, *mSource, *mDevice;
    QToolButton *mMicrophone;
    QLabel *mStateDot, *mState;
    DigitLabel *mElapsed;
    QLabel *mFile, *mFileDetails;
    QComboBox *mFormat;
    QToolButton *mFolder;
    DigitLabel *mSize, *mTimeLeft;
    SoundPictureView *mPicture;
    QLabel *mMeterName;
    MeterView *mMeter;
    Strip *mAdvice, *mTrouble, *mResult;
    RecordingAdvice::Lack mLack = RecordingAdvice::Lack::Nothing;
    QPushButton *mMend = nullptr, *mPlay = nullptr, *mReveal = nullptr;
    QLabel *mCountdown;
    RecordButton *mRecord;
    QLabel *mRecordText;
    QToolButton *mPause, *mSplit;
    KeyCaps *mKeys;
    QLabel *mKeysText;
    QWidget *mCorners[2] = {};
    std::array<QString, 3> mTriggers;
    FinishedRecording mFinished;
    bool mHasResult = false;
    foundation::NotificationCenter::Subscription mDefaultInput, mDefaultOutput, mDevices;
};

} // namespace cantorel::ui

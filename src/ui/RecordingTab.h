#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "recording/control/RecordingAdvice.h"

#include <QWidget>

#include <functional>

class QButtonGroup;
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

class MeterView;
class RecordButton;
class SoundPictureView;

// What will be recorded and from where, the record button, and everything about the recording that runs.
class RecordingTab : public QWidget {
public:
    // All outlive the tab.
    RecordingTab(RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session,
                 QWidget *parent = nullptr);

    // The language, the settings or the devices have changed.
    void setAudioInputSelectedStatus();
    void showSettings();
    // The panel has changed; a level has come.
    void showPanel();
    void levelCame();

    // The person wants the virtual device installed.
    std::function<void()> virtualDeviceWanted;

private:
    void chooseSource(int type);
    void chooseFolder();
    QWidget *makeSources();
    QWidget *makeDevices();
    void offerMicrophones(QMenu &menu);
    QWidget *makeDestination();
    QWidget *makeAdvice();
    void showAdvice();
    QWidget *makeControls();
    void showIcons();
    void showTexts();
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

    RecorderPanel &mPanel;
    ScheduledSession &mRecorder;
    RecordingSession &mSession;
    QButtonGroup *mSources;
    QLabel *mDevice;
    QToolButton *mMicrophone;
    QToolButton *mFolder;
    QComboBox *mFormat;
    QLabel *mAdvice;
    QPushButton *mMend;
    RecordingAdvice::Lack mLack = RecordingAdvice::Lack::Nothing;
    QLabel *mElapsed, *mState, *mSize, *mTimeLeft, *mSentence, *mCountdown;
    SoundPictureView *mPicture;
    MeterView *mMeter;
    RecordButton *mRecord;
    QToolButton *mPause, *mSplit;
    foundation::NotificationCenter::Subscription mDefaultInput, mDefaultOutput, mDevices;
};

} // namespace cantorel::ui

#pragma once

#include "platform/foundation/NotificationCenter.h"

#include <QWidget>

class QButtonGroup;
class QComboBox;
class QLabel;
class QMenu;
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

private:
    void chooseSource(int type);
    void chooseFolder();
    QWidget *makeSources();
    QWidget *makeDevices();
    void offerMicrophones(QMenu &menu);
    QWidget *makeDestination();
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
    QLabel *mElapsed, *mState, *mSize, *mTimeLeft, *mSentence, *mCountdown;
    SoundPictureView *mPicture;
    MeterView *mMeter;
    RecordButton *mRecord;
    QToolButton *mPause, *mSplit;
    foundation::NotificationCenter::Subscription mDefaultInput, mDefaultOutput;
};

} // namespace cantorel::ui

#pragma once

#include "platform/foundation/NotificationCenter.h"

#include <QWidget>

#include <array>

namespace cantorel {
class RecorderPanel;
class RecordingSession;
class ScheduledSession;
struct FinishedRecording;
} // namespace cantorel

namespace cantorel::ui {

class Headline;
class LevelLanes;
class RecordDeck;
class RecordStrips;
class SoundPictureView;
class SourceLine;

// The record page: what will be recorded and from where, state, time and file, the sound as it comes, and below it the
// deck with the record button, which never scrolls away.
class RecordingTab : public QWidget {
    Q_OBJECT

public:
    // All outlive the tab.
    RecordingTab(RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session,
                 QWidget *parent = nullptr);
    ~RecordingTab() override;

    // The language, the settings or the devices have changed.
    void showSettings();
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
    void listen();
    void showState();
    void fit();
    void showTexts();
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

    RecorderPanel &mPanel;
    RecordingSession &mSession;
    QWidget *mPage;
    SourceLine *mSourceLine;
    Headline *mHeadline;
    SoundPictureView *mPicture;
    LevelLanes *mLevels;
    RecordStrips *mStrips;
    RecordDeck *mDeck;
    foundation::NotificationCenter::Subscription mDefaultInput, mDefaultOutput, mDevices;
};

} // namespace cantorel::ui

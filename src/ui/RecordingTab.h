#pragma once

#include "platform/foundation/NotificationCenter.h"

#include <QWidget>

#include <array>

namespace cantorel {
class RecordedList;
class RecorderPanel;
class RecordingSession;
class ScheduledSession;
struct FinishedRecording;
} // namespace cantorel

namespace cantorel::ui {

class Headline;
class LevelLanes;
class RecordCards;
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
    RecordingTab(RecorderPanel &panel, ScheduledSession &recorder, RecordingSession &session, RecordedList &list,
                 QWidget *parent = nullptr);
    ~RecordingTab() override;

    // The focus goes to where one begins.
    void begin();
    // The language, the settings or the devices have changed.
    void showSettings();
    // A recording is ready; it is offered until the next start.
    void showResult(const FinishedRecording &recording);
    // How the keys for start and stop are pressed; empty where they are not.
    void showTriggers(const std::array<QString, 3> &triggers);
    // The file of the next recording by the name that was entered; empty, with a word on it, where there is none.
    QString nameNewFile(const QString &folder, const QString &extension);
    // The strip of what goes on elsewhere stands above the deck.
    void takeStrip(QWidget &strip);
    RecordCards &cards() { return *mCards; }
    // Seconds until the computer is shut down; below 0 when it is not any more. True where that is news.
    bool showShutdown(int seconds);

Q_SIGNALS:
    // The person wants the virtual device installed.
    void virtualDeviceWanted();
    void shutdownCancelled();
    // The start of the task that comes next shall not be made; it shall after all.
    void taskCancelled();
    void taskWanted();
    // A recording shall begin that has no name yet.
    void nameWanted();
    void playWanted(const QString &file);
    void revealWanted(const QString &file);
    void editWanted(const QString &file);
    // Files were dropped for it.
    void convertWanted(const QStringList &files);
    void addWanted(const QStringList &files);

private:
    void listen();
    void showState();
    void fit();
    void showTexts();
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

    RecorderPanel &mPanel;
    ScheduledSession &mRecorder;
    QWidget *mPage;
    RecordCards *mCards;
    SourceLine *mSourceLine;
    Headline *mHeadline;
    SoundPictureView *mPicture;
    LevelLanes *mLevels;
    RecordStrips *mStrips;
    RecordDeck *mDeck;
    foundation::NotificationCenter::Subscription mDefaultInput, mDefaultOutput, mDevices;
};

} // namespace cantorel::ui

#pragma once

#include "app/start/Hardware.h"
#include "app/start/SignalWatch.h"
#include "capture/ZQAVAudioPlayer.h"
#include "cli/CommandSession.h"
#include "cli/RecordingEvents.h"
#include "cli/TerminalAsker.h"
#include "platform/foundation/Sentence.h"
#include "recording/control/RecordingControl.h"
#include "recording/library/RecordedList.h"
#include "recording/schedule/TaskList.h"

#include <QEventLoop>
#include <QTimer>

#include <map>
#include <optional>

namespace cantorel {

// What the options of "record" ask for.
struct RecordOptions {
    std::optional<RecordingSource> source;
    std::optional<int> format;
    QString microphone; // empty: the default one
    QString folder;     // empty: that of the settings
    std::optional<double> seconds;
    QString play;                         // a sound file to play meanwhile; empty: none
    QString name;                         // of the files, without an extension; empty: that of the settings
    std::map<QString, QVariant> settings; // further ones that hold for this run
};

// One run of "record": shows the session's events, and ends it by time or signal. Main thread.
class RecordRun : public QObject, public RecordingEvents, public ZQAVAudioPlayerDelegate {
public:
    RecordRun(const CommandSession &command, RecordOptions options);

    // Runs to the end of the converted file.
    Outcome run();

private:
    void recordingStarted(const QString &file, const QString &device) override;
    void recordingFailed(const RecordingTrouble &trouble) override;
    void recordingEndsEarly(const foundation::Sentence &sentence) override;
    void recordingSettled() override;

    void AVAudioPlayerDidFinishPlayingSuccessfully(ZQAVAudioPlayer &, bool successfully) override;

    void signalled();
    void stop();
    Outcome start();

    // Names every file of the run by its option.
    class NameAsker : public TerminalAsker {
    public:
        explicit NameAsker(QString name) : mName(std::move(name)) {}
        QString askForNewFile(const QString &folder, const QString &extension) override {
            return QStringLiteral("%1/%2.%3").arg(folder, mName, extension);
        }

    private:
        const QString mName;
    };

    const RecordOptions mOptions;
    SignalWatch mSignals;
    std::unique_ptr<Hardware> mHardware;
    std::optional<NameAsker> mNameAsker;
    std::optional<InstalledAsker> mInstalledAsker;
    std::unique_ptr<RecordedList> mList;
    TaskList mTasks;
    std::unique_ptr<RecorderCommons> mCommons;
    std::unique_ptr<RecordingSession> mSession;
    std::unique_ptr<RecordingControl> mControl;
    std::unique_ptr<ZQAVAudioPlayer> mPlayer;
    QEventLoop mLoop;
    QTimer mEnd;         // of the time asked for
    QTimer mFirstFrames; // that never came
    Outcome mOutcome;
    QString mTrouble; // why the run fails
    bool mHasFrames = false;
    int mSignalCount = 0;
};

} // namespace cantorel

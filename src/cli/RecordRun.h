#pragma once

#include "capture/ZQAVAudioPlayer.h"
#include "cli/CommandSession.h"
#include "cli/Hardware.h"
#include "cli/SignalWatch.h"
#include "recording/RecordingSession.h"

#include <QEventLoop>
#include <QTimer>

#include <optional>

namespace cantorel {

// What the options of "record" ask for.
struct RecordOptions {
    std::optional<int> source, format;
    QString microphone; // empty: the default one
    QString folder;     // empty: that of the settings
    std::optional<double> seconds;
    QString play; // a sound file to play meanwhile; empty: none
};

// One run of "record": shows the session's events, and ends it by time or signal. Main thread.
class RecordRun : public QObject, public RecordingSessionView, public ZQAVAudioPlayerDelegate {
public:
    RecordRun(const CommandSession &command, RecordOptions options);

    // Runs to the end of the converted file.
    Outcome run();

private:
    void recordingRecovered(const RecordingJournal::Recovered &recovered) override;
    void recordingStarted(const QString &file, const QString &device) override;
    void recordingProgress(double seconds, qint64 bytes) override;
    void recordingSilent(const QString &sentence) override;
    void recordingDeviceLost(const QString &device) override;
    void recordingDeviceBack(const QString &device) override;
    void recordingConverting(const QString &file) override;
    void recordingFinished(const FinishedRecording &finished) override;
    void recordingFailed(const QString &sentence, const QString &kept) override;

    void AVAudioPlayerDidFinishPlayingSuccessfully(ZQAVAudioPlayer &, bool successfully) override;

    void event(const char *name, QJsonObject details, const QString &text);
    void clearProgressLine();
    void signalled();
    void stop();
    void end(const Outcome &outcome);

    const CommandSession &mCommand;
    const RecordOptions mOptions;
    SignalWatch mSignals;
    std::unique_ptr<Hardware> mHardware;
    std::unique_ptr<RecordingSession> mSession;
    std::unique_ptr<ZQAVAudioPlayer> mPlayer;
    QEventLoop mLoop;
    QTimer mEnd;         // of the time asked for
    QTimer mFirstFrames; // that never came
    Outcome mOutcome;
    QString mFile; // the M4A
    int mSignalCount = 0;
    bool mShowsProgress = false;
    bool mProgressShown = false;
};

} // namespace cantorel

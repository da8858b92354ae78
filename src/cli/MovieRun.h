#pragma once

#include "app/start/Hardware.h"
#include "app/start/SignalWatch.h"
#include "capture/MovieRecorder.h"
#include "cli/CommandSession.h"
#include "cli/MovieOptions.h"
#include "recording/session/RecordingJournal.h"
#include "recording/session/SleepGuard.h"

#include <QEventLoop>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

// One run of "record-screen" or "record-camera": shows what becomes of the movie as lines, and ends it by time, by
// signal, or before the machine sleeps: it has the name of one file. Main thread.
class MovieRun : public QObject, public ZQAVRecorderDelegate {
public:
    MovieRun(const CommandSession &command, MovieOptions options);

    // What is heard where no device is named.
    enum class HeardOtherwise { Output, Microphone };
    // Opens what is heard, and becomes the only recorder. To be called before the recorder is set up.
    Outcome open(HeardOtherwise otherwise);
    const std::vector<media::CaptureDevice> &devices() const { return mDevices; }
    // Runs to the end of the file. The recorder is set up, and outlives this.
    Outcome run(MovieRecorder &recorder);

private:
    void captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url) override;
    void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url, const media::RecordingCounts &counts,
                                                const std::optional<foundation::Failure> &failure) override;
    void tell(const char *event, QJsonObject details, const QString &text);
    enum class EndedBy { Itself, Signal, Sleep };
    void stop(EndedBy why);

    const CommandSession &mCommand;
    const MovieOptions mOptions;
    SignalWatch mSignals;
    std::unique_ptr<Hardware> mHardware; // null without a sound server
    std::vector<media::CaptureDevice> mDevices;
    RecordingJournal mJournal;
    MovieRecorder *mRecorder = nullptr;
    QString mWrittenAs;
    QEventLoop mLoop;
    QTimer mEnd;
    Outcome mOutcome;
    EndedBy mEndedBy = EndedBy::Itself;
    SleepGuard mSleepGuard;
    SleepGuard::Holder mSleep{mSleepGuard, [this](bool) { stop(EndedBy::Sleep); }, [] {}};
};

} // namespace cantorel

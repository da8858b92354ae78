#pragma once

#include "cli/CommandSession.h"
#include "platform/foundation/Sentence.h"
#include "recording/session/RecordingSession.h"

namespace cantorel {

// Shows what becomes of recordings as lines: events for programs, sentences for a person, and a line of progress on a
// terminal. Main thread.
class RecordingEvents : public RecordingSessionView {
public:
    explicit RecordingEvents(const CommandSession &command);

protected:
    const CommandSession &command() const { return mCommand; }
    // The backend in use, for the first event.
    void setBackendName(const QString &name) { mBackendName = name; }
    // The M4A that is written, or was the last.
    QString file() const { return mFile; }

    // text: for a person; empty for none.
    void tellEvent(const char *name, QJsonObject details, const QString &text);
    void clearProgressLine();
    void showFailure(const RecordingTrouble &trouble, const QString &text);
    // Why something failed, and where what was recorded is kept.
    static QString sentenceOf(const RecordingTrouble &trouble);

    void recordingRecovered(const RecordingJournal::Recovered &recovered) override;
    void recordingStarted(const QString &file, const QString &device) override;
    void recordingDisplay(const RecordingDisplay &display) override;
    void recordingPaused(bool bySilence) override;
    void recordingResumed() override;
    void recordingSilent(const foundation::Sentence &sentence) override;
    void recordingDeviceLost(const QString &device) override;
    void recordingDeviceBack(const QString &device) override;
    void recordingConverting(const QString &file) override;
    void recordingFinished(const FinishedRecording &finished) override;
    void recordingFiltered(const QString &file, double seconds) override;
    void recordingInterrupted(const RecordingTrouble &trouble) override;
    void recordingFailed(const RecordingTrouble &trouble) override;
    void recordingEndsEarly(const foundation::Sentence &sentence) override;

private:
    const CommandSession &mCommand;
    QString mBackendName;
    QString mFile;
    const bool mShowsProgress;
    bool mProgressShown = false;
    bool mHasAdvised = false;
};

} // namespace cantorel

#pragma once

#include "platform/foundation/Result.h"
#include "recording/RecordManager.h"
#include "recording/RecordingJournal.h"
#include "recording/SilenceWatch.h"

#include <QObject>
#include <QTimer>

namespace cantorel {

// What a recording has become.
struct FinishedRecording {
    QString file;       // the final one
    double seconds = 0; // exact length of what was captured
    qint64 bytes = 0;   // of the final file
    qint64 droppedFrames = 0;
};

// What a session shows; implemented by each face. Main thread. All optional.
class RecordingSessionView {
public:
    virtual ~RecordingSessionView() = default;

    virtual void recordingRecovered(const RecordingJournal::Recovered &) {}
    // file: the M4A being written.
    virtual void recordingStarted(const QString & /*file*/, const QString & /*device*/) {}
    virtual void recordingProgress(double /*seconds*/, qint64 /*bytes*/) {} // twice a second
    virtual void recordingSilent(const QString & /*sentence*/) {}
    virtual void recordingDeviceLost(const QString & /*device*/) {}
    virtual void recordingDeviceBack(const QString & /*device*/) {}
    virtual void recordingConverting(const QString & /*file*/) {}
    virtual void recordingFinished(const FinishedRecording &) {}
    // kept: where the M4A lies; empty when there is none.
    virtual void recordingFailed(const QString & /*sentence*/, const QString & /*kept*/) {}
};

// One recording from the start to the converted file: prepares devices, names the file, drives the RecordManager, has
// the result converted on a worker, and tells its view. Owned by a face; main thread.
class RecordingSession : public QObject, public RecordManagerDelegate {
public:
    // stateFolder: holds the journal.
    RecordingSession(RecordingSessionView &view, const QString &stateFolder);
    ~RecordingSession() override;

    // Begins with the source, folder and format of the settings. A failure is one sentence, and nothing has changed
    // then.
    foundation::Result<void> startRecording();
    // Ends it; the view is told when the converted file is there.
    void stopRecording();
    void pauseRecording();
    void resumeRecording();
    bool isRecording() const { return mIsRecording; }

    // The sources by the names that a person uses: "system", "mic", "both"; -1 for others.
    static int sourceNamed(const QString &name);

private:
    void RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &url) override;
    void RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &url, double duration,
                                                      const std::optional<foundation::Failure> &failure) override;
    void RecordManagerUpdateAudioLevel(RecordManager &, float level) override { mSilence.level(level); }
    void RecordManagerDeviceLost(RecordManager &) override { mView.recordingDeviceLost(mDevice); }
    void RecordManagerDeviceBack(RecordManager &) override { mView.recordingDeviceBack(mDevice); }
    foundation::Result<void> prepareDevices(int source);
    void refresh();
    void convert(const FinishedRecording &recording);
    void converted(FinishedRecording recording, const foundation::Result<QString> &result);

    RecordingSessionView &mView;
    RecordingJournal mJournal;
    std::unique_ptr<RecordManager> mRecordManager;
    QTimer mTimerRecording; // half a second
    SilenceWatch mSilence;
    int mSource = 0;
    QString mDevice; // the one that is recorded
    QString mFile;   // the one that is written; empty before the first frames
    bool mIsRecording = false;
    bool mIsWriting = false; // until the file is closed, longer than it is recorded
};

} // namespace cantorel

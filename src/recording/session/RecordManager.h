#pragma once

#include "capture/ZQAudioRecorder.h"
#include "platform/foundation/NotificationCenter.h"
#include "recording/session/SoundRouting.h"
#include "settings/RecordingSource.h"

#include <QObject>
#include <QUrl>

#include <memory>
#include <optional>

namespace cantorel {

class RecordManager;

// Posted with the manager's state whenever it changes.
struct RecordingStateUpdate {
    const RecordManager *manager = nullptr;
    double RecordDuration = 0; // seconds
    int RecordState = 0;
};
inline constexpr foundation::NotificationName<RecordingStateUpdate> kNotificationUpdateRecordingState{
    "UpdateRecordingState"};

// The sources of a recording that has both, each with its own level.
struct LevelsOfBoth {
    float system = 0, microphone = 0;
};

// Hears what a RecordManager does, always on the main thread. All functions are optional.
class RecordManagerDelegate {
public:
    virtual ~RecordManagerDelegate() = default;

    virtual void RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &) {}
    // The failure is empty for a file that is whole.
    virtual void RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &,
                                                              const media::RecordingCounts &,
                                                              const std::optional<foundation::Failure> &) {}
    virtual void RecordManagerUpdateAudioLevel(RecordManager &, float) {}
    // If false, the file is deleted and not reported as finished.
    virtual bool RecordManagerRecordFileIsNeedSave() { return true; }
    // The device of the running recording has gone, or has come back; the recording stays open meanwhile.
    virtual void RecordManagerDeviceLost(RecordManager &) {}
    virtual void RecordManagerDeviceBack(RecordManager &) {}
    // The system sound being recorded cannot be heard, since there is no output; or can be heard again.
    virtual void RecordManagerOutputLost(RecordManager &) {}
    virtual void RecordManagerOutputBack(RecordManager &) {}
};

// Drives the shared audio recorder for one recording at a time, and lends system sound to the virtual device while it
// lasts. Owned by RecordingSession; main thread only.
class RecordManager : public QObject, public ZQAVRecorderDelegate {
public:
    using Pause = media::AudioFileOutput::Pause;
    enum class State { Idle, StartRequested, Writing }; // posted as 0, 1, 2

    ~RecordManager() override;

    foundation::WeakDelegate<RecordManagerDelegate> delegate;

    // The capture device of a recording source; a null text for an unknown source. Without a virtual device system
    // sound is recorded from the default output itself.
    static QString getAudioDeviceNameWithAudioDeviceType(int type);

    // False when there is no recorder or it refuses; the reason is in the log. A missing virtual device is no failure:
    // the recording then runs unrouted.
    bool startRecord(const QUrl &file);
    // Ends the recording and gives the devices back at once; the finished file is reported later.
    void stopRecord();
    // Call before the stop of a split. The next start on the same device within ten seconds then records from the frame
    // after the last of this file, and system sound is not interrupted meanwhile. A second stop, a failed start, and
    // the manager's destruction give the devices back.
    void joinNextRecording();
    void forgetNextRecording() { endJoin(); }
    // After a pause for silence the file also gets the last 0.9 s before the resume, unless the person has paused as
    // well.
    void pauseRecording(Pause pause = Pause::ByPerson);
    void resumeRecording();
    // Releases the recorder.
    void clear();

    bool isRecording() const;
    bool isPaused() const;
    // True while startRecord() runs. Deliberately stays true after it ended with an exception.
    bool isPrepareRecording() const { return mIsPrepareRecording; }
    // Of the recording under way, else of the last one.
    media::RecordingCounts recordingCounts() const {
        return mAudioRecorder ? mAudioRecorder->recordingCounts() : mCounts;
    }
    // Whole seconds; 0 without a recorder.
    double recordingDuration() const { return mAudioRecorder ? recordingCounts().wholeSeconds() : 0; }
    // The level of each of the two sources while both are recorded, as the recorder tells levels.
    std::optional<LevelsOfBoth> levelsOfBoth() const;
    qint64 recordedFileSize() const { return recordingCounts().bytes; }

    void postRecordingNotification();

private:
    void captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url) override;
    void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url, const media::RecordingCounts &counts,
                                                const std::optional<foundation::Failure> &failure) override;
    void captureUpdateAudioLevel(ZQAVRecorder &, float level) override;
    void captureDeviceLost(ZQAVRecorder &) override { delegate->RecordManagerDeviceLost(*this); }
    void captureDeviceBack(ZQAVRecorder &) override { delegate->RecordManagerDeviceBack(*this); }
    bool start(const QUrl &file);
    void endJoin();

    ZQAudioRecorder *mAudioRecorder = nullptr; // the shared one; null unless a recording is prepared or running
    media::RecordingContinuation mContinuation;
    SoundRouting mRouting;
    std::unique_ptr<foundation::Timer> mJoin; // runs while the next recording is awaited, and ends the wait
    media::RecordingCounts mCounts;           // of the last recording, from its stop on
    State mRecordState = State::Idle;
    std::optional<RecordingSource> mSource; // of the recording under way; nothing for an unknown number
    bool mIsPrepareRecording = false;
};

} // namespace cantorel

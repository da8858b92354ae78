#pragma once

#include "capture/MovieRecorder.h"
#include "platform/foundation/Result.h"
#include "platform/media/movie/PictureSources.h"
#include "recording/session/RecorderCommons.h"
#include "recording/session/RecordingSessionView.h"
#include "recording/session/SoundRouting.h"
#include "settings/RecordingSource.h"

#include <QObject>
#include <QRect>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

class RecordedList;
class VideoPreviewLayer;
class ZQCameraRecorder;

// What a movie is to show. None: sound alone is recorded. It is remembered as long as the program runs and no longer,
// so that nobody's screen is recorded by surprise.
struct MovieWish {
    enum class Picture { None, Screen, Area, Camera };
    Picture picture = Picture::None;
    std::uint32_t display = 0; // 0: the main one
    QRect area;                // in points of the space that all displays share
    QString camera;            // its lasting name; empty: the first one
    std::uint32_t picturesPerSecond = 30;
};

// From the button to the finished movie of a screen or a camera, with the sound of the source in force: it is named,
// watched, listed, and kept whatever ends it. Tells the same view as a recording of sound. Main thread.
class MovieSession : public QObject, public ZQAVRecorderDelegate {
    Q_OBJECT

public:
    // All outlive the session.
    MovieSession(RecordingSessionView &view, RecordedList &list, RecorderCommons &commons);
    ~MovieSession() override;

    const MovieWish &wish() const { return mWish; }
    void setWish(const MovieWish &wish);
    // The displays and cameras that there are now.
    std::vector<media::Display> displays() const;
    std::vector<media::Camera> cameras() const;
    // What the camera of the wish sees, for as long as it is held; null without one. frame: in pixels.
    std::shared_ptr<VideoPreviewLayer> preview(const QRectF &frame);
    bool isWanted() const { return mWish.picture != MovieWish::Picture::None; }

    // A failure is one sentence, empty if the person has changed their mind, and changes nothing.
    foundation::Result<void> start();
    void stop();
    // Pauses or resumes.
    void onPause();

    // From the start up to the stop; also while the machine sleeps, after which another movie follows.
    bool isRecording() const { return mState != State::Idle && mState != State::Closing; }
    bool isSettled() const { return mState == State::Idle; }
    RecorderState state() const;
    // Of the movie under way, up to now.
    const RecordingDisplay &shown() const { return mDisplay; }
    const QString &path() const { return mPath; }
    RecordingSource source() const { return mSource; }

Q_SIGNALS:
    void wishChanged();

private:
    enum class State {
        Idle,
        Starting,
        Writing,
        Paused,
        Closing,
        FallingAsleep, // closing before the machine sleeps
        Asleep         // until another movie follows
    };

    void captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url) override;
    void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url, const media::RecordingCounts &counts,
                                                const std::optional<foundation::Failure> &failure) override;
    void captureUpdateAudioLevel(ZQAVRecorder &, float level) override;

    MovieRecorder *recorder();
    ZQCameraRecorder *camera();
    std::vector<media::CaptureDevice> devices() const;
    bool isOpen() const { return mState == State::Starting || mState == State::Writing || mState == State::Paused; }
    void setState(State state);
    void close(State next);
    void display();
    void finish(const QString &path, const media::RecordingCounts &counts,
                const std::optional<foundation::Failure> &failure);
    void letGo();
    void end(const RecordingTrouble &trouble = {});
    void machineWillSleep(bool shutsDown);
    void machineDidWake();

    RecordingSessionView &mView;
    RecordedList &mList;
    RecordingJournal &mJournal;
    foundation::Clock &mClock;
    SleepGuard::Holder mSleep;
    MovieWish mWish;
    State mState = State::Idle;
    RecordingSource mSource = RecordingSource::SystemSound;
    MovieRecorder *mRecorder = nullptr; // the shared one, from the start up to the end of the file
    SoundRouting mRouting;
    QString mPath, mWritten; // the movie, and the hidden file that it grows in
    QString mShows;          // what is recorded, for the person
    RecordingDisplay mDisplay;
    std::unique_ptr<foundation::Timer> mTimer;
};

} // namespace cantorel

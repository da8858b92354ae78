#include "recording/session/MovieSession.h"

#include "audio_device/ZQAudioKextKit.h"
#include "capture/VideoPreviewLayer.h"
#include "capture/ZQAVRecorderKit.h"
#include "lang/Lang.h"
#include "log/Log.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/media/DiskSpace.h"
#include "recording/library/RecordedList.h"
#include "recording/session/RecordManager.h"
#include "recording/session/RecordingNames.h"
#include "recording/session/StartConditions.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <utility>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

using namespace std::chrono_literals;

constexpr foundation::SentenceKey kMovieWithoutSound("MovieWithoutSound");
constexpr foundation::SentenceKey kDroppedPictures("DroppedPictures", "Count");
constexpr foundation::SentenceKey kStateFolder("StateFolder");

constexpr auto kDisplayInterval = 500ms;
constexpr double kTellingSeconds = 10;       // before, a movie does not tell its own rate
constexpr double kUsualBytesPerSecond = 1e6; // of pictures at 8,000,000 bits a second

std::optional<qint64> secondsLeft(const QString &folder, double seconds, qint64 bytes) {
    const auto free = media::freeBytes(folder);
    if (!free)
        return {};
    const double rate =
        seconds >= kTellingSeconds ? std::max(1.0, static_cast<double>(bytes) / seconds) : kUsualBytesPerSecond;
    const double left = static_cast<double>(*free) - static_cast<double>(media::kDiskReserve);
    return static_cast<qint64>(std::max(0.0, left / rate));
}

} // namespace

MovieSession::MovieSession(RecordingSessionView &view, RecordedList &list, RecorderCommons &commons)
    : mView(view),
      mList(list),
      mJournal(commons.journal),
      mClock(commons.clock),
      mSleep(
          commons.sleep, [this](bool shutsDown) { machineWillSleep(shutsDown); }, [this] { machineDidWake(); }) {}

MovieSession::~MovieSession() {
    stop();
    MovieRecorder *const writing = mRecorder;
    letGo();
    if (!writing)
        return;
    RecorderRelease(writing);
    // The clock and the sources may go next, so its file is waited for.
    QCoreApplication::sendPostedEvents(writing, QEvent::DeferredDelete);
}

void MovieSession::setWish(const MovieWish &wish) {
    mWish = wish;
    Q_EMIT wishChanged();
}

std::vector<media::Display> MovieSession::displays() const {
    auto found = media::InstalledPictureSources::current().displays();
    return found ? std::move(found).value() : std::vector<media::Display>();
}

std::vector<media::Camera> MovieSession::cameras() const { return media::InstalledPictureSources::current().cameras(); }

ZQCameraRecorder *MovieSession::camera() {
    ZQCameraRecorder *camera = ZQAVRecorderKit::sharedInstance().getCameraRecorder();
    const auto all = cameras();
    const auto wanted =
        std::find_if(all.begin(), all.end(), [this](const media::Camera &one) { return one.uniqueID == mWish.camera; });
    camera->setCameraDevice(wanted == all.end() ? std::nullopt : std::optional(*wanted));
    return camera;
}

std::shared_ptr<VideoPreviewLayer> MovieSession::preview(const QRectF &frame) {
    return mWish.picture == MovieWish::Picture::Camera ? camera()->getVideoPreviewLayerWithCameraRect(frame) : nullptr;
}

MovieRecorder *MovieSession::recorder() {
    if (mWish.picture == MovieWish::Picture::Camera) {
        ZQCameraRecorder *recorder = camera();
        // A camera has one device beside it: of both sources, the one that joins them.
        auto heard = devices();
        if (heard.size() > 1 && !recordingDeviceTrouble(mSource))
            if (const auto joined = ZQAudioKextKit::getTheCaptureDeviceWithName(
                    RecordManager::getAudioDeviceNameWithAudioDeviceType(static_cast<int>(mSource))))
                heard = {*joined};
        recorder->setAudioDevice(heard.empty() ? std::nullopt : std::optional(heard.front()));
        mShows = recorder->currentCameraDevice() ? recorder->currentCameraDevice()->localizedName : QString();
        return recorder;
    }
    ZQScreenRecorder *screen = ZQAVRecorderKit::sharedInstance().getScreenRecorder();
    screen->setScreenDisplayId(mWish.display);
    screen->setRecordRect(mWish.picture == MovieWish::Picture::Area ? mWish.area : QRect());
    screen->setCaptureAudioDevices(devices());
    mShows = screen->displayNameFromDisplayID(mWish.display);
    return screen;
}

// Those that are not there are left out.
std::vector<media::CaptureDevice> MovieSession::devices() const {
    std::vector<media::CaptureDevice> found;
    if (!hal::HardwareSystem::reach())
        return found;
    if (includesSystemSound(mSource))
        if (const auto device = ZQAudioKextKit::systemSoundDevice())
            found.push_back(*device);
    if (includesMicrophone(mSource))
        if (const QString name = ZQAudioKextKit::getDefaultAudioInputName(); !name.isEmpty())
            if (const auto device = ZQAudioKextKit::getTheCaptureDeviceWithName(name))
                found.push_back(*device);
    return found;
}

Result<void> MovieSession::start() {
    if (mState != State::Idle)
        return {};
    if (!mJournal.claim())
        return Failure{kAnotherRecorder(), QStringLiteral("the recorder lock is held")};
    if (const auto trouble = recordingFolderTrouble(AppSettings::outputPath()))
        return *trouble;
    if (mWish.picture != MovieWish::Picture::Camera)
        if (const auto shown = media::InstalledPictureSources::current().displays(); !shown)
            return shown.failure(); // before the devices are touched
    mView.stopPlayback();
    const QString chosen = chosenRecordingPath();
    if (chosen.isEmpty())
        return Failure{{}, QStringLiteral("no name was chosen")};
    mSource = recordingSource(AppSettings::getAudioType()).value_or(RecordingSource::SystemSound);
    if (includesSystemSound(mSource))
        (void)ZQAudioKextKit::activateSVAD();
    mPath = freeMoviePath(chosen);
    mWritten.clear();
    mRecorder = recorder();
    mRecorder->delegate = this;
    mRecorder->setOutputFrameRate(mWish.picturesPerSecond);
    mRecorder->rescue = movieRescuePath;
    bool isNoted = true;
    mRecorder->willWrite = [this, &isNoted](const QString &file) {
        mWritten = file;
        // The movie has both names, one after the other.
        isNoted = mJournal.begin(file) && mJournal.begin(mPath);
    };
    const bool started = mRecorder->startRecording(QUrl::fromLocalFile(mPath), nullptr);
    mRecorder->willWrite = {};
    if (!started || !isNoted) {
        const Failure why = started ? Failure{kStateFolder(), QStringLiteral("the journal could not be written")}
                                    : mRecorder->failure().value_or(Failure{});
        mRecorder->stopRecording();
        finish(mPath, {}, {});
        return why;
    }
    if (includesSystemSound(mSource))
        mRouting.begin([this](bool isHeard) { mView.recordingIsHeard(isHeard); });
    mRecorder->setIsShowAudioLevel(mRecorder->hasSound());
    mDisplay = {};
    mSleep.hold();
    setState(State::Starting);
    if (!mRecorder->hasSound())
        mView.recordingSilent(kMovieWithoutSound());
    mTimer = mClock.every(kDisplayInterval, [this] { display(); });
    return {};
}

void MovieSession::stop() {
    if (isOpen())
        close(State::Closing);
    else if (mState == State::FallingAsleep)
        setState(State::Closing);
    else if (mState == State::Asleep)
        end();
}

void MovieSession::close(State next) {
    mTimer.reset();
    mDisplay = {};
    mView.recordingDisplay(mDisplay);
    setState(next);
    mRecorder->stopRecording();
    if (includesSystemSound(mSource))
        mRouting.end();
}

void MovieSession::onPause() {
    if (mState == State::Paused) {
        mRecorder->resumeRecording();
        setState(State::Writing);
        mView.recordingResumed();
    } else if (mState == State::Writing) {
        mRecorder->pauseRecording();
        setState(State::Paused);
        mView.recordingPaused(false);
    }
}

RecorderState MovieSession::state() const {
    switch (mState) {
    case State::Idle:
        return RecorderState::Idle;
    case State::Starting:
        return RecorderState::Preparing;
    case State::Writing:
    case State::FallingAsleep:
    case State::Asleep:
        return RecorderState::Recording; // Between two movies it goes on.
    case State::Paused:
        return RecorderState::Paused;
    case State::Closing:
        return RecorderState::Finishing;
    }
    return RecorderState::Idle;
}

void MovieSession::setState(State state) {
    mState = state;
    RecordingControls controls;
    controls.startShowsStop = isRecording();
    controls.pauseEnabled = state == State::Writing || state == State::Paused;
    controls.pauseShowsResume = state == State::Paused;
    controls.state = this->state();
    mView.recordingControlsDidChange(controls);
}

void MovieSession::display() {
    if (!QFileInfo::exists(mWritten) && mState != State::Starting) {
        stop();
        return;
    }
    if (mState == State::Paused) {
        mDisplay.durationVisible = !mDisplay.durationVisible;
        mDisplay.badge = mDisplay.durationVisible ? mDisplay.duration : QString();
        mView.recordingDisplay(mDisplay);
        return;
    }
    const media::RecordingCounts counts = mRecorder->recordingCounts();
    mDisplay.seconds = counts.wholeSeconds();
    mDisplay.bytes = counts.bytes;
    mDisplay.duration = mDisplay.badge = ToolString::stringFromDuration(mDisplay.seconds);
    mDisplay.durationVisible = true;
    mDisplay.size = ToolFile::fileSizeFormatterToString(counts.bytes);
    mDisplay.secondsLeft = secondsLeft(QFileInfo(mPath).path(), mDisplay.seconds, counts.bytes);
    mView.recordingDisplay(mDisplay);
}

void MovieSession::captureUpdateAudioLevel(ZQAVRecorder &, float level) {
    if (const auto levels = mRecorder->sourceLevels(); levels.size() == 2)
        mView.recordingLevelsOfBoth(levels[0], levels[1]);
    mView.recordingLevel(level);
}

void MovieSession::captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url) {
    if (mState != State::Starting)
        return;
    mView.recordingStarted(url.toLocalFile(), mShows);
    setState(State::Writing);
}

void MovieSession::captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url,
                                                          const media::RecordingCounts &counts,
                                                          const std::optional<Failure> &failure) {
    if (isOpen()) // It has ended by itself.
        close(State::Closing);
    finish(url.toLocalFile(), counts, failure);
}

void MovieSession::finish(const QString &path, const media::RecordingCounts &counts,
                          const std::optional<Failure> &failure) {
    const bool wasBegun = mState == State::Closing || mState == State::FallingAsleep;
    const bool isThere = wasBegun && counts.bytes > 0 && QFileInfo::exists(path);
    const bool isNamed = isThere && path != mWritten; // What is hidden yet is a leftover.
    AppSettings::setOutputFileName({});
    if (isNamed) {
        if (path != mPath) {
            (void)mJournal.begin(path); // ended like any other
            mView.recordingEndsEarly(kFolderRemoved(mPath, QFileInfo(path).path()));
        }
        const qint64 bytes = QFileInfo(path).size();
        RecordedAudioInfo &item = mList.addRecordedFile(path, ToolString::stringFromDuration(counts.seconds()),
                                                        ToolFile::fileSizeFormatterToString(bytes));
        item.Seconds = counts.seconds();
        constexpr int kLast = std::numeric_limits<int>::max();
        AppSettings::setrecordNameBaseOn(std::min(AppSettings::recordNameBaseOn(), kLast - 1) + 1);
        mView.recordingFinished({path, counts.seconds(), bytes, counts.droppedFrames, counts.droppedFrames});
        if (counts.droppedPictures > 0)
            mView.recordingEndsEarly(kDroppedPictures(QString::number(counts.droppedPictures)));
    }
    if (!mWritten.isEmpty())
        for (const QString &file : {mWritten, mPath, path})
            mJournal.settle(file);
    letGo();
    if (mState == State::FallingAsleep) {
        if (failure && isThere) // Of one that was not begun yet nothing is lost: another follows.
            mView.recordingEndsEarly(failure->sentence);
        setState(State::Asleep);
        mSleep.release();
        if (!mSleep.isAsleep())
            QMetaObject::invokeMethod(
                this, [this] { machineDidWake(); }, Qt::QueuedConnection);
    } else if (wasBegun) {
        end(failure ? RecordingTrouble{failure->sentence, isThere ? path : QString()} : RecordingTrouble());
    }
}

// Nothing follows.
void MovieSession::end(const RecordingTrouble &trouble) {
    setState(State::Idle);
    mSleep.release();
    if (!trouble.sentence.isEmpty())
        mView.recordingFailed(trouble);
    mView.recordingSettled();
}

// The recorder stays with the kit: a camera may be looked at on.
void MovieSession::letGo() {
    if (mRecorder)
        mRecorder->delegate = nullptr;
    mRecorder = nullptr;
}

} // namespace cantorel

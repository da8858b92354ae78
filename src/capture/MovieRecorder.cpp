#include "capture/MovieRecorder.h"

#include "capture/MovieRecording.h"
#include "lang/Lang.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/media/MediaFailures.h"
#include "platform/media/RecordingWorker.h"
#include "platform/media/UnfinishedName.h"
#include "platform/media/movie/MovieFailures.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <utility>

namespace cantorel {

using foundation::Failure;

// A device that is heard, and the queue that its stream fills.
struct MovieRecorder::Heard {
    std::unique_ptr<media::CaptureStream> stream;
    std::shared_ptr<media::FrameQueue> queue;

    static std::optional<Heard> open(const media::CaptureDevice &device) {
        auto opened = media::CaptureStream::open(device);
        if (!opened)
            return {};
        Heard heard{std::move(opened).value(), nullptr};
        heard.queue = media::makeRecordingQueue(heard.stream->channels(), heard.stream->sampleRate());
        heard.stream->attach(heard.queue.get());
        // What it brings in another format would be noise: silence stands in from then on.
        heard.stream->onFormatChanged = [stream = heard.stream.get(), queue = heard.queue] {
            if (!stream->matchesDevice())
                stream->detach(queue.get());
        };
        return heard;
    }
    media::SoundInput input() const {
        return {queue, static_cast<int>(std::lround(stream->sampleRate())), stream->sourceChannels(),
                [stream = stream.get(), queue = queue] { return stream->moment(*queue); }};
    }
};

// The streams outlive what reads their queues.
struct MovieRecorder::Running {
    std::vector<Heard> heard;
    std::unique_ptr<MovieRecording> recording;
};

MovieRecorder::MovieRecorder() = default;

MovieRecorder::~MovieRecorder() {
    // Their files are finished and waited for; nobody is told any more.
    mCurrent.reset();
    mEnding.clear();
}

bool MovieRecorder::fail(const Failure &why, QString *error) {
    mFailure = why;
    if (error)
        *error = Lang::english(why.sentence);
    return false;
}

bool MovieRecorder::begin(Begin begin, QString *error) {
    mFailure.reset();
    if (isRecording())
        stopRecording();
    const QString path = begin.url.toLocalFile();
    MovieRecording::Plan plan;
    plan.path = path;
    plan.writtenAs = media::unfinishedName(path);
    plan.pictures.size = media::evenSize(begin.size);
    plan.pictures.picturesPerSecond = static_cast<int>(std::max<std::uint32_t>(outputFrameRate(), 1));
    plan.pictures.coder = videoEncodeName();
    plan.pictures.isFromCamera = begin.isFromCamera;
    plan.source = std::move(begin.source);
    plan.diskReserve = diskReserve;
    plan.rescue = rescue;
    if (begin.size != media::PictureSize{} && !media::isMovieSize(plan.pictures.size))
        return fail(media::failures::movieSize(begin.size), error);
    const QFileInfo file(path);
    if (path.isEmpty() || file.isDir() || !QFileInfo(file.path()).isDir())
        return fail(media::failures::cannotCreate(path, file.isDir() ? EISDIR : ENOENT), error);

    auto running = std::make_unique<Running>();
    for (const media::CaptureDevice &device : begin.devices)
        if (auto heard = Heard::open(device)) {
            plan.sound.push_back(heard->input());
            running->heard.push_back(std::move(*heard));
        }
    mOuputFileURL = begin.url;
    if (willWrite)
        willWrite(plan.writtenAs);
    // Who is gone by then hears nothing: Qt drops the calls.
    const auto post = [this](auto call) { QMetaObject::invokeMethod(this, std::move(call), Qt::QueuedConnection); };
    const Running *const which = running.get();
    MovieRecording::Events events;
    events.started = [this, post, url = begin.url] {
        post([this, url] { delegate->captureDidStartRecordingToOutputAtURL(*this, url); });
    };
    events.shallStop = [this, post, which] {
        post([this, which] {
            if (mCurrent.get() == which)
                stopRecording();
        });
    };
    events.finished = [this, post, which](const QString &path, const std::optional<Failure> &failure) {
        post([this, which, path, failure] { finished(*which, path, failure); });
    };
    running->recording =
        std::make_unique<MovieRecording>(std::move(plan), hal::HardwareSystem::clock(), std::move(events));
    if (const auto started = running->recording->start(); !started)
        return fail(started.failure(), error);
    mCurrent = std::move(running);
    bIsPaused = false;
    return true;
}

void MovieRecorder::stopRecording() {
    setIsShowAudioLevel(false);
    if (!mCurrent)
        return;
    mCurrent->recording->stop();
    mEnding.push_back(std::move(mCurrent));
    bIsPaused = false;
}

void MovieRecorder::pauseRecording(media::AudioFileOutput::Pause) {
    if (!mCurrent || bIsPaused)
        return;
    mCurrent->recording->pause();
    bIsPaused = true;
}

void MovieRecorder::resumeRecording() {
    if (!mCurrent || !bIsPaused)
        return;
    mCurrent->recording->resume();
    bIsPaused = false;
}

bool MovieRecorder::isRecording() const { return mCurrent != nullptr; }

const MovieRecording *MovieRecorder::shown() const {
    return mCurrent ? mCurrent->recording.get() : mEnding.empty() ? nullptr : mEnding.back()->recording.get();
}

media::RecordingCounts MovieRecorder::recordingCounts() const { return shown() ? shown()->counts() : mLast; }

QString MovieRecorder::coder() const { return shown() ? shown()->coder() : mLastCoder; }

media::PictureSize MovieRecorder::movieSize() const { return shown() ? shown()->size() : mLastSize; }

bool MovieRecorder::hasSound() const { return mCurrent && !mCurrent->heard.empty(); }

std::vector<media::AudioChannel> MovieRecorder::audioChannels() const {
    std::vector<media::AudioChannel> channels;
    if (!mCurrent)
        return channels;
    int source = 0;
    for (const Heard &heard : mCurrent->heard) {
        for (const float level : heard.stream->levels())
            channels.push_back({level, true, source});
        ++source;
    }
    return channels;
}

void MovieRecorder::finished(const Running &which, const QString &path, const std::optional<Failure> &failure) {
    // A source that has ended by itself is still the current one.
    if (mCurrent.get() == &which)
        stopRecording();
    const auto found =
        std::find_if(mEnding.begin(), mEnding.end(), [&](const auto &one) { return one.get() == &which; });
    if (found == mEnding.end())
        return;
    const std::unique_ptr<Running> ended = std::move(*found);
    mEnding.erase(found);
    mLast = ended->recording->counts();
    mLastCoder = ended->recording->coder();
    mLastSize = ended->recording->size();
    mFailure = failure;
    if (QFileInfo::exists(path) && (!failure || mLast.bytes > 0))
        delegate->AVRecorderDidFinishRecorderWithOutputFilePath(*this, path);
    delegate->captureDidFinishRecordingToOutputAtURL(*this, QUrl::fromLocalFile(path), mLast, failure);
}

} // namespace cantorel

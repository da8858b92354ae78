#pragma once

#include "capture/ZQAVRecorder.h"
#include "platform/media/movie/MovieCapture.h"
#include "platform/media/movie/PictureSource.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

class MovieRecording;

// What the recorders of screens and cameras have in common: pictures of one source and the sound of any number of
// devices, in one movie. Main thread.
class MovieRecorder : public ZQAVRecorder {
public:
    ~MovieRecorder() override;

    // Ends the movie; its file is finished in the background, and the delegate hears of it in any case.
    void stopRecording() override;
    void pauseRecording(media::AudioFileOutput::Pause pause = media::AudioFileOutput::Pause::ByPerson) override;
    void resumeRecording() override;
    bool isRecording() const override;
    media::RecordingCounts recordingCounts() const override;

    // Why a start failed.
    const std::optional<foundation::Failure> &failure() const { return mFailure; }
    // Hears of the hidden file that a movie grows in, before anything is written: a journal keeps it, so that the next
    // start finds what a crash leaves. Called in startRecording().
    std::function<void(const QString &file)> willWrite;
    // A movie ends by itself when its disk has less free space than this, in bytes. Set before a start.
    std::uint64_t diskReserve = media::kDiskReserve;
    // What codes the pictures of the movie under way, once that is known, else of the last one: "libx264".
    QString coder() const;

protected:
    MovieRecorder();

    struct Begin {
        QUrl url;
        std::unique_ptr<media::PictureSource> source;
        media::PictureSize size; // of the movie; made even here
        bool isFromCamera = false;
        std::vector<media::CaptureDevice> devices; // those that cannot be opened are left out
    };
    // False with failure().
    bool begin(Begin begin, QString *error);
    bool fail(const foundation::Failure &why, QString *error);

    std::vector<media::AudioChannel> audioChannels() const override;

private:
    void finished(const QString &path, const media::RecordingCounts &counts,
                  const std::optional<foundation::Failure> &failure);

    std::vector<std::unique_ptr<media::CaptureStream>> mStreams;
    std::unique_ptr<MovieRecording> mRecording; // until its file is finished
    media::RecordingCounts mLast;
    QString mLastCoder;
    std::optional<foundation::Failure> mFailure;
};

} // namespace cantorel

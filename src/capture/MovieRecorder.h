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

    // Why a start failed, or what is wrong with the last movie.
    const std::optional<foundation::Failure> &failure() const { return mFailure; }
    // Hears of the hidden file that a movie grows in, before anything is written: a journal keeps it, so that the next
    // start finds what a crash leaves. Called in startRecording().
    std::function<void(const QString &file)> willWrite;
    // Names a free file for a movie whose folder was removed meanwhile; that one is then told as its file. On another
    // thread. Set before a start.
    std::function<QString(const QString &path)> rescue;
    // A movie ends by itself when its disk has less free space than this, in bytes. Set before a start.
    std::uint64_t diskReserve = media::kDiskReserve;
    // What codes the pictures of the movie under way, once that is known, else of the last one: "libx264".
    QString coder() const;
    // Of the movie under way, once that is known, else of the last one.
    media::PictureSize movieSize() const;
    // Whether the movie under way has sound: some of the devices could be opened.
    bool hasSound() const;

protected:
    MovieRecorder();

    struct Begin {
        QUrl url;
        std::unique_ptr<media::PictureSource> source;
        media::PictureSize size; // of the movie, made even here; 0: that of the first picture
        bool isFromCamera = false;
        std::vector<media::CaptureDevice> devices; // those that cannot be opened are left out
    };
    // False with failure().
    bool begin(Begin begin, QString *error);
    bool fail(const foundation::Failure &why, QString *error);

    std::vector<media::AudioChannel> audioChannels() const override;

private:
    struct Heard;
    struct Running;

    const MovieRecording *shown() const;
    void finished(const Running &which, const QString &path, const std::optional<foundation::Failure> &failure);

    std::unique_ptr<Running> mCurrent;
    std::vector<std::unique_ptr<Running>> mEnding; // stopped, still writing
    media::RecordingCounts mLast;
    QString mLastCoder;
    media::PictureSize mLastSize;
    std::optional<foundation::Failure> mFailure;
};

} // namespace cantorel

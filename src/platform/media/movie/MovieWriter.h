#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/Codecs.h"
#include "platform/media/FragmentedFile.h"
#include "platform/media/movie/VideoCodecs.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace cantorel::media {

using MovieTime = std::chrono::nanoseconds;

// What a movie is made of.
struct MovieSettings {
    VideoSettings pictures;
    int channels = 0;          // of the sound that is handed in; 0: a movie without sound
    int soundRate = 0;         // its frames a second
    int soundBitRate = 128000; // bits a second
};

// Writes pictures and sound to an MP4 that survives a crash: it plays after every fragment, at least one a second, and
// becomes an ordinary one in place when it is finished. It grows under a hidden name beside its own and takes that one
// at the end, in place of a file that has it. One thread at a time. Times count from the movie's start.
class MovieWriter {
public:
    // writtenAs: a free name in the folder of `path`, see unfinishedName().
    static foundation::Result<std::unique_ptr<MovieWriter>> open(const QString &path, const QString &writtenAs,
                                                                 const MovieSettings &settings);
    // Keeps an unfinished file, but for one that holds nothing.
    ~MovieWriter();

    // The first picture stands at 0 whatever its time is; a time that does not grow is moved on.
    foundation::Result<void> appendPicture(const FittedPicture &picture, MovieTime time);
    // Interleaved. What is missing in front of it is filled with silence, what was heard already is left out.
    foundation::Result<void> appendSound(std::span<const float> interleaved, MovieTime time);

    // Shows the last picture up to that time, and closes the file. Once only, also after a failure: what was written
    // before it then plays. Fails where nothing was written; then there is no file. A file whose folder was renamed is
    // named there; where its folder was removed, it is copied to the free path that `rescue` names.
    foundation::Result<FileForm> finish(MovieTime end, const std::function<QString(const QString &path)> &rescue = {});

    // Where the file lies: hidden, until finish() has given it its name.
    const QString &file() const { return mFile; }
    std::uint64_t bytes() const { return mOutput->bytes(); }
    std::int64_t pictures() const { return mPictures; }
    QString coder() const { return mEncoder->coder(); }

private:
    MovieWriter(QString path, QString writtenAs, const MovieSettings &settings);
    foundation::Result<void> start();
    foundation::Result<void> code(std::span<const float> interleaved);
    foundation::Result<void> writeFragment();
    foundation::Result<void> takeName(const std::function<QString(const QString &path)> &rescue);

    const QString mPath;
    QString mFile;
    const MovieSettings mSettings;
    std::unique_ptr<VideoEncoder> mEncoder;
    std::unique_ptr<AacEncoder> mSoundEncoder; // null without sound
    std::unique_ptr<FragmentedFile> mOutput;
    PictureRun mPictureRun; // of the fragment under way; the last one's length is open
    PacketRun mSoundRun;
    std::int64_t mPictures = 0;
    std::int64_t mLastPicture = -1;  // where it stands, in units of the pictures' track
    std::int64_t mFragmentBegin = 0; // the same, of the fragment under way
    std::int64_t mSoundFrames = 0;   // handed to the coder
    bool mFailed = false;
};

} // namespace cantorel::media

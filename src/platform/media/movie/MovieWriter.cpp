#include "platform/media/movie/MovieWriter.h"

#include "platform/foundation/FileDescriptor.h"
#include "platform/media/MediaFailures.h"
#include "platform/media/asset/MediaTime.h"
#include "platform/media/movie/MovieFailures.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr std::int32_t kNanoseconds = 1'000'000'000;
// What the file lacks of the movie, at most: half a second, and the last picture, which is repeated once a second.
constexpr std::int64_t kFragment = kPictureTimescale / 2;
constexpr int kHighestAacRate = 96000;
constexpr int kUsualRate = 48000;

std::int64_t pictureUnits(MovieTime time) { return MediaTime{time.count(), kNanoseconds}.in(kPictureTimescale).value; }

AacSettings soundSettings(const MovieSettings &settings) {
    AacSettings sound;
    sound.bitRate = settings.soundBitRate;
    sound.channels = settings.channels;
    sound.rate = settings.soundRate > kHighestAacRate ? kUsualRate : 0;
    return sound;
}

void syncFolder(const QString &file) {
    const foundation::FileDescriptor folder(
        ::open(QFile::encodeName(QFileInfo(file).absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen())
        (void)::fsync(folder.get()); // not every file system can; the file itself is safe
}

} // namespace

MovieWriter::MovieWriter(QString path, QString writtenAs, const MovieSettings &settings)
    : mPath(std::move(path)), mFile(std::move(writtenAs)), mSettings(settings) {}

Result<std::unique_ptr<MovieWriter>> MovieWriter::open(const QString &path, const QString &writtenAs,
                                                       const MovieSettings &settings) {
    std::unique_ptr<MovieWriter> writer(new MovieWriter(path, writtenAs, settings));
    if (const auto started = writer->start(); !started)
        return started.failure();
    return writer;
}

Result<void> MovieWriter::start() {
    const auto videoCodecs = loadVideoCodecs();
    if (!videoCodecs)
        return videoCodecs.failure();
    auto encoder = videoCodecs.value()->makeEncoder(mSettings.pictures);
    if (!encoder)
        return encoder.failure();
    mEncoder = std::move(encoder).value();
    MovieFormat format;
    format.pictures = mEncoder->format();
    if (mSettings.channels > 0 && mSettings.soundRate > 0) {
        const auto codecs = loadCodecs();
        if (!codecs)
            return codecs.failure();
        auto sound = codecs.value()->makeAacEncoder(mSettings.soundRate, soundSettings(mSettings));
        if (!sound)
            return sound.failure();
        mSoundEncoder = std::move(sound).value();
        format.sound = mSoundEncoder->format();
    }
    auto output = FragmentedFile::create(mFile, format, FragmentedFile::Taken::Fails);
    if (!output)
        return output.failure();
    mOutput = std::move(output).value();
    return {};
}

MovieWriter::~MovieWriter() {
    if (mOutput && mOutput->isEmpty())
        QFile::remove(mFile);
}

Result<void> MovieWriter::appendPicture(const FittedPicture &picture, MovieTime time) {
    const std::int64_t at = mPictures == 0 ? 0 : std::max(pictureUnits(time), mLastPicture + 1);
    if (mPictures > 0)
        mPictureRun.entries.back().length = static_cast<std::uint32_t>(at - mLastPicture);
    if (at - mFragmentBegin >= kFragment)
        if (const auto written = writeFragment(); !written)
            return written;
    const auto coded =
        mEncoder->encode(picture, MovieTime(MediaTime{at, kPictureTimescale}.in(kNanoseconds).value), mPictureRun);
    mFailed = mFailed || !coded;
    if (!coded)
        return coded;
    mLastPicture = at;
    ++mPictures;
    return {};
}

Result<void> MovieWriter::appendSound(std::span<const float> interleaved, MovieTime time) {
    if (!mSoundEncoder)
        return {};
    const auto channels = static_cast<std::size_t>(mSettings.channels);
    std::int64_t missing = MediaTime{time.count(), kNanoseconds}.in(mSettings.soundRate).value - mSoundFrames;
    if (missing < 0)
        interleaved = interleaved.subspan(std::min(interleaved.size(), static_cast<std::size_t>(-missing) * channels));
    const std::vector<float> silence(static_cast<std::size_t>(std::clamp<std::int64_t>(missing, 0, mSettings.soundRate))
                                     * channels);
    while (missing > 0) {
        const auto count = std::min<std::size_t>(static_cast<std::size_t>(missing), silence.size() / channels);
        if (const auto coded = code(std::span(silence).first(count * channels)); !coded)
            return coded;
        missing -= static_cast<std::int64_t>(count);
    }
    return code(interleaved);
}

Result<void> MovieWriter::code(std::span<const float> interleaved) {
    mSoundFrames += static_cast<std::int64_t>(interleaved.size() / static_cast<std::size_t>(mSettings.channels));
    const auto coded = mSoundEncoder->encode(interleaved, mSoundRun);
    mFailed = mFailed || !coded;
    return coded;
}

Result<void> MovieWriter::writeFragment() {
    const auto written = mOutput->append(mSoundRun, mPictureRun);
    mFailed = mFailed || !written;
    for (const PictureRun::Entry &entry : mPictureRun.entries)
        mFragmentBegin += entry.length;
    mSoundRun.clear();
    mPictureRun.clear();
    return written;
}

Result<FileForm> MovieWriter::finish(MovieTime end, const std::function<QString(const QString &)> &rescue) {
    if (mPictures > 0 && !mFailed) {
        // One that is alone is seen in any case.
        const int least = mPictures > 1 ? 1 : kPictureTimescale / std::max(1, mSettings.pictures.picturesPerSecond);
        mPictureRun.entries.back().length =
            static_cast<std::uint32_t>(std::max<std::int64_t>(pictureUnits(end) - mLastPicture, least));
        Result<void> done = mSoundEncoder ? mSoundEncoder->flush(mSoundRun) : Result<void>();
        if (done)
            done = writeFragment();
        mFailed = !done;
    }
    if (mOutput->isEmpty())
        return failures::noPicture(mPath); // of a movie that failed at once the caller knows why
    std::int64_t frames = 0;
    if (mSoundEncoder) {
        // What did not reach the file is not counted.
        const std::int64_t written =
            static_cast<std::int64_t>(mOutput->packets()) * kFramesPerPacket - mSoundEncoder->format().primingFrames;
        frames = std::clamp<std::int64_t>(mSoundEncoder->frames(), 0, std::max<std::int64_t>(written, 0));
    }
    const auto form = mOutput->finish(frames);
    if (!form && !mOutput->isLost())
        return form;
    const auto named = takeName(rescue);
    return named ? form : named.failure();
}

Result<void> MovieWriter::takeName(const std::function<QString(const QString &)> &rescue) {
    if (rescue && mOutput->isLost()) {
        const QString path = rescue(mPath);
        const auto copied = mOutput->copyTo(path);
        if (!copied)
            return failures::notRescued(mPath, copied.failure());
        mFile = path;
        return {};
    }
    const QString place = mOutput->place();
    if (place.isEmpty()) // Who removes only the file means it.
        return failures::fileRemoved(mPath);
    const QString path =
        place == mFile ? mPath : QFileInfo(place).path() + QLatin1Char('/') + QFileInfo(mPath).fileName();
    mFile = place;
    // One step: there is no moment without the file that had the name.
    if (std::rename(QFile::encodeName(place).constData(), QFile::encodeName(path).constData()) != 0)
        return failures::cannotCreate(path, errno);
    mFile = path;
    syncFolder(path);
    return {};
}

} // namespace cantorel::media

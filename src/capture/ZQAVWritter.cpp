#include "capture/ZQAVWritter.h"

#include "log/Log.h"

#include <algorithm>
#include <utility>

namespace cantorel {

using media::MovieTime;

ZQAVWritter::ZQAVWritter(const QString &outputFilePath, int resolutionWidth, int resolutionHeight, int audioChannel,
                         int sampleRate)
    : mOutputFilePath(outputFilePath), mWrittenAs(media::unfinishedName(outputFilePath)) {
    mSettings.pictures.size = media::evenSize({resolutionWidth, resolutionHeight});
    mSettings.channels = sampleRate > 0 ? audioChannel : 0;
    mSettings.soundRate = sampleRate;
}

ZQAVWritter::~ZQAVWritter() = default;

bool ZQAVWritter::note(const foundation::Result<void> &done, const char *what) {
    if (done)
        return true;
    if (!mFailure) {
        mFailure = done.failure();
        Log(QString::fromLatin1(what).arg(done.failure().detail));
    }
    return false;
}

bool ZQAVWritter::writeWithSampleBuffer(const media::MovieSample &sample, bool isVideo) {
    if (mFailure)
        return false;
    const MovieTime time = sample.time - mStartTime;
    mEndTime = std::max(mEndTime, sample.time + sample.duration);
    if (!isVideo && !mAVWritter) {
        mHeld.emplace_back(time, std::vector<float>(sample.sound.begin(), sample.sound.end()));
        return true;
    }
    if (isVideo && !sample.picture)
        return true;
    if (!mAVWritter) {
        auto opened = media::MovieWriter::open(mOutputFilePath, mWrittenAs, mSettings);
        if (!opened)
            return note(opened.failure(), "start write error %1");
        mAVWritter = std::move(opened).value();
        mCoder = mAVWritter->coder();
    }
    foundation::Result<void> written;
    if (isVideo)
        written = mAVWritter->appendPicture(*sample.picture, time);
    for (const auto &[at, sound] : std::exchange(mHeld, {}))
        if (written)
            written = mAVWritter->appendSound(sound, at);
    if (written && !isVideo)
        written = mAVWritter->appendSound(sample.sound, time);
    mBytes = mAVWritter->bytes();
    return note(written, "write error %1");
}

void ZQAVWritter::stopWritingWithFinishWrittingWithBlock(std::function<void()> block) {
    if (mAVWritter) {
        const auto finished = mAVWritter->finish(mEndTime - mStartTime, mRescue);
        if (!finished)
            (void)note(finished.failure(), "write error %1"); // failure() says it
        mBytes = mAVWritter->bytes();
        mWrittenAs = mAVWritter->file();
        mAVWritter.reset();
    }
    if (block)
        mFinishBlock = std::move(block);
    if (const auto told = std::exchange(mFinishBlock, {}))
        told();
}

} // namespace cantorel

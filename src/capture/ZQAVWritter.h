#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/UnfinishedName.h"
#include "platform/media/movie/MovieCapture.h"
#include "platform/media/movie/MovieWriter.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace cantorel {

// Writes samples to a movie. Used only by the thread that hands them over. Spelling is fixed.
class ZQAVWritter {
public:
    // Sizes in points. Without channels or rate there is no sound. The file is made with the first picture; sound
    // before it is held.
    ZQAVWritter(const QString &outputFilePath, int resolutionWidth, int resolutionHeight, int audioChannel,
                int sampleRate);
    virtual ~ZQAVWritter();

    // False once writing has failed; failure() says why. A picture that is not there is skipped.
    bool writeWithSampleBuffer(const media::MovieSample &sample, bool isVideo);
    void stopWriting() { stopWritingWithFinishWrittingWithBlock({}); }
    // The block, else the finish block, is always called, at the end of this call: also when nothing was written.
    void stopWritingWithFinishWrittingWithBlock(std::function<void()> block);

    bool isRecording() const { return mAVWritter != nullptr; } // a file is open
    QString outputFilePath() const { return mOutputFilePath; }
    QString file() const { return mWrittenAs; } // where it lies now: hidden, until it is whole
    media::MovieTime startTime() const { return mStartTime; }
    void setStartTime(media::MovieTime time) { mStartTime = time; }
    void setFinishBlock(std::function<void()> block) { mFinishBlock = std::move(block); }

    // Up to which time the last picture is shown when it stops; the end of what was written, unless it is set.
    void setEndTime(media::MovieTime time) { mEndTime = time; }
    media::MovieTime endTime() const { return mEndTime; }
    // The hidden name that the file bears until it is whole, where it shall not be the next free one.
    void setWrittenAs(const QString &file) { mWrittenAs = file; }
    // Names a free file for a movie whose folder was removed meanwhile.
    void setRescue(std::function<QString(const QString &path)> rescue) { mRescue = std::move(rescue); }
    const std::optional<foundation::Failure> &failure() const { return mFailure; }
    std::uint64_t bytes() const { return mBytes; }
    QString coder() const { return mCoder; }
    media::PictureSize size() const { return mSettings.pictures.size; }

protected:
    media::MovieSettings mSettings;

private:
    bool note(const foundation::Result<void> &done, const char *what);

    const QString mOutputFilePath;
    QString mWrittenAs;
    std::unique_ptr<media::MovieWriter> mAVWritter;                     // Spelling is fixed.
    std::vector<std::pair<media::MovieTime, std::vector<float>>> mHeld; // sound before the first picture
    media::MovieTime mStartTime{};
    media::MovieTime mEndTime{};
    std::function<void()> mFinishBlock;
    std::function<QString(const QString &)> mRescue;
    std::optional<foundation::Failure> mFailure;
    std::uint64_t mBytes = 0;
    QString mCoder;
};

} // namespace cantorel

#include "platform/media/movie/SharedPictures.h"

#include <algorithm>
#include <utility>

namespace cantorel::media {

using foundation::Result;

class SharedPictures::View : public PictureSource {
public:
    explicit View(std::shared_ptr<SharedPictures> shared) : mShared(std::move(shared)) {}
    ~View() override { stop(); }

    PictureSize size() const override { return mShared->size(); }
    Result<void> start(PictureSink &sink, int picturesPerSecond) override {
        stop();
        const auto started = mShared->add(sink, picturesPerSecond);
        mSink = started ? &sink : nullptr;
        return started;
    }
    void stop() override {
        if (PictureSink *sink = std::exchange(mSink, nullptr))
            mShared->remove(*sink);
    }

private:
    const std::shared_ptr<SharedPictures> mShared;
    PictureSink *mSink = nullptr; // while started
};

std::unique_ptr<PictureSource> SharedPictures::view() { return std::make_unique<View>(shared_from_this()); }

Result<void> SharedPictures::add(PictureSink &sink, int picturesPerSecond) {
    bool runs = false;
    {
        const std::lock_guard lock(mMutex);
        runs = !mSinks.empty() && !mHasEnded;
        mSinks.push_back(&sink);
        mHasEnded = false;
    }
    if (runs)
        return {};
    mSource->stop(); // one that has ended
    const auto started = mSource->start(*this, picturesPerSecond);
    if (!started)
        remove(sink);
    return started;
}

void SharedPictures::remove(PictureSink &sink) {
    bool isLast = false;
    {
        const std::lock_guard lock(mMutex);
        std::erase(mSinks, &sink);
        isLast = mSinks.empty();
    }
    if (isLast)
        mSource->stop();
}

void SharedPictures::takePicture(const Picture &picture) {
    const std::lock_guard lock(mMutex);
    for (PictureSink *sink : mSinks)
        sink->takePicture(picture);
}

void SharedPictures::pictureSourceEnded(const foundation::Failure &why) {
    const std::lock_guard lock(mMutex);
    mHasEnded = true;
    for (PictureSink *sink : mSinks)
        sink->pictureSourceEnded(why);
}

} // namespace cantorel::media

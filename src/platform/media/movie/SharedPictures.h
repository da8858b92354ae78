#pragma once

#include "platform/media/movie/PictureSource.h"

#include <memory>
#include <mutex>
#include <vector>

namespace cantorel::media {

// One source for several who take its pictures: a camera is opened once, and is recorded and looked at. It runs while
// anybody takes them. Asked on one thread.
class SharedPictures : public std::enable_shared_from_this<SharedPictures>, private PictureSink {
public:
    explicit SharedPictures(std::unique_ptr<PictureSource> source) : mSource(std::move(source)) {}
    ~SharedPictures() override { mSource->stop(); }

    // A source of the same pictures, at the pace that the first of them has started with. Keeps this alive.
    std::unique_ptr<PictureSource> view();

    PictureSize size() const { return mSource->size(); }

private:
    class View;

    foundation::Result<void> add(PictureSink &sink, int picturesPerSecond);
    void remove(PictureSink &sink);

    void takePicture(const Picture &picture) override;
    void pictureSourceEnded(const foundation::Failure &why) override;

    const std::unique_ptr<PictureSource> mSource;
    std::mutex mMutex; // held while they are told, so that none is told behind its stop()
    std::vector<PictureSink *> mSinks;
    bool mHasEnded = false; // since the last start
};

} // namespace cantorel::media

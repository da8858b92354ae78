#include "platform/media/movie/PictureSources.h"

#include "platform/media/movie/MovieFailures.h"

#include <utility>

namespace cantorel::media {

namespace {

PictureSources *installed = nullptr;

} // namespace

foundation::Result<std::vector<Display>> PictureSources::displays() { return failures::noDisplay(); }

foundation::Result<std::unique_ptr<PictureSource>> PictureSources::openDisplay(const DisplayRequest &) {
    return failures::noDisplay();
}

foundation::Result<std::unique_ptr<PictureSource>> PictureSources::openCamera(const QString &uniqueID, CameraQuality) {
    return failures::cameraMissing(uniqueID);
}

InstalledPictureSources::InstalledPictureSources(std::unique_ptr<PictureSources> sources)
    : mSources(std::move(sources)) {
    Q_ASSERT(installed == nullptr);
    installed = mSources.get();
}

InstalledPictureSources::~InstalledPictureSources() { installed = nullptr; }

PictureSources &InstalledPictureSources::current() {
    static PictureSources nothing;
    return installed != nullptr ? *installed : nothing;
}

} // namespace cantorel::media

#include "capture/ZQScreenRecorder.h"

#include "platform/media/movie/MovieFailures.h"

#include <algorithm>
#include <utility>

namespace cantorel {

std::unique_ptr<ZQScreenRecorder> ZQScreenRecorder::init() {
    return std::unique_ptr<ZQScreenRecorder>(new ZQScreenRecorder);
}

std::vector<media::Display> ZQScreenRecorder::displays() {
    auto found = media::InstalledPictureSources::current().displays();
    if (found)
        return std::move(found).value();
    (void)fail(found.failure(), nullptr); // failure() says it
    return {};
}

QString ZQScreenRecorder::displayNameFromDisplayID(std::uint32_t displayId) {
    for (const media::Display &display : displays())
        if (display.id == displayId || displayId == 0)
            return display.name;
    return {};
}

void ZQScreenRecorder::setScreenDisplayId(std::uint32_t displayId) {
    if (std::exchange(mCaptureScreenId, displayId) != displayId)
        mCaptureRegion = {};
}

bool ZQScreenRecorder::initCaptureSession(QString *error) {
    mScreenInput.reset();
    if (!ZQAVRecorder::initCaptureSession(error))
        return false;
    media::PictureSources &sources = media::InstalledPictureSources::current();
    const auto found = sources.displays();
    if (!found)
        return fail(found.failure(), error);
    auto display = std::find_if(found.value().begin(), found.value().end(), [this](const media::Display &one) {
        return mCaptureScreenId == 0 ? one.frame.contains(mCaptureRegion) : one.id == mCaptureScreenId;
    });
    if (display == found.value().end() && mCaptureScreenId == 0) // it has no region, or that lies outside of all
        display = found.value().begin();
    if (display == found.value().end())
        return fail(media::failures::displayMissing(QString::number(mCaptureScreenId)), error);
    mCaptureScaleFactor = display->scaleFactor;
    media::DisplayRequest request;
    request.display = display->id;
    request.showsCursor = mShowsCursor;
    if (!mCaptureRegion.isEmpty())
        request.region = mCaptureRegion;
    auto opened = sources.openDisplay(request);
    if (!opened)
        return fail(opened.failure(), error);
    mScreenInput = std::move(opened).value();
    mPoints = mCaptureRegion.isEmpty() ? display->frame.size() : mCaptureRegion.size();
    return true;
}

bool ZQScreenRecorder::startRecording(const QUrl &url, QString *error) {
    if (!initCaptureSession(error))
        return false;
    Begin recording;
    recording.url = url;
    // In points; where the display does not say how many there are, in pixels.
    recording.size = mOutputSize.width > 0 ? mOutputSize
                     : mPoints.isEmpty()   ? mScreenInput->size()
                                           : media::PictureSize{mPoints.width(), mPoints.height()};
    recording.source = std::move(mScreenInput);
    recording.devices = mCaptureAudioDevices;
    return begin(std::move(recording), error);
}

} // namespace cantorel

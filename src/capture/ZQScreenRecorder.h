#pragma once

#include "capture/MovieRecorder.h"
#include "platform/media/movie/PictureSources.h"

#include <QRect>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

// Records a display, or a region of it, together with sound to an MP4. Handed out by ZQAVRecorderKit; main thread.
class ZQScreenRecorder : public MovieRecorder {
public:
    static std::unique_ptr<ZQScreenRecorder> init();

    // The devices that are heard in the next recording, mixed into one track; none: a movie without sound.
    void setInputAudioDevices(const std::vector<media::CaptureDevice> &devices) { setCaptureAudioDevices(devices); }
    void setCaptureAudioDevices(const std::vector<media::CaptureDevice> &devices) { mCaptureAudioDevices = devices; }
    const std::vector<media::CaptureDevice> &captureAudioDevices() const { return mCaptureAudioDevices; }

    // The displays that there are, the main one first; empty with a failure().
    std::vector<media::Display> displays();
    QString displayNameFromDisplayID(std::uint32_t displayId);

    // 0: the one that the region lies in, else the main one. Choosing another one forgets the region.
    void setScreenDisplayId(std::uint32_t displayId);
    std::uint32_t screenDisplayId() const { return mCaptureScreenId; }
    // In points of the space that all displays share; empty: the whole display, also when its size changes.
    void setRecordRect(const QRect &rect) { mCaptureRegion = rect; }
    QRect recordRect() const { return mCaptureRegion; }
    // Pixels of a point; that of the display once it was looked up by initCaptureSession().
    void setScaleFactor(double factor) { mCaptureScaleFactor = factor; }
    double scaleFactor() const { return mCaptureScaleFactor; }
    // The size of the movie, where it is not that of the region in points.
    void setOutputSize(media::PictureSize size) { mOutputSize = size; }
    void setMaximumScreenInputFramerate(std::uint32_t rate) { setOutputFrameRate(rate); }
    // Whether the pointer is in the picture; it is unless it is switched off.
    void setShowsCursor(bool shows) { mShowsCursor = shows; }
    bool showsCursor() const { return mShowsCursor; }

    // Looks the display up and opens what shows it. False with failure(): no display, or a region outside of it.
    bool initCaptureSession(QString *error) override;
    bool startRecording(const QUrl &url) { return startRecording(url, nullptr); }
    // A file of that name is replaced once the movie is whole. False with failure().
    bool startRecording(const QUrl &url, QString *error) override;
    void stopWriting() { stopRecording(); }

private:
    ZQScreenRecorder() = default;

    std::vector<media::CaptureDevice> mCaptureAudioDevices;
    std::uint32_t mCaptureScreenId = 0;
    QRect mCaptureRegion;
    double mCaptureScaleFactor = 1;
    media::PictureSize mOutputSize;
    bool mShowsCursor = true;
    std::unique_ptr<media::PictureSource> mScreenInput; // until a recording takes it
    QSize mPoints;                                      // that it shows
};

} // namespace cantorel

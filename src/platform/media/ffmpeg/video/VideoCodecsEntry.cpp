#include "platform/media/ffmpeg/video/LibavConverter.h"
#include "platform/media/ffmpeg/video/LibavFitter.h"
#include "platform/media/ffmpeg/video/LibavVideoEncoder.h"
#include "platform/media/movie/VideoCodecs.h"

namespace cantorel::media {

namespace {

class LibavVideoCodecs : public VideoCodecs {
public:
    // Failures are returned to the caller; the library prints nothing.
    LibavVideoCodecs() { av_log_set_level(AV_LOG_QUIET); }

    foundation::Result<std::unique_ptr<PictureFitter>> makeFitter(const VideoSettings &settings) const override {
        return std::unique_ptr<PictureFitter>(std::make_unique<LibavFitter>(settings));
    }
    foundation::Result<std::unique_ptr<PictureConverter>> makeConverter() const override {
        return std::unique_ptr<PictureConverter>(std::make_unique<LibavConverter>());
    }
    foundation::Result<std::unique_ptr<VideoEncoder>> makeEncoder(const VideoSettings &settings) const override {
        return LibavVideoEncoder::make(settings);
    }
};

} // namespace

} // namespace cantorel::media

extern "C" __attribute__((visibility("default"))) const cantorel::media::VideoCodecs *cantorel_media_video_codecs() {
    static const cantorel::media::LibavVideoCodecs codecs;
    return &codecs;
}

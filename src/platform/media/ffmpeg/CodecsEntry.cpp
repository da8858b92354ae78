#include "platform/media/Codecs.h"
#include "platform/media/ffmpeg/LibavAacEncoder.h"

namespace cantorel::media {

namespace {

class LibavCodecs : public Codecs {
public:
    // Failures are returned to the caller; the library prints nothing.
    LibavCodecs() { av_log_set_level(AV_LOG_QUIET); }

    foundation::Result<std::unique_ptr<AacEncoder>> makeAacEncoder(int inputRate,
                                                                   const AacSettings &settings) const override {
        return LibavAacEncoder::make(inputRate, settings);
    }
};

} // namespace

} // namespace cantorel::media

extern "C" __attribute__((visibility("default"))) const cantorel::media::Codecs *cantorel_media_codecs() {
    static const cantorel::media::LibavCodecs codecs;
    return &codecs;
}

#pragma once

// The handles of libavformat, beside those of the other libraries.

#include "platform/media/ffmpeg/FFmpegHandles.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace cantorel::media {

inline void closeInput(AVFormatContext *context) { avformat_close_input(&context); }
inline void freeStream(AVIOContext *stream) {
    av_freep(&stream->buffer);
    avio_context_free(&stream);
}
inline void freeOptions(AVDictionary *options) { av_dict_free(&options); }
inline void freeParameters(AVCodecParameters *parameters) { avcodec_parameters_free(&parameters); }

using InputHandle = foundation::Handle<AVFormatContext, closeInput>;
using StreamHandle = foundation::Handle<AVIOContext, freeStream>;
using OptionsHandle = foundation::Handle<AVDictionary, freeOptions>;
using ParametersHandle = foundation::Handle<AVCodecParameters, freeParameters>;

} // namespace cantorel::media

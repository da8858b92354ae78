#pragma once

// The handles of libavformat, beside those of the other libraries.

#include "platform/media/ffmpeg/FFmpegHandles.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace cantorel::media {

inline void closeInput(AVFormatContext *context) { avformat_close_input(&context); }

using InputHandle = foundation::Handle<AVFormatContext, closeInput>;

} // namespace cantorel::media

#pragma once

// The handles of FFmpeg's libraries that only pictures need, and the only place that names their release functions.

#include "platform/media/ffmpeg/FFmpegHandles.h"

extern "C" {
#include <libavutil/buffer.h>
#include <libavutil/hwcontext.h>
#include <libswscale/swscale.h>
}

namespace cantorel::media {

inline void freeBuffer(AVBufferRef *buffer) { av_buffer_unref(&buffer); }
inline void freeBufferPool(AVBufferPool *pool) { av_buffer_pool_uninit(&pool); }

using VideoBuffer = foundation::Handle<AVBufferRef, freeBuffer>;
using VideoPool = foundation::Handle<AVBufferPool, freeBufferPool>;
using ScalerContext = foundation::Handle<SwsContext, sws_freeContext>;

} // namespace cantorel::media

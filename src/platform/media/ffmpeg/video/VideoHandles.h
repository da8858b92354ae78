#pragma once

// The handles of FFmpeg's libraries for pictures, and the only place that names their release functions.

#include "platform/foundation/Handle.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/buffer.h>
#include <libavutil/error.h>
#include <libavutil/frame.h>
#include <libavutil/hwcontext.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include <QString>

namespace cantorel::media {

inline void freeVideoContext(AVCodecContext *context) { avcodec_free_context(&context); }
inline void freeVideoFrame(AVFrame *frame) { av_frame_free(&frame); }
inline void freeVideoPacket(AVPacket *packet) { av_packet_free(&packet); }
inline void freeVideoBuffer(AVBufferRef *buffer) { av_buffer_unref(&buffer); }
inline void freeVideoPool(AVBufferPool *pool) { av_buffer_pool_uninit(&pool); }

using VideoContext = foundation::Handle<AVCodecContext, freeVideoContext>;
using VideoFrame = foundation::Handle<AVFrame, freeVideoFrame>;
using VideoPacket = foundation::Handle<AVPacket, freeVideoPacket>;
using VideoBuffer = foundation::Handle<AVBufferRef, freeVideoBuffer>;
using VideoPool = foundation::Handle<AVBufferPool, freeVideoPool>;
using ScalerContext = foundation::Handle<SwsContext, sws_freeContext>;

inline QString videoError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

} // namespace cantorel::media

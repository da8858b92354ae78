#pragma once

// The handles of FFmpeg's libraries, and the only place that names their release functions.

#include "platform/foundation/Handle.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/error.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <QString>

namespace cantorel::media {

inline void freeCodecContext(AVCodecContext *context) { avcodec_free_context(&context); }
inline void freeFrame(AVFrame *frame) { av_frame_free(&frame); }
inline void freePacket(AVPacket *packet) { av_packet_free(&packet); }
inline void freeResampler(SwrContext *context) { swr_free(&context); }

using CodecContextHandle = foundation::Handle<AVCodecContext, freeCodecContext>;
using FrameHandle = foundation::Handle<AVFrame, freeFrame>;
using PacketHandle = foundation::Handle<AVPacket, freePacket>;
using ResamplerHandle = foundation::Handle<SwrContext, freeResampler>;

inline QString ffmpegError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

} // namespace cantorel::media

#include "tests/support/VideoNode.h"

#include "platform/pipewire/PipeWireHandles.h"

#include <spa/param/video/format-utils.h>

#include <atomic>
#include <cstring>

namespace cantorel::test {

namespace {

constexpr int kBlock = 16;

} // namespace

struct VideoNode::Stream {
    std::atomic<int> number = 0;
    std::atomic<bool> isStill = false, lies = false;
    media::PictureSize size, agreed;
    int rate = 30;
    hal::ThreadLoopHandle loop;
    hal::ContextHandle context;
    hal::CoreHandle core;
    hal::LoopSourceHandle timer;
    hal::StreamHandle stream;
    hal::Hook hook;

    const spa_pod *format(spa_pod_builder &builder) const {
        const spa_rectangle pixels{std::uint32_t(size.width), std::uint32_t(size.height)};
        const spa_fraction pace{std::uint32_t(rate), 1};
        return static_cast<const spa_pod *>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
            SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw),
            SPA_FORMAT_VIDEO_format, SPA_POD_Id(SPA_VIDEO_FORMAT_BGRx), SPA_FORMAT_VIDEO_size,
            SPA_POD_Rectangle(&pixels), SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&pace)));
    }
    void agree(const spa_pod *param) {
        spa_video_info_raw info = {};
        if (spa_format_video_raw_parse(param, &info) < 0)
            return;
        agreed = {int(info.size.width), int(info.size.height)};
        std::uint8_t room[512];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(room, sizeof room);
        const spa_pod *buffers[] = {static_cast<const spa_pod *>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
            SPA_POD_Int(agreed.width * agreed.height * 4), SPA_PARAM_BUFFERS_stride, SPA_POD_Int(agreed.width * 4),
            SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemFd)))};
        pw_stream_update_params(stream.get(), buffers, 1);
    }
    void draw() {
        pw_buffer *buffer = pw_stream_dequeue_buffer(stream.get());
        if (!buffer)
            return;
        spa_data &data = buffer->buffer->datas[0];
        const std::size_t line = std::size_t(agreed.width) * 4, all = line * std::size_t(agreed.height);
        if (data.data && data.maxsize >= all) {
            auto *pixels = static_cast<std::uint8_t *>(data.data);
            std::memset(pixels, 0x40, all);
            const int next = number + 1;
            for (int bit = 0; bit < kNumberBits; ++bit)
                for (int y = 0; y < kBlock; ++y)
                    std::memset(pixels + std::size_t(y) * line + std::size_t(bit) * kBlock * 4,
                                (next >> bit & 1) != 0 ? 0xff : 0, kBlock * 4);
            number = next;
            data.chunk->offset = 0;
            data.chunk->stride = int(lies ? line * 64 : line);
            data.chunk->size = std::uint32_t(all);
        }
        pw_stream_queue_buffer(stream.get(), buffer);
    }
};

VideoNode::VideoNode(const QString &name, const QString &description, media::PictureSize size, int picturesPerSecond)
    : mStream(std::make_unique<Stream>()) {
    static const pw_stream_events events = [] {
        pw_stream_events table = {};
        table.version = PW_VERSION_STREAM_EVENTS;
        table.param_changed = [](void *data, std::uint32_t id, const spa_pod *param) {
            if (id == SPA_PARAM_Format && param)
                static_cast<Stream *>(data)->agree(param);
        };
        table.process = [](void *data) { static_cast<Stream *>(data)->draw(); };
        return table;
    }();
    pw_init(nullptr, nullptr);
    Stream &s = *mStream;
    s.size = size;
    s.rate = picturesPerSecond;
    s.loop.reset(pw_thread_loop_new("video-node", nullptr));
    pw_loop *loop = pw_thread_loop_get_loop(s.loop.get());
    s.context.reset(pw_context_new(loop, nullptr, 0));
    pw_thread_loop_start(s.loop.get());
    const hal::LoopLock lock(s.loop.get());
    s.core.reset(pw_context_connect(s.context.get(), nullptr, 0));
    s.stream.reset(
        pw_stream_new(s.core.get(), "camera",
                      pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_NODE_NAME, name.toUtf8().constData(),
                                        PW_KEY_NODE_DESCRIPTION, description.toUtf8().constData(), nullptr)));
    pw_stream_add_listener(s.stream.get(), &s.hook.hook, &events, &s);
    std::uint8_t room[512];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(room, sizeof room);
    const spa_pod *formats[] = {s.format(builder)};
    pw_stream_connect(s.stream.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY,
                      static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS), formats, 1);
    const auto tick = [](void *data, std::uint64_t) {
        auto *self = static_cast<Stream *>(data);
        if (!self->isStill && pw_stream_get_state(self->stream.get(), nullptr) == PW_STREAM_STATE_STREAMING)
            pw_stream_trigger_process(self->stream.get());
    };
    s.timer = hal::LoopSourceHandle(pw_loop_add_timer(loop, tick, &s), {loop});
    timespec interval{0, 1'000'000'000L / picturesPerSecond};
    pw_loop_update_timer(loop, s.timer.get(), &interval, &interval, false);
}

VideoNode::~VideoNode() {
    Stream &s = *mStream;
    {
        const hal::LoopLock lock(s.loop.get());
        s.timer.reset();
        s.hook.remove();
        s.stream.reset();
        s.core.reset();
        s.context.reset();
    }
    pw_thread_loop_stop(s.loop.get());
}

std::uint32_t VideoNode::id() const {
    const hal::LoopLock lock(mStream->loop.get());
    const std::uint32_t id = pw_stream_get_node_id(mStream->stream.get());
    return id == SPA_ID_INVALID ? 0 : id;
}

void VideoNode::setSize(media::PictureSize size) {
    const hal::LoopLock lock(mStream->loop.get());
    mStream->size = size;
    std::uint8_t room[512];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(room, sizeof room);
    const spa_pod *formats[] = {mStream->format(builder)};
    pw_stream_update_params(mStream->stream.get(), formats, 1);
}

void VideoNode::standStill() { mStream->isStill = true; }

void VideoNode::lie() { mStream->lies = true; }

int VideoNode::number() const { return mStream->number; }

int VideoNode::numberOf(const std::uint8_t *bgrx) {
    int number = 0;
    for (int bit = 0; bit < kNumberBits; ++bit)
        number |= (bgrx[(bit * kBlock + kBlock / 2) * 4] > 0x80 ? 1 : 0) << bit;
    return number;
}

} // namespace cantorel::test

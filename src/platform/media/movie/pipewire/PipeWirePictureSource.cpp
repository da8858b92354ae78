#include "platform/media/movie/pipewire/PipeWirePictureSource.h"

#include "platform/media/movie/PicturePace.h"
#include "platform/pipewire/PipeWireHandles.h"

#include <fcntl.h>
#include <spa/debug/types.h>
#include <spa/param/video/format-utils.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <optional>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kNoPictures("NoPictures");

constexpr std::uint64_t kSecond = 1'000'000'000;
constexpr std::uint64_t kPatience = 5 * kSecond; // until the node gives pictures
constexpr std::uint64_t kRetry = kSecond / 10;
constexpr int kBuffers = 8;

struct KnownFormat {
    spa_video_format format;
    PixelLayout layout;
};

// Those that are liked best come first.
constexpr std::array kFormats = {
    KnownFormat{SPA_VIDEO_FORMAT_BGRx, PixelLayout::Bgrx}, KnownFormat{SPA_VIDEO_FORMAT_BGRA, PixelLayout::Bgrx},
    KnownFormat{SPA_VIDEO_FORMAT_RGBx, PixelLayout::Rgbx}, KnownFormat{SPA_VIDEO_FORMAT_RGBA, PixelLayout::Rgbx},
    KnownFormat{SPA_VIDEO_FORMAT_NV12, PixelLayout::Nv12}, KnownFormat{SPA_VIDEO_FORMAT_I420, PixelLayout::I420},
    KnownFormat{SPA_VIDEO_FORMAT_YUY2, PixelLayout::Yuyv},
};

struct StreamFormat {
    PixelLayout layout = PixelLayout::Bgrx;
    PictureSize size;
};

// Nothing for what was not offered.
std::optional<StreamFormat> parseFormat(const spa_pod *param) {
    spa_video_info info = {};
    if (spa_format_video_parse(param, &info) < 0)
        return {};
    const bool isJpeg = info.media_subtype == SPA_MEDIA_SUBTYPE_mjpg;
    const spa_rectangle size = isJpeg ? info.info.mjpg.size : info.info.raw.size;
    const PictureSize pixels{static_cast<int>(size.width), static_cast<int>(size.height)};
    if (isJpeg)
        return StreamFormat{PixelLayout::Jpeg, pixels};
    const auto *known = std::find_if(kFormats.begin(), kFormats.end(), [&](const KnownFormat &other) {
        return info.media_subtype == SPA_MEDIA_SUBTYPE_raw && other.format == info.info.raw.format;
    });
    return known != kFormats.end() ? std::optional(StreamFormat{known->layout, pixels}) : std::nullopt;
}

std::uint64_t monotonicTime() {
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

// How one plane of a layout lies behind the one before: bytes of a line, and lines.
struct PlaneShape {
    int lineBytes = 0;
    int lines = 0;
    int perStride = 1; // a line of the first plane takes that many of these
};

std::array<PlaneShape, 3> planesOf(PixelLayout layout, PictureSize size) {
    const int halfWidth = (size.width + 1) / 2;
    const int halfHeight = (size.height + 1) / 2;
    switch (layout) {
    case PixelLayout::Bgrx:
    case PixelLayout::Rgbx:
        return {{{size.width * 4, size.height}}};
    case PixelLayout::Yuyv:
        return {{{halfWidth * 4, size.height}}};
    case PixelLayout::Nv12:
        return {{{size.width, size.height}, {halfWidth * 2, halfHeight}}};
    case PixelLayout::I420:
        return {{{size.width, size.height}, {halfWidth, halfHeight, 2}, {halfWidth, halfHeight, 2}}};
    case PixelLayout::Jpeg:
        break;
    }
    return {};
}

// What a buffer holds. Nothing where it holds less than its format says: the memory is another program's.
std::optional<Picture> pictureIn(const spa_buffer &buffer, const StreamFormat &format) {
    if (buffer.n_datas < 1 || !buffer.datas[0].data || (buffer.datas[0].chunk->flags & SPA_CHUNK_FLAG_CORRUPTED) != 0)
        return {};
    Picture picture;
    picture.layout = format.layout;
    picture.size = format.size;
    const spa_data *data = buffer.datas;
    std::size_t offset = std::min(data->chunk->offset, data->maxsize);
    const std::size_t filled = std::min<std::size_t>(data->chunk->size, data->maxsize - offset);
    if (filled == 0) // as where only the pointer has moved
        return {};
    if (format.layout == PixelLayout::Jpeg) {
        picture.planes[0] = static_cast<const std::uint8_t *>(data->data) + offset;
        picture.bytes = filled;
        return picture;
    }
    const auto shapes = planesOf(format.layout, format.size);
    const int given = data->chunk->stride;
    for (std::size_t plane = 0; plane < shapes.size() && shapes[plane].lines > 0; ++plane) {
        const PlaneShape &shape = shapes[plane];
        int stride = given > 0 ? given / shape.perStride : shape.lineBytes;
        if (plane > 0 && plane < buffer.n_datas) { // a block of its own
            data = &buffer.datas[plane];
            if (!data->data)
                return {};
            offset = std::min(data->chunk->offset, data->maxsize);
            if (data->chunk->stride > 0)
                stride = data->chunk->stride;
        }
        const std::size_t length = static_cast<std::size_t>(stride) * static_cast<std::size_t>(shape.lines - 1)
                                   + static_cast<std::size_t>(shape.lineBytes);
        if (stride < shape.lineBytes || offset + length > data->maxsize)
            return {};
        picture.planes[plane] = static_cast<const std::uint8_t *>(data->data) + offset;
        picture.strides[plane] = stride;
        picture.bytes += length;
        offset += static_cast<std::size_t>(stride) * static_cast<std::size_t>(shape.lines);
    }
    return picture;
}

// Only a part of the buffer may be meant, as for a window that has shrunk.
void crop(Picture &picture, const spa_buffer &buffer) {
    const auto *meta = static_cast<const spa_meta_region *>(
        spa_buffer_find_meta_data(&buffer, SPA_META_VideoCrop, sizeof(spa_meta_region)));
    const bool isPacked = picture.layout == PixelLayout::Bgrx || picture.layout == PixelLayout::Rgbx;
    if (!meta || !isPacked || !spa_meta_region_is_valid(meta))
        return;
    const std::int64_t x = meta->region.position.x, y = meta->region.position.y;
    const std::int64_t width = meta->region.size.width, height = meta->region.size.height;
    if (x < 0 || y < 0 || x + width > picture.size.width || y + height > picture.size.height)
        return;
    picture.planes[0] += y * picture.strides[0] + x * 4;
    picture.size = {static_cast<int>(width), static_cast<int>(height)};
}

} // namespace

// A connection of its own, with one stream. What begins with "on" runs on the loop's thread, under its lock.
class PipeWirePictureSource::Stream {
public:
    Stream(PictureSink &sink, const PictureNode &node, int picturesPerSecond)
        : size(node.size), mSink(sink), mNode(node), mRate(picturesPerSecond), mPace(picturesPerSecond) {}
    ~Stream();

    Result<void> connect();

    std::atomic<PictureSize> size;

private:
    Result<void> connectStream();
    spa_pod *offerRaw(spa_pod_builder &builder) const;
    spa_pod *offerJpeg(spa_pod_builder &builder) const;
    void addSizeAndRate(spa_pod_builder &builder) const;
    void reconnect();
    void wakeAt(std::uint64_t time);
    void handOver(std::uint64_t now);
    void giveBack() {
        if (pw_buffer *buffer = std::exchange(mWaiting, nullptr))
            pw_stream_queue_buffer(mStream.get(), buffer);
    }
    void end(const char *why);

    void onProcess();
    void onFormat(const spa_pod *param);
    void onState(pw_stream_state state, const char *error);
    void onTimer();

    PictureSink &mSink;
    const PictureNode &mNode;
    const int mRate;
    PicturePace mPace;
    std::optional<StreamFormat> mFormat;
    pw_buffer *mWaiting = nullptr; // a picture that is not due yet
    std::uint64_t mDeadline = 0;   // for the first picture
    bool mIsStreaming = false;
    std::atomic<bool> mHasEnded = false; // the sink is told nothing any more

    hal::ThreadLoopHandle mLoop;
    hal::ContextHandle mContext;
    hal::CoreHandle mCore;
    hal::LoopSourceHandle mTimer;
    hal::StreamHandle mStream;
    hal::Hook mHook;
};

PipeWirePictureSource::Stream::~Stream() {
    if (!mLoop)
        return;
    mHasEnded = true; // A slow sink would hold the lock again and again.
    {
        const hal::LoopLock lock(mLoop.get());
        mHook.remove();
        mStream.reset();
        mTimer.reset();
        mCore.reset();
        mContext.reset();
    }
    pw_thread_loop_stop(mLoop.get());
}

Result<void> PipeWirePictureSource::Stream::connect() {
    pw_init(nullptr, nullptr);
    mLoop.reset(pw_thread_loop_new("pictures", nullptr));
    mContext.reset(pw_context_new(pw_thread_loop_get_loop(mLoop.get()), nullptr, 0));
    if (!mContext)
        return Failure{kNoPictures(), QStringLiteral("no context of PipeWire")};
    pw_thread_loop_start(mLoop.get());
    const hal::LoopLock lock(mLoop.get());
    if (mNode.remote.isOpen()) // which the library closes
        mCore.reset(pw_context_connect_fd(mContext.get(), ::fcntl(mNode.remote.get(), F_DUPFD_CLOEXEC, 3), nullptr, 0));
    else
        mCore.reset(pw_context_connect(mContext.get(), nullptr, 0));
    if (!mCore)
        return Failure{kNoPictures(), QStringLiteral("connecting to PipeWire: errno %1").arg(errno)};
    pw_loop *loop = pw_thread_loop_get_loop(mLoop.get());
    const auto timer = [](void *data, std::uint64_t) { static_cast<Stream *>(data)->onTimer(); };
    mTimer = hal::LoopSourceHandle(pw_loop_add_timer(loop, timer, this), {loop});
    mDeadline = monotonicTime() + kPatience;
    wakeAt(monotonicTime() + kSecond);
    return connectStream();
}

Result<void> PipeWirePictureSource::Stream::connectStream() {
    static const pw_stream_events events = [] {
        pw_stream_events table = {};
        table.version = PW_VERSION_STREAM_EVENTS;
        table.state_changed = [](void *data, pw_stream_state, pw_stream_state state, const char *error) {
            static_cast<Stream *>(data)->onState(state, error);
        };
        table.param_changed = [](void *data, std::uint32_t id, const spa_pod *param) {
            if (id == SPA_PARAM_Format && param)
                static_cast<Stream *>(data)->onFormat(param);
        };
        table.remove_buffer = [](void *data, pw_buffer *buffer) {
            auto *self = static_cast<Stream *>(data);
            if (self->mWaiting == buffer)
                self->mWaiting = nullptr;
        };
        table.process = [](void *data) { static_cast<Stream *>(data)->onProcess(); };
        return table;
    }();
    mStream.reset(
        pw_stream_new(mCore.get(), "Cantorel pictures",
                      pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_NODE_NAME,
                                        "cantorel-pictures", PW_KEY_NODE_DESCRIPTION, "Cantorel", PW_KEY_APP_NAME,
                                        "Cantorel", PW_KEY_NODE_DONT_RECONNECT, "true", nullptr)));
    if (!mStream)
        return Failure{kNoPictures(), QStringLiteral("no stream of PipeWire")};
    pw_stream_add_listener(mStream.get(), &mHook.hook, &events, this);
    std::uint8_t room[2048];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(room, sizeof room);
    const spa_pod *offers[] = {offerRaw(builder), offerJpeg(builder)};
    const int connected =
        pw_stream_connect(mStream.get(), PW_DIRECTION_INPUT, mNode.id,
                          static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS), offers,
                          std::size(offers));
    if (connected < 0)
        return Failure{mNode.whenGone.sentence, QStringLiteral("connecting the stream: errno %1").arg(-connected)};
    return {};
}

void PipeWirePictureSource::Stream::addSizeAndRate(spa_pod_builder &builder) const {
    const auto rectangle = [](PictureSize size) {
        return spa_rectangle{static_cast<std::uint32_t>(size.width), static_cast<std::uint32_t>(size.height)};
    };
    const spa_rectangle most = rectangle(mNode.largest), least{1, 1};
    const spa_rectangle liked = mNode.size.width > 0 ? rectangle(mNode.size) : most;
    const spa_fraction rate{static_cast<std::uint32_t>(mRate), 1}, slowest{0, 1}, fastest{1000, 1};
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&liked, &least, &most),
                        SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&rate, &slowest, &fastest), 0);
}

spa_pod *PipeWirePictureSource::Stream::offerRaw(spa_pod_builder &builder) const {
    spa_pod_frame frame[2];
    spa_pod_builder_push_object(&builder, &frame[0], SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), 0);
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
    spa_pod_builder_push_choice(&builder, &frame[1], SPA_CHOICE_Enum, 0);
    spa_pod_builder_id(&builder, kFormats.front().format); // the default
    for (const KnownFormat &known : kFormats)
        spa_pod_builder_id(&builder, known.format);
    spa_pod_builder_pop(&builder, &frame[1]);
    addSizeAndRate(builder);
    return static_cast<spa_pod *>(spa_pod_builder_pop(&builder, &frame[0]));
}

spa_pod *PipeWirePictureSource::Stream::offerJpeg(spa_pod_builder &builder) const {
    spa_pod_frame frame;
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(SPA_MEDIA_SUBTYPE_mjpg), 0);
    addSizeAndRate(builder);
    return static_cast<spa_pod *>(spa_pod_builder_pop(&builder, &frame));
}

void PipeWirePictureSource::Stream::onFormat(const spa_pod *param) {
    mFormat = parseFormat(param);
    if (!mFormat)
        return;
    size = mFormat->size;
    std::uint8_t room[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(room, sizeof room);
    const spa_pod *params[] = {
        static_cast<spa_pod *>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(kBuffers, 2, kBuffers), SPA_PARAM_BUFFERS_dataType,
            SPA_POD_CHOICE_FLAGS_Int((1 << SPA_DATA_MemPtr) | (1 << SPA_DATA_MemFd)))),
        static_cast<spa_pod *>(spa_pod_builder_add_object(&builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta,
                                                          SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Header),
                                                          SPA_PARAM_META_size, SPA_POD_Int(sizeof(spa_meta_header)))),
        static_cast<spa_pod *>(spa_pod_builder_add_object(&builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta,
                                                          SPA_PARAM_META_type, SPA_POD_Id(SPA_META_VideoCrop),
                                                          SPA_PARAM_META_size, SPA_POD_Int(sizeof(spa_meta_region)))),
    };
    pw_stream_update_params(mStream.get(), params, std::size(params));
}

void PipeWirePictureSource::Stream::onState(pw_stream_state state, const char *error) {
    mIsStreaming = mIsStreaming || state == PW_STREAM_STATE_STREAMING;
    if (state != PW_STREAM_STATE_ERROR && state != PW_STREAM_STATE_UNCONNECTED)
        return;
    const std::uint64_t now = monotonicTime();
    if (mIsStreaming || now >= mDeadline)
        end(error ? error : "the node has gone");
    else // The session manager may not know a node yet that has just come, or overlook it.
        wakeAt(std::min(now + kRetry, mDeadline));
}

void PipeWirePictureSource::Stream::end(const char *why) {
    if (mHasEnded.exchange(true))
        return;
    mSink.pictureSourceEnded(
        {mNode.whenGone.sentence, mNode.whenGone.detail + QStringLiteral(": ") + QString::fromUtf8(why)});
}

void PipeWirePictureSource::Stream::wakeAt(std::uint64_t time) {
    timespec when{static_cast<time_t>(time / kSecond), static_cast<long>(time % kSecond)};
    pw_loop_update_timer(mTimer.get_deleter().loop, mTimer.get(), &when, nullptr, true);
}

void PipeWirePictureSource::Stream::onTimer() {
    if (mWaiting && !mHasEnded)
        handOver(monotonicTime());
    else if (!mIsStreaming && monotonicTime() >= mDeadline)
        end("no pictures in time");
    else if (!mIsStreaming)
        reconnect();
}

void PipeWirePictureSource::Stream::reconnect() {
    mHook.remove();
    mStream.reset();
    wakeAt(std::min(monotonicTime() + kSecond, mDeadline));
    if (const auto connected = connectStream(); !connected)
        end("not connected again");
}

void PipeWirePictureSource::Stream::onProcess() {
    while (pw_buffer *buffer = pw_stream_dequeue_buffer(mStream.get())) {
        if (!mFormat || mHasEnded || !pictureIn(*buffer->buffer, *mFormat)) {
            pw_stream_queue_buffer(mStream.get(), buffer);
            continue;
        }
        giveBack();
        mWaiting = buffer;
    }
    const std::uint64_t now = monotonicTime();
    if (mWaiting && mPace.isDue(now))
        handOver(now);
    else if (mWaiting)
        wakeAt(mPace.due());
}

void PipeWirePictureSource::Stream::handOver(std::uint64_t now) {
    const spa_buffer &buffer = *mWaiting->buffer;
    std::optional<Picture> picture = mFormat ? pictureIn(buffer, *mFormat) : std::nullopt;
    if (picture) {
        crop(*picture, buffer);
        const auto *header = static_cast<const spa_meta_header *>(
            spa_buffer_find_meta_data(&buffer, SPA_META_Header, sizeof(spa_meta_header)));
        const auto told = header && header->pts > 0 ? static_cast<std::uint64_t>(header->pts) : 0;
        picture->hostTime = told <= now && told + kSecond > now ? told : now; // some tell a time of another clock
        mPace.take(now);
        mSink.takePicture(*picture);
    }
    giveBack();
}

PipeWirePictureSource::PipeWirePictureSource(PictureNode node) : mNode(std::move(node)) {}

PipeWirePictureSource::~PipeWirePictureSource() { stop(); }

PictureSize PipeWirePictureSource::size() const { return mStream ? mStream->size.load() : mNode.size; }

Result<void> PipeWirePictureSource::start(PictureSink &sink, int picturesPerSecond) {
    stop();
    mStream = std::make_unique<Stream>(sink, mNode, picturesPerSecond);
    const auto connected = mStream->connect();
    if (!connected)
        mStream.reset();
    return connected;
}

void PipeWirePictureSource::stop() {
    if (!mStream)
        return;
    mNode.size = mStream->size;
    mStream.reset();
}

} // namespace cantorel::media

#include "platform/media/movie/v4l2/V4l2Camera.h"

#include "platform/media/movie/CameraFailures.h"
#include "platform/media/movie/PicturePace.h"
#include "platform/media/movie/v4l2/V4l2Format.h"

#include <linux/videodev2.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::FileDescriptor;
using foundation::Result;

namespace {

constexpr std::uint32_t kBuffers = 4;
constexpr int kPatience = 5000;   // milliseconds without a picture
constexpr int kBadTransfers = 30; // one after the other

template <std::size_t Size> QString textIn(const unsigned char (&text)[Size]) {
    const auto *end = std::find(text, text + Size, '\0');
    return QString::fromUtf8(reinterpret_cast<const char *>(text), end - text);
}

std::uint64_t monotonicTime() {
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

// What a call that failed means to a person.
Failure failureOf(const Camera &camera, const char *what, int error) {
    const QString detail = QStringLiteral("%1 of %2: errno %3")
                               .arg(QString::fromLatin1(what), camera.localizedName, QString::number(error));
    switch (error) {
    case EBUSY:
        return failures::cameraBusy(camera.localizedName, detail);
    case ENODEV:
    case ENOENT:
    case ENXIO:
        return failures::cameraGone(camera.localizedName, detail);
    default:
        return failures::cameraNotOpened(camera.localizedName, detail);
    }
}

} // namespace

std::vector<V4l2Device> v4l2Cameras(VideoDevices &devices) {
    QStringList paths = devices.paths();
    // By their numbers.
    std::sort(paths.begin(), paths.end(), [](const QString &one, const QString &other) {
        return std::pair(one.size(), one) < std::pair(other.size(), other);
    });
    std::vector<V4l2Device> found;
    for (const QString &path : paths) {
        const FileDescriptor device = devices.open(path);
        v4l2_capability about{};
        if (!device.isOpen() || devices.control(device.get(), VIDIOC_QUERYCAP, &about) < 0)
            continue;
        // A camera has more devices than one; only what this one does counts.
        const std::uint32_t does =
            (about.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? about.device_caps : about.capabilities;
        constexpr std::uint32_t kNeeded = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
        if ((does & kNeeded) != kNeeded || !chooseFormat(devices, device.get(), CameraQuality::High, 1))
            continue;
        QString id = QStringLiteral("v4l2:") + textIn(about.bus_info);
        const auto sameBus = std::count_if(found.begin(), found.end(), [&](const V4l2Device &other) {
            return other.camera.uniqueID.section(QLatin1Char('#'), 0, 0) == id;
        });
        if (sameBus > 0)
            id += QStringLiteral("#%1").arg(sameBus + 1);
        found.push_back({path, {id, textIn(about.card)}});
    }
    return found;
}

// An open camera that streams. The thread takes pictures until the camera fails or the stream is destroyed.
class V4l2Camera::Stream {
public:
    Stream(VideoDevices &devices, const V4l2Device &device, PictureSink &sink, int picturesPerSecond)
        : mDevices(devices), mCamera(device.camera), mSink(sink), mPace(picturesPerSecond) {}
    ~Stream();

    // Answers the size of the pictures.
    Result<PictureSize> open(const QString &path, CameraQuality quality, int picturesPerSecond);

private:
    struct Mapped {
        void *memory = nullptr;
        std::size_t length = 0;
    };

    int control(unsigned long request, void *argument) { return mDevices.control(mDevice.get(), request, argument); }
    Failure failed(const char *what) const { return failureOf(mCamera, what, errno); }
    Result<void> agree(CameraQuality quality, int picturesPerSecond);
    Result<void> mapBuffers();
    void run();
    Result<void> takeWaiting();
    void handOver(const v4l2_buffer &buffer);

    VideoDevices &mDevices;
    const Camera mCamera;
    PictureSink &mSink;
    PicturePace mPace;
    FileDescriptor mDevice;
    FileDescriptor mWake{::eventfd(0, EFD_CLOEXEC)};
    v4l2_pix_format mFormat{};
    PixelLayout mLayout = PixelLayout::Yuyv;
    std::vector<Mapped> mBuffers;
    int mBadTransfers = 0; // one after the other
    bool mStreams = false;
    std::thread mThread;
};

V4l2Camera::Stream::~Stream() {
    if (mThread.joinable()) {
        (void)::eventfd_write(mWake.get(), 1); // It fails only where it was written already.
        mThread.join();
    }
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (mStreams)
        (void)control(VIDIOC_STREAMOFF, &type); // The camera is closed next, which does the same.
    for (const Mapped &buffer : mBuffers)
        mDevices.unmap(buffer.memory, buffer.length);
}

Result<PictureSize> V4l2Camera::Stream::open(const QString &path, CameraQuality quality, int picturesPerSecond) {
    mDevice = mDevices.open(path);
    if (!mDevice.isOpen())
        return failed("opening");
    if (const auto agreed = agree(quality, picturesPerSecond); !agreed)
        return agreed.failure();
    if (const auto mapped = mapBuffers(); !mapped)
        return mapped.failure();
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (control(VIDIOC_STREAMON, &type) < 0)
        return failed("starting");
    mStreams = true;
    mThread = std::thread([this] { run(); });
    pthread_setname_np(mThread.native_handle(), "camera");
    return PictureSize{static_cast<int>(mFormat.width), static_cast<int>(mFormat.height)};
}

Result<void> V4l2Camera::Stream::agree(CameraQuality quality, int picturesPerSecond) {
    const auto wanted = chooseFormat(mDevices, mDevice.get(), quality, picturesPerSecond);
    if (!wanted)
        return failed("listing the formats");
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.pixelformat = wanted->code;
    format.fmt.pix.width = static_cast<std::uint32_t>(wanted->size.width);
    format.fmt.pix.height = static_cast<std::uint32_t>(wanted->size.height);
    format.fmt.pix.field = V4L2_FIELD_ANY;
    if (control(VIDIOC_S_FMT, &format) < 0)
        return failed("setting the format");
    mFormat = format.fmt.pix; // what it makes of that
    const auto layout = layoutOf(mFormat.pixelformat);
    if (!layout)
        return failures::cameraNotOpened(mCamera.localizedName, QStringLiteral("a format that was not asked for"));
    mLayout = *layout;
    v4l2_streamparm pace{};
    pace.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    pace.parm.capture.timeperframe = {1, static_cast<std::uint32_t>(picturesPerSecond)};
    (void)control(VIDIOC_S_PARM, &pace); // Not every camera has a pace to choose; pictures too many are left out.
    return {};
}

Result<void> V4l2Camera::Stream::mapBuffers() {
    v4l2_requestbuffers request{};
    request.count = kBuffers;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    if (control(VIDIOC_REQBUFS, &request) < 0)
        return failed("asking for buffers");
    for (std::uint32_t index = 0; index < request.count; ++index) {
        v4l2_buffer buffer{};
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        buffer.index = index;
        if (control(VIDIOC_QUERYBUF, &buffer) < 0)
            return failed("asking for a buffer");
        void *memory = mDevices.map(mDevice.get(), buffer.length, buffer.m.offset);
        if (!memory)
            return failed("mapping a buffer");
        mBuffers.push_back({memory, buffer.length});
        if (control(VIDIOC_QBUF, &buffer) < 0)
            return failed("handing over a buffer");
    }
    return {};
}

void V4l2Camera::Stream::run() {
    for (;;) {
        std::array<pollfd, 2> waited{{{mDevice.get(), POLLIN, 0}, {mWake.get(), POLLIN, 0}}};
        const int ready = ::poll(waited.data(), waited.size(), kPatience);
        if (ready < 0 && errno == EINTR)
            continue;
        if (waited[1].revents != 0)
            return;
        if (ready == 0)
            return mSink.pictureSourceEnded(
                failures::cameraNotOpened(mCamera.localizedName, QStringLiteral("no pictures in time")));
        if (const auto taken = takeWaiting(); !taken)
            return mSink.pictureSourceEnded(taken.failure());
        if ((waited[0].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0)
            return mSink.pictureSourceEnded(failureOf(mCamera, "waiting", ENODEV));
    }
}

// Hands over the newest of the pictures that are there.
Result<void> V4l2Camera::Stream::takeWaiting() {
    std::optional<v4l2_buffer> newest;
    for (;;) {
        v4l2_buffer buffer{};
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        const int error = control(VIDIOC_DQBUF, &buffer) < 0 ? errno : 0;
        const bool isBad = error == EIO || (buffer.flags & V4L2_BUF_FLAG_ERROR) != 0 || buffer.index >= mBuffers.size();
        mBadTransfers = isBad ? mBadTransfers + 1 : error == 0 ? 0 : mBadTransfers;
        if (mBadTransfers > kBadTransfers)
            return failureOf(mCamera, "taking pictures", EIO);
        if (error == EAGAIN || error == EIO)
            break;
        if (error != 0)
            return failureOf(mCamera, "taking a picture", error);
        // A bad one goes back at once, and of two the older.
        std::optional<v4l2_buffer> back = isBad ? std::optional(buffer) : std::exchange(newest, buffer);
        if (back && control(VIDIOC_QBUF, &*back) < 0)
            return failed("handing back a buffer");
    }
    if (!newest)
        return {};
    handOver(*newest);
    return control(VIDIOC_QBUF, &*newest) < 0 ? Result<void>(failed("handing back a buffer")) : Result<void>();
}

void V4l2Camera::Stream::handOver(const v4l2_buffer &buffer) {
    const std::uint64_t now = monotonicTime();
    if (!mPace.isDue(now))
        return;
    const Mapped &mapped = mBuffers[buffer.index];
    Picture picture;
    picture.layout = mLayout;
    picture.size = {static_cast<int>(mFormat.width), static_cast<int>(mFormat.height)};
    picture.bytes = std::min<std::size_t>(buffer.bytesused, mapped.length);
    const auto *bytes = static_cast<const std::uint8_t *>(mapped.memory);
    picture.planes[0] = bytes;
    const std::size_t line = mFormat.bytesperline, lines = mFormat.height;
    picture.strides[0] = static_cast<int>(line);
    std::size_t needed = line * lines;
    if (mLayout == PixelLayout::Nv12 || mLayout == PixelLayout::I420) {
        const bool isPlanar = mLayout == PixelLayout::I420;
        const std::size_t half = isPlanar ? line / 2 : line, halfLines = (lines + 1) / 2;
        picture.planes[1] = bytes + needed;
        picture.strides[1] = static_cast<int>(half);
        needed += half * halfLines;
        if (isPlanar) {
            picture.planes[2] = bytes + needed;
            picture.strides[2] = static_cast<int>(half);
            needed += half * halfLines;
        }
    }
    if (picture.bytes == 0 || (mLayout != PixelLayout::Jpeg && picture.bytes < needed))
        return; // torn
    const bool isMonotonic = (buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    const auto told = static_cast<std::uint64_t>(buffer.timestamp.tv_sec) * 1'000'000'000
                      + static_cast<std::uint64_t>(buffer.timestamp.tv_usec) * 1'000;
    picture.hostTime = isMonotonic && told <= now ? told : now;
    mPace.take(now);
    mSink.takePicture(picture);
}

V4l2Camera::V4l2Camera(VideoDevices &devices, V4l2Device device, CameraQuality quality)
    : mDevices(devices), mDevice(std::move(device)), mQuality(quality) {}

V4l2Camera::~V4l2Camera() = default;

void V4l2Camera::stop() { mStream.reset(); }

Result<void> V4l2Camera::start(PictureSink &sink, int picturesPerSecond) {
    stop();
    auto stream = std::make_unique<Stream>(mDevices, mDevice, sink, picturesPerSecond);
    const auto opened = stream->open(mDevice.path, mQuality, picturesPerSecond);
    if (!opened)
        return opened.failure();
    mSize = opened.value();
    mStream = std::move(stream);
    return {};
}

} // namespace cantorel::media

#pragma once

#include "platform/media/movie/v4l2/VideoDevices.h"

#include <QByteArray>
#include <QMap>

#include <linux/videodev2.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

namespace cantorel::test {

// A camera of Video4Linux in software, at /dev/video0 or wherever else it is put.
struct FakeCamera {
    struct Format {
        std::uint32_t code = V4L2_PIX_FMT_YUYV;
        unsigned width = 640, height = 480;
        unsigned picturesPerSecond = 30;
    };
    QString name = "Camera", bus = "usb-1";
    std::uint32_t does = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    std::vector<Format> formats{{}};
    QMap<unsigned long, int> errors; // by request: what it fails with
    int opening = 0;                 // what opening fails with
};

// The cameras of a machine that exists in software only. Pictures are brought by bring().
class FakeVideoDevices : public media::VideoDevices {
public:
    QMap<QString, FakeCamera> cameras{{"/dev/video0", {}}};
    int streaming = 0, mapped = 0; // that were not ended
    v4l2_pix_format agreed{};

    // One picture, its bytes all alike; as long as its format says unless that is said. Answers whether a buffer was
    // free for it.
    bool bring(std::uint8_t value, std::uint32_t flags = 0, std::uint32_t bytes = 0) {
        const std::lock_guard lock(mMutex);
        if (mFree.empty())
            return false;
        const unsigned index = mFree.front();
        mFree.erase(mFree.begin());
        std::memset(mMemory[index].data(), value, mMemory[index].size());
        mFull.push_back({index, flags, bytes > 0 ? bytes : agreed.sizeimage});
        ::eventfd_write(mReady, 1);
        return true;
    }
    // A picture of just these bytes, as of a format that packs them.
    bool bring(const QByteArray &picture) {
        const std::lock_guard lock(mMutex);
        if (mFree.empty() || static_cast<std::size_t>(picture.size()) > mMemory[mFree.front()].size())
            return false;
        std::memcpy(mMemory[mFree.front()].data(), picture.constData(), static_cast<std::size_t>(picture.size()));
        mFull.push_back({mFree.front(), 0, static_cast<std::uint32_t>(picture.size())});
        mFree.erase(mFree.begin());
        ::eventfd_write(mReady, 1);
        return true;
    }
    void fail(unsigned long request, int error) {
        const std::lock_guard lock(mMutex);
        cameras.first().errors[request] = error;
        ::eventfd_write(mReady, 1);
    }
    std::size_t freeBuffers() {
        const std::lock_guard lock(mMutex);
        return mFree.size();
    }

    QStringList paths() const override { return cameras.keys(); }
    foundation::FileDescriptor open(const QString &path) override {
        errno = cameras.contains(path) ? cameras[path].opening : ENOENT;
        if (errno != 0)
            return {};
        mOpen = &cameras[path];
        mFull.clear();
        mFree.clear();
        mReady = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE);
        return foundation::FileDescriptor(mReady);
    }
    int control(int, unsigned long request, void *argument) override {
        const std::lock_guard lock(mMutex);
        errno = mOpen->errors.value(request);
        return errno == 0 && answer(request, argument) ? 0 : -1;
    }
    void *map(int, std::size_t, std::size_t offset) override {
        ++mapped;
        return mMemory[offset].data();
    }
    void unmap(void *, std::size_t) override { --mapped; }

private:
    struct Full {
        unsigned index;
        std::uint32_t flags, bytes;
    };

    bool refuse(int error) {
        errno = error;
        return false;
    }
    // The formats of one code, or of all.
    std::vector<FakeCamera::Format> having(std::uint32_t code) const {
        std::vector<FakeCamera::Format> found;
        for (const auto &format : mOpen->formats)
            if (format.code == code)
                found.push_back(format);
        return found;
    }
    bool answer(unsigned long request, void *argument) {
        switch (request) {
        case VIDIOC_QUERYCAP: {
            auto &about = *static_cast<v4l2_capability *>(argument);
            std::strncpy(reinterpret_cast<char *>(about.card), mOpen->name.toUtf8().constData(), sizeof about.card - 1);
            std::strncpy(reinterpret_cast<char *>(about.bus_info), mOpen->bus.toUtf8().constData(),
                         sizeof about.bus_info - 1);
            // What all devices of the camera together do.
            about.capabilities = V4L2_CAP_DEVICE_CAPS | V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
            about.device_caps = mOpen->does;
            return true;
        }
        case VIDIOC_ENUM_FMT: {
            auto &entry = *static_cast<v4l2_fmtdesc *>(argument);
            std::vector<std::uint32_t> codes;
            for (const auto &format : mOpen->formats)
                if (codes.empty() || codes.back() != format.code)
                    codes.push_back(format.code);
            if (entry.index >= codes.size())
                return refuse(EINVAL);
            entry.pixelformat = codes[entry.index];
            return true;
        }
        case VIDIOC_ENUM_FRAMESIZES: {
            auto &entry = *static_cast<v4l2_frmsizeenum *>(argument);
            const auto found = having(entry.pixel_format);
            if (entry.index >= found.size())
                return refuse(EINVAL);
            entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
            entry.discrete = {found[entry.index].width, found[entry.index].height};
            return true;
        }
        case VIDIOC_ENUM_FRAMEINTERVALS: {
            auto &entry = *static_cast<v4l2_frmivalenum *>(argument);
            for (const auto &format : having(entry.pixel_format)) {
                if (entry.index > 0 || format.width != entry.width)
                    continue;
                entry.type = V4L2_FRMIVAL_TYPE_DISCRETE;
                entry.discrete = {1, format.picturesPerSecond};
                return true;
            }
            return refuse(EINVAL);
        }
        case VIDIOC_S_FMT: {
            auto &pix = static_cast<v4l2_format *>(argument)->fmt.pix;
            pix.bytesperline = pix.pixelformat == V4L2_PIX_FMT_YUYV ? pix.width * 2 : pix.width;
            pix.sizeimage = pix.width * pix.height * 2;
            agreed = pix;
            return true;
        }
        case VIDIOC_REQBUFS:
            mMemory.assign(static_cast<v4l2_requestbuffers *>(argument)->count, std::vector<char>(agreed.sizeimage));
            return true;
        case VIDIOC_QUERYBUF: {
            auto &buffer = *static_cast<v4l2_buffer *>(argument);
            buffer.length = agreed.sizeimage;
            buffer.m.offset = buffer.index;
            return true;
        }
        case VIDIOC_QBUF:
            mFree.push_back(static_cast<v4l2_buffer *>(argument)->index);
            return true;
        case VIDIOC_DQBUF: {
            if (mFull.empty())
                return refuse(EAGAIN);
            eventfd_t one = 0;
            ::eventfd_read(mReady, &one);
            auto &buffer = *static_cast<v4l2_buffer *>(argument);
            buffer.index = mFull.front().index;
            buffer.flags = mFull.front().flags;
            buffer.bytesused = mFull.front().bytes;
            mFull.erase(mFull.begin());
            return true;
        }
        case VIDIOC_STREAMON:
            ++streaming;
            return true;
        case VIDIOC_STREAMOFF:
            --streaming;
            return true;
        case VIDIOC_S_PARM:
            return true;
        default:
            return refuse(ENOTTY);
        }
    }

    std::mutex mMutex;
    FakeCamera *mOpen = nullptr;
    int mReady = -1;
    std::vector<std::vector<char>> mMemory;
    std::vector<unsigned> mFree;
    std::vector<Full> mFull;
};

} // namespace cantorel::test

#include "platform/media/movie/x11/X11Image.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <xcb/shm.h>

#include <limits>

namespace cantorel::media {

namespace {

constexpr std::uint32_t kAllPlanes = std::numeric_limits<std::uint32_t>::max();

} // namespace

X11Image::~X11Image() { unshare(); }

void X11Image::unshare() {
    if (mSegment != 0)
        xcb_shm_detach(mDisplay.connection(), mSegment);
    if (mShared != nullptr)
        ::shmdt(mShared);
    mSegment = 0;
    mShared = nullptr;
    mSharedBytes = 0;
}

bool X11Image::share(std::size_t bytes) {
    if (mIsRefused || bytes <= mSharedBytes)
        return !mIsRefused;
    unshare();
    mIsRefused = true;
    const auto *extension = xcb_get_extension_data(mDisplay.connection(), &xcb_shm_id);
    if (extension == nullptr || !extension->present)
        return false;
    const int memory = ::shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (memory < 0)
        return false;
    void *const mapped = ::shmat(memory, nullptr, 0);
    const std::uint32_t segment = xcb_generate_id(mDisplay.connection());
    const ScreenMemory<xcb_generic_error_t> error(
        xcb_request_check(mDisplay.connection(), xcb_shm_attach_checked(mDisplay.connection(), segment,
                                                                        static_cast<std::uint32_t>(memory), 0)));
    ::shmctl(memory, IPC_RMID, nullptr); // it goes with who uses it, also when we are killed
    if (mapped == reinterpret_cast<void *>(-1))
        return false;
    mShared = static_cast<std::uint8_t *>(mapped);
    if (error) {
        unshare();
        return false;
    }
    mSegment = segment;
    mSharedBytes = bytes;
    mIsRefused = false;
    return true;
}

std::uint8_t *X11Image::read(const QRect &part) {
    xcb_connection_t *const connection = mDisplay.connection();
    const std::size_t bytes = static_cast<std::size_t>(part.width()) * static_cast<std::size_t>(part.height()) * 4;
    const auto x = static_cast<std::int16_t>(part.x()), y = static_cast<std::int16_t>(part.y());
    const auto width = static_cast<std::uint16_t>(part.width()), height = static_cast<std::uint16_t>(part.height());
    if (share(bytes)) {
        const ScreenMemory<xcb_shm_get_image_reply_t> reply(
            xcb_shm_get_image_reply(connection,
                                    xcb_shm_get_image(connection, mDisplay.root(), x, y, width, height, kAllPlanes,
                                                      XCB_IMAGE_FORMAT_Z_PIXMAP, mSegment, 0),
                                    nullptr));
        return reply ? mShared : nullptr;
    }
    const ScreenMemory<xcb_get_image_reply_t> reply(xcb_get_image_reply(
        connection,
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, mDisplay.root(), x, y, width, height, kAllPlanes),
        nullptr));
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < bytes)
        return nullptr;
    const std::uint8_t *const pixels = xcb_get_image_data(reply.get());
    mCopy.assign(pixels, pixels + bytes);
    return mCopy.data();
}

} // namespace cantorel::media

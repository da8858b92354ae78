#include "platform/media/movie/x11/X11Cursor.h"

#include <xcb/xfixes.h>

#include <algorithm>

namespace cantorel::media {

std::uint8_t X11Cursor::watch() {
    xcb_connection_t *const connection = mDisplay.connection();
    const auto *extension = xcb_get_extension_data(connection, &xcb_xfixes_id);
    const ScreenMemory<xcb_xfixes_query_version_reply_t> version(
        extension && extension->present
            ? xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 4, 0), nullptr)
            : nullptr);
    if (!version)
        return 0;
    mIsWatched = true;
    xcb_xfixes_select_cursor_input(connection, mDisplay.root(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    return extension->first_event;
}

bool X11Cursor::look(const QRect &part) {
    if (!mIsWatched)
        return false;
    xcb_connection_t *const connection = mDisplay.connection();
    const QRect before = place();
    bool differs = false;
    if (!mIsKnown) {
        const ScreenMemory<xcb_xfixes_get_cursor_image_reply_t> image(
            xcb_xfixes_get_cursor_image_reply(connection, xcb_xfixes_get_cursor_image(connection), nullptr));
        if (!image)
            return false;
        mIsKnown = differs = true;
        mSize = QSize(image->width, image->height);
        mHot = QPoint(image->xhot, image->yhot);
        const std::uint32_t *const pixels = xcb_xfixes_get_cursor_image_cursor_image(image.get());
        mPixels.assign(pixels, pixels + static_cast<std::size_t>(image->width) * image->height);
    }
    const ScreenMemory<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, mDisplay.root()), nullptr));
    if (pointer) {
        const QPoint at(pointer->root_x, pointer->root_y);
        differs |= at != mAt;
        mAt = at;
    }
    return differs && (before.intersects(part) || place().intersects(part));
}

void X11Cursor::paint(std::uint8_t *pixels, const QRect &part) const {
    const QRect seen = place() & part;
    const bool redFirst = mDisplay.layout() == PixelLayout::Rgbx;
    for (int y = seen.top(); y <= seen.bottom(); ++y) {
        for (int x = seen.left(); x <= seen.right(); ++x) {
            const auto index = static_cast<std::size_t>(y - place().top()) * static_cast<std::size_t>(mSize.width())
                               + static_cast<std::size_t>(x - place().left());
            const std::uint32_t colour = mPixels[index], opacity = colour >> 24;
            std::uint8_t *const pixel =
                pixels
                + (static_cast<std::size_t>(y - part.top()) * static_cast<std::size_t>(part.width())
                   + static_cast<std::size_t>(x - part.left()))
                      * 4;
            for (int byte = 0; byte < 3; ++byte) {
                const std::uint32_t over = colour >> (redFirst ? 16 - 8 * byte : 8 * byte) & 0xFF;
                pixel[byte] =
                    static_cast<std::uint8_t>(std::min<std::uint32_t>(over + pixel[byte] * (255 - opacity) / 255, 255));
            }
        }
    }
}

} // namespace cantorel::media

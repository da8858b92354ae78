#include "platform/media/movie/x11/X11Display.h"

#include "platform/media/movie/MovieFailures.h"

#include <xcb/randr.h>

#include <algorithm>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr std::uint32_t kBlueLast = 0xFF, kRedFirst = 0xFF0000;

QString atomName(xcb_connection_t *connection, xcb_atom_t atom) {
    const ScreenMemory<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
    return reply ? QString::fromUtf8(xcb_get_atom_name_name(reply.get()), xcb_get_atom_name_name_length(reply.get()))
                 : QString();
}

} // namespace

Result<X11Display> X11Display::open() {
    X11Display display;
    int number = 0;
    display.mConnection.reset(xcb_connect(nullptr, &number));
    if (display.isLost())
        return failures::noDisplay(QStringLiteral("no X server answers"));
    const xcb_setup_t *setup = xcb_get_setup(display.connection());
    auto screens = xcb_setup_roots_iterator(setup);
    for (; number > 0 && screens.rem > 1; --number)
        xcb_screen_next(&screens);
    display.mScreen = screens.data;

    std::uint32_t redMask = 0;
    for (auto depths = xcb_screen_allowed_depths_iterator(display.mScreen); depths.rem; xcb_depth_next(&depths))
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem; xcb_visualtype_next(&visuals))
            if (visuals.data->visual_id == display.mScreen->root_visual)
                redMask = visuals.data->red_mask;
    const auto *formats = xcb_setup_pixmap_formats(setup);
    const auto *end = formats + xcb_setup_pixmap_formats_length(setup);
    const auto *format = std::find_if(formats, end, [&](const xcb_format_t &one) {
        return one.depth == display.mScreen->root_depth && one.bits_per_pixel == 32;
    });
    if (format == end || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST
        || (redMask != kRedFirst && redMask != kBlueLast))
        return failures::noDisplay(QStringLiteral("a depth of %1 bits").arg(display.mScreen->root_depth));
    display.mLayout = redMask == kRedFirst ? PixelLayout::Bgrx : PixelLayout::Rgbx;
    display.lookAtBounds();
    return display;
}

void X11Display::lookAtBounds() {
    const ScreenMemory<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), root()), nullptr));
    if (reply)
        mBounds = QRect(0, 0, reply->width, reply->height);
}

std::vector<Display> X11Display::displays() const {
    std::vector<Display> found;
    const auto *extension = xcb_get_extension_data(connection(), &xcb_randr_id);
    const ScreenMemory<xcb_randr_query_version_reply_t> version(
        extension && extension->present
            ? xcb_randr_query_version_reply(connection(), xcb_randr_query_version(connection(), 1, 5), nullptr)
            : nullptr);
    if (version && (version->major_version > 1 || version->minor_version >= 5)) {
        const ScreenMemory<xcb_randr_get_monitors_reply_t> reply(
            xcb_randr_get_monitors_reply(connection(), xcb_randr_get_monitors(connection(), root(), 1), nullptr));
        if (reply)
            for (auto monitors = xcb_randr_get_monitors_monitors_iterator(reply.get()); monitors.rem;
                 xcb_randr_monitor_info_next(&monitors)) {
                const xcb_randr_monitor_info_t &monitor = *monitors.data;
                Display display;
                display.id = monitor.nOutput > 0 ? *xcb_randr_monitor_info_outputs(&monitor) : monitor.name;
                display.name = atomName(connection(), monitor.name);
                display.frame = QRect(monitor.x, monitor.y, monitor.width, monitor.height);
                found.insert(monitor.primary ? found.begin() : found.end(), display);
            }
    }
    if (found.empty() && !isLost()) {
        Display whole;
        whole.id = root();
        whole.name = qEnvironmentVariable("DISPLAY");
        whole.frame = mBounds;
        found.push_back(whole);
    }
    return found;
}

} // namespace cantorel::media

#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/movie/PictureSources.h"
#include "platform/media/movie/x11/X11Handles.h"

#include <QRect>

#include <cstdint>
#include <vector>

namespace cantorel::media {

// A connection to an X server with what is needed to see its first screen. One thread at a time.
class X11Display {
public:
    // Fails where no server answers, or one whose pixels are not of 32 bits.
    static foundation::Result<X11Display> open();

    xcb_connection_t *connection() const { return mConnection.get(); }
    xcb_window_t root() const { return mScreen->root; }
    PixelLayout layout() const { return mLayout; }
    bool isLost() const { return xcb_connection_has_error(connection()) != 0; }

    // Asks the server. The main one first.
    std::vector<Display> displays() const;
    // All displays together, as they were when something about them was last heard.
    QRect bounds() const { return mBounds; }
    void lookAtBounds();

private:
    X11Display() = default;

    ScreenConnection mConnection;
    const xcb_screen_t *mScreen = nullptr;
    PixelLayout mLayout = PixelLayout::Bgrx;
    QRect mBounds;
};

} // namespace cantorel::media

#pragma once

#include "platform/media/movie/x11/X11Display.h"

#include <QPoint>
#include <QRect>

#include <cstdint>
#include <vector>

namespace cantorel::media {

// The pointer: where it is, what it looks like, and how it is painted into a picture. One thread at a time.
class X11Cursor {
public:
    explicit X11Cursor(const X11Display &display) : mDisplay(display) {}

    // Has the server tell of other shapes; answers the first code of its events, 0 where it tells of none.
    std::uint8_t watch();
    // Another shape was told.
    void changed() { mIsKnown = false; }
    // Asks the server; whether anything about it differs inside of the part since the last time.
    bool look(const QRect &part);
    void paint(std::uint8_t *pixels, const QRect &part) const;

private:
    QRect place() const { return QRect(mAt - mHot, mSize); }

    const X11Display &mDisplay;
    bool mIsWatched = false;
    bool mIsKnown = false;
    QPoint mAt, mHot;
    QSize mSize;
    std::vector<std::uint32_t> mPixels; // alpha on top, colours multiplied by it
};

} // namespace cantorel::media

#pragma once

#include "platform/media/movie/x11/X11Display.h"

#include <QRect>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cantorel::media {

// Reads pixels of the screen: through shared memory where the server and we share any. One thread at a time.
class X11Image {
public:
    explicit X11Image(const X11Display &display) : mDisplay(display) {}
    ~X11Image();
    X11Image(const X11Image &) = delete;
    X11Image &operator=(const X11Image &) = delete;

    // The pixels of a part of the screen, to be painted upon; null when the server does not give them. Valid until the
    // next call.
    std::uint8_t *read(const QRect &part);

private:
    bool share(std::size_t bytes);
    void unshare();

    const X11Display &mDisplay;
    std::uint32_t mSegment = 0; // the server's name for the memory; 0 without any
    std::uint8_t *mShared = nullptr;
    std::size_t mSharedBytes = 0;
    bool mIsRefused = false; // the server shares no memory with us
    std::vector<std::uint8_t> mCopy;
};

} // namespace cantorel::media

#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/media/movie/PictureSources.h"
#include "platform/media/movie/x11/X11Cursor.h"
#include "platform/media/movie/x11/X11Display.h"
#include "platform/media/movie/x11/X11Image.h"

#include <QRect>
#include <QString>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <optional>
#include <thread>

namespace cantorel::media {

// Pictures of a display of an X server, on a thread "screen". Nothing is read while nothing on it changes. Owned by a
// capture.
class X11Source : public PictureSource {
public:
    X11Source(X11Display display, const Display &shown, const DisplayRequest &request);
    ~X11Source() override;

    PictureSize size() const override { return {mPart.width(), mPart.height()}; }
    foundation::Result<void> start(PictureSink &sink, int picturesPerSecond) override;
    void stop() override;

private:
    using Moment = std::chrono::steady_clock::time_point;

    void run();
    void watch();
    void hear();
    void waitUntil(std::optional<Moment> moment);
    bool lookAtPlace(); // false: the display is gone
    void show();

    X11Display mDisplay;
    const Display mShown;
    const std::optional<QRect> mRegion;
    const bool mShowsCursor;
    QRect mPart; // of the screen, that is read
    X11Image mImage;
    X11Cursor mCursor;
    PictureSink *mSink = nullptr;
    std::chrono::nanoseconds mInterval{};
    // The server's numbers; 0 where it does not tell.
    std::uint32_t mDamage = 0;
    std::uint8_t mDamageEvent = 0, mCursorEvent = 0, mPlaceEvent = 0;
    bool mIsDamaged = true; // what is to be seen differs from the last picture
    bool mIsMoved = false;  // something about the displays has changed
    foundation::FileDescriptor mWake;
    std::atomic<bool> mStops{false};
    std::future<void> mDone;
    std::thread mThread; // last: it uses all of the above
};

} // namespace cantorel::media

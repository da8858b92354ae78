#include "platform/media/movie/x11/X11Source.h"

#include "platform/media/movie/MovieFailures.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

// A server that does not answer by then is left.
constexpr std::chrono::seconds kPatience(2);
constexpr std::uint8_t kSentByAnotherProgram = 0x80;

} // namespace

X11Source::X11Source(X11Display display, const Display &shown, const DisplayRequest &request)
    : mDisplay(std::move(display)),
      mShown(shown),
      mRegion(request.region),
      mShowsCursor(request.showsCursor),
      mPart(request.region.value_or(shown.frame) & mDisplay.bounds()),
      mImage(mDisplay),
      mCursor(mDisplay) {}

X11Source::~X11Source() { stop(); }

Result<void> X11Source::start(PictureSink &sink, int picturesPerSecond) {
    mSink = &sink;
    mInterval = std::chrono::nanoseconds(std::chrono::seconds(1)) / std::max(1, picturesPerSecond);
    mWake = foundation::FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (mDisplay.isLost() || !mWake.isOpen())
        return failures::displayGone(mShown.name);
    std::packaged_task<void()> task([this] { run(); });
    mDone = task.get_future();
    mThread = std::thread(std::move(task));
    return {};
}

void X11Source::stop() {
    if (!mThread.joinable())
        return;
    mStops = true;
    const std::uint64_t one = 1;
    if (::write(mWake.get(), &one, sizeof one) < 0) {
        // it is full, so the thread wakes anyway
    }
    // Who waits for an answer that does not come is woken by the end of the connection.
    if (mDone.wait_for(kPatience) != std::future_status::ready)
        ::shutdown(xcb_get_file_descriptor(mDisplay.connection()), SHUT_RDWR);
    mThread.join();
}

void X11Source::watch() {
    xcb_connection_t *const connection = mDisplay.connection();
    mCursorEvent = mCursor.watch(); // asks for the extension's version too, which damage needs
    const auto *damage = xcb_get_extension_data(connection, &xcb_damage_id);
    const ScreenMemory<xcb_damage_query_version_reply_t> version(
        damage && damage->present
            ? xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1), nullptr)
            : nullptr);
    if (version) {
        mDamageEvent = damage->first_event;
        mDamage = xcb_generate_id(connection);
        xcb_damage_create(connection, mDamage, mDisplay.root(), XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX);
    }
    const auto *randr = xcb_get_extension_data(connection, &xcb_randr_id);
    if (randr && randr->present) {
        mPlaceEvent = randr->first_event;
        xcb_randr_select_input(connection, mDisplay.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
    }
    xcb_flush(connection);
}

void X11Source::hear() {
    while (const ScreenMemory<xcb_generic_event_t> event{xcb_poll_for_event(mDisplay.connection())}) {
        const std::uint8_t code = event->response_type & ~kSentByAnotherProgram;
        if (mDamageEvent != 0 && code == mDamageEvent + XCB_DAMAGE_NOTIFY) {
            const auto &area = reinterpret_cast<const xcb_damage_notify_event_t &>(*event).area;
            mIsDamaged |= QRect(area.x, area.y, area.width, area.height).intersects(mPart);
        } else if (mCursorEvent != 0 && code == mCursorEvent + XCB_XFIXES_CURSOR_NOTIFY) {
            mCursor.changed();
        } else if (mPlaceEvent != 0
                   && (code == mPlaceEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY
                       || code == mPlaceEvent + XCB_RANDR_NOTIFY)) {
            mIsMoved = true;
        }
    }
}

void X11Source::waitUntil(std::optional<Moment> moment) {
    int milliseconds = -1;
    if (moment)
        milliseconds = static_cast<int>(std::max<std::int64_t>(
            std::chrono::ceil<std::chrono::milliseconds>(*moment - std::chrono::steady_clock::now()).count(), 0));
    std::array<pollfd, 2> watched{
        {{mWake.get(), POLLIN, 0}, {xcb_get_file_descriptor(mDisplay.connection()), POLLIN, 0}}};
    // What comes before the next picture is due is heard then.
    ::poll(watched.data(), moment ? 1 : watched.size(), milliseconds);
}

bool X11Source::lookAtPlace() {
    mIsMoved = false;
    mDisplay.lookAtBounds();
    const auto displays = mDisplay.displays();
    const auto here =
        std::find_if(displays.begin(), displays.end(), [this](const Display &one) { return one.id == mShown.id; });
    if (here == displays.end())
        return false;
    const QRect part = mRegion.value_or(here->frame) & mDisplay.bounds();
    mIsDamaged |= part != mPart;
    mPart = part;
    return true;
}

void X11Source::show() {
    mIsDamaged = mDamage == 0;
    if (mDamage != 0) // before the pixels are read: what changes meanwhile is told anew
        xcb_damage_subtract(mDisplay.connection(), mDamage, XCB_NONE, XCB_NONE);
    if (mPart.isEmpty()) // the region lies outside for now; what was seen last stays
        return;
    Picture picture;
    picture.hostTime = static_cast<std::uint64_t>(
        std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count());
    std::uint8_t *const pixels = mImage.read(mPart);
    if (pixels == nullptr) { // such as while the display changes its size
        mIsMoved = mIsDamaged = true;
        return;
    }
    if (mShowsCursor)
        mCursor.paint(pixels, mPart);
    picture.layout = mDisplay.layout();
    picture.size = size();
    picture.planes[0] = pixels;
    picture.strides[0] = mPart.width() * 4;
    picture.bytes = static_cast<std::size_t>(picture.strides[0]) * static_cast<std::size_t>(mPart.height());
    mSink->takePicture(picture);
}

void X11Source::run() {
    pthread_setname_np(pthread_self(), "screen");
    watch();
    Moment due = std::chrono::steady_clock::now();
    while (!mStops) {
        hear();
        if (mDisplay.isLost() || (mIsMoved && !lookAtPlace())) {
            if (!mStops)
                mSink->pictureSourceEnded(failures::displayGone(mShown.name));
            return;
        }
        const Moment here = std::chrono::steady_clock::now();
        if (here >= due) {
            if (mShowsCursor && mCursor.look(mPart))
                mIsDamaged = true;
            if (mIsDamaged) {
                show();
                due = std::max(due + mInterval, here + mInterval / 2); // what was late is caught up with, not at once
            } else {
                due = here + mInterval;
            }
        }
        // Who waits for an answer has the events in front of it read as well; the socket does not tell of those again.
        hear();
        // The pointer is looked for at every turn; else there is nothing to do until something changes.
        waitUntil(mIsDamaged || mIsMoved || mShowsCursor ? std::optional(due) : std::nullopt);
    }
}

} // namespace cantorel::media

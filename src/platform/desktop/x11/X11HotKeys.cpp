#include "platform/desktop/x11/X11HotKeys.h"

#include "platform/desktop/HotKeyTable.h"
#include "platform/desktop/x11/X11Keyboard.h"

#include <QSocketNotifier>

#include <algorithm>

namespace cantorel::desktop {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kKeysGone("KeysGone");
constexpr foundation::SentenceKey kKeyTaken("KeyTaken", "Keys");
constexpr foundation::SentenceKey kKeyMissing("KeyMissing", "Keys");

} // namespace

// The connection, the keyboard and what is grabbed there.
class X11HotKeys::Server : public QObject {
public:
    explicit Server(X11Connection connection)
        : mConnection(std::move(connection)),
          mKeyboard(X11Keyboard::read(mConnection.get())),
          mNotifier(xcb_get_file_descriptor(mConnection.get()), QSocketNotifier::Read) {
        for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(mConnection.get())); screen.rem > 0;
             xcb_screen_next(&screen))
            mRoots.push_back(screen.data->root);
        connect(&mNotifier, &QSocketNotifier::activated, this, [this] { readEvents(); });
    }

    std::function<void(const HotKeyCombination &)> pressed;
    std::function<void()> keyboardDidChange;
    std::function<void()> vanished;

    enum class Grab { Granted, NoSuchKey, HeldElsewhere };

    Grab grab(const HotKeyCombination &combination) {
        const PlatformKey *key = platformKey(combination.keyCode);
        const auto keys = key != nullptr ? mKeyboard.keysOf(key->keysym) : std::vector<xcb_keycode_t>();
        if (keys.empty())
            return Grab::NoSuchKey;
        std::vector<xcb_void_cookie_t> asked;
        forEachState(combination, keys, [&](xcb_window_t root, xcb_keycode_t code, std::uint16_t mask) {
            asked.push_back(
                xcb_grab_key_checked(mConnection.get(), 1, root, mask, code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        });
        bool isGranted = true;
        for (const xcb_void_cookie_t cookie : asked)
            isGranted =
                X11Memory<xcb_generic_error_t>(xcb_request_check(mConnection.get(), cookie)) == nullptr && isGranted;
        if (!isGranted)
            ungrab(combination, keys);
        else
            mGrabbed.push_back({combination, keys});
        readEventsLater();
        return isGranted ? Grab::Granted : Grab::HeldElsewhere;
    }

    void ungrab(const HotKeyCombination &combination) {
        const auto grabbed = std::find_if(mGrabbed.begin(), mGrabbed.end(),
                                          [&](const Grabbed &other) { return other.combination == combination; });
        if (grabbed == mGrabbed.end())
            return;
        ungrab(combination, grabbed->keys);
        mGrabbed.erase(grabbed);
    }

    bool isGrabbed(const HotKeyCombination &combination) const {
        return std::any_of(mGrabbed.begin(), mGrabbed.end(),
                           [&](const Grabbed &grabbed) { return grabbed.combination == combination; });
    }

    // Lets all keys go, with the places where they were.
    void forgetKeyboard() {
        for (const Grabbed &grabbed : mGrabbed)
            ungrab(grabbed.combination, grabbed.keys);
        mGrabbed.clear();
        mKeyboard = X11Keyboard::read(mConnection.get());
    }

private:
    struct Grabbed {
        HotKeyCombination combination;
        std::vector<xcb_keycode_t> keys;
    };

    template <class Action>
    void forEachState(const HotKeyCombination &combination, const std::vector<xcb_keycode_t> &keys, Action action) {
        const std::uint16_t mask = mKeyboard.maskOf(combination.modifiers);
        for (const xcb_window_t root : mRoots)
            for (const xcb_keycode_t key : keys)
                for (const std::uint16_t locks : mKeyboard.lockStates())
                    action(root, key, static_cast<std::uint16_t>(mask | locks));
    }

    void ungrab(const HotKeyCombination &combination, const std::vector<xcb_keycode_t> &keys) {
        forEachState(combination, keys, [&](xcb_window_t root, xcb_keycode_t key, std::uint16_t mask) {
            xcb_ungrab_key(mConnection.get(), key, root, mask);
        });
        xcb_flush(mConnection.get());
    }

    // Events that came in while an answer was waited for make no noise at the descriptor.
    void readEventsLater() {
        QMetaObject::invokeMethod(
            this, [this] { readEvents(); }, Qt::QueuedConnection);
    }

    void readEvents() {
        bool isOtherKeyboard = false;
        while (const X11Memory<xcb_generic_event_t> event{xcb_poll_for_event(mConnection.get())}) {
            switch (event->response_type & 0x7f) {
            case XCB_KEY_PRESS:
                keyPressed(*reinterpret_cast<const xcb_key_press_event_t *>(event.get()));
                break;
            case XCB_KEY_RELEASE: {
                const auto &release = *reinterpret_cast<const xcb_key_release_event_t *>(event.get());
                mReleasedKey = release.detail;
                mReleasedAt = release.time;
                break;
            }
            case XCB_MAPPING_NOTIFY:
                isOtherKeyboard = isOtherKeyboard
                                  || reinterpret_cast<const xcb_mapping_notify_event_t *>(event.get())->request
                                         != XCB_MAPPING_POINTER;
                break;
            default:
                break;
            }
        }
        if (xcb_connection_has_error(mConnection.get()) != 0) {
            mNotifier.setEnabled(false);
            mGrabbed.clear();
            vanished();
        } else if (isOtherKeyboard) {
            keyboardDidChange();
        }
    }

    void keyPressed(const xcb_key_press_event_t &event) {
        // A held key repeats as a release and a press of one moment.
        if (event.detail == mReleasedKey && event.time == mReleasedAt)
            return;
        const std::uint32_t modifiers = mKeyboard.modifiersOf(event.state);
        const auto grabbed = std::find_if(mGrabbed.begin(), mGrabbed.end(), [&](const Grabbed &other) {
            return mKeyboard.maskOf(other.combination.modifiers) == mKeyboard.maskOf(modifiers)
                   && std::find(other.keys.begin(), other.keys.end(), event.detail) != other.keys.end();
        });
        if (grabbed != mGrabbed.end())
            pressed(HotKeyCombination(grabbed->combination));
    }

    X11Connection mConnection;
    X11Keyboard mKeyboard;
    QSocketNotifier mNotifier;
    std::vector<xcb_window_t> mRoots;
    std::vector<Grabbed> mGrabbed;
    xcb_keycode_t mReleasedKey = 0;
    xcb_timestamp_t mReleasedAt = 0;
};

Result<std::unique_ptr<X11HotKeys>> X11HotKeys::open(const QString &displayName) {
    const QByteArray name = displayName.toLocal8Bit();
    X11Connection connection(xcb_connect(name.isEmpty() ? nullptr : name.constData(), nullptr));
    if (const int error = xcb_connection_has_error(connection.get()); error != 0)
        return Failure{QStringLiteral("Hot keys don't work, since the X server does not answer; check DISPLAY."),
                       QStringLiteral("xcb_connect: error %1").arg(error)};
    return std::unique_ptr<X11HotKeys>(new X11HotKeys(std::make_unique<Server>(std::move(connection))));
}

X11HotKeys::X11HotKeys(std::unique_ptr<Server> server) : mServer(std::move(server)) {
    mServer->pressed = [this](const HotKeyCombination &combination) { pressed(combination); };
    mServer->keyboardDidChange = [this] { grabAllAnew(); };
    mServer->vanished = [this] { tell(kKeysGone(), QStringLiteral("the X connection is broken")); };
}

X11HotKeys::~X11HotKeys() = default;

EventHotKeyRef X11HotKeys::RegisterEventHotKey(const HotKeyCombination &combination, const EventHotKeyID &identity,
                                               HotKeyTarget &target) {
    const EventHotKeyRef reference = mBook.add(combination, identity, target);
    if (!mServer->isGrabbed(combination))
        grab(combination);
    return reference;
}

void X11HotKeys::UnregisterEventHotKey(EventHotKeyRef reference) {
    const auto *registration = mBook.find(reference);
    if (registration == nullptr)
        return;
    const HotKeyCombination combination = registration->combination;
    mBook.remove(reference);
    if (!mBook.has(combination))
        mServer->ungrab(combination);
}

QString X11HotKeys::triggerOf(EventHotKeyRef reference) const {
    const auto *registration = mBook.find(reference);
    return registration != nullptr && mServer->isGrabbed(registration->combination)
               ? shownCombination(registration->combination)
               : QString();
}

void X11HotKeys::grab(const HotKeyCombination &combination) {
    const auto answer = isHotKey(combination) ? mServer->grab(combination) : Server::Grab::NoSuchKey;
    const auto told = std::find(mHeldElsewhere.begin(), mHeldElsewhere.end(), combination);
    if (answer == Server::Grab::Granted) {
        if (told != mHeldElsewhere.end())
            mHeldElsewhere.erase(told);
        return;
    }
    if (told != mHeldElsewhere.end())
        return;
    mHeldElsewhere.push_back(combination);
    const QString shown = shownCombination(combination);
    if (!shown.isEmpty() && !isHotKey(combination)) {
        tell(typingKeySentence(combination), QStringLiteral("%1 is needed for typing").arg(shown));
        return;
    }
    if (answer == Server::Grab::HeldElsewhere)
        tell(kKeyTaken(shown), QStringLiteral("%1 is grabbed elsewhere").arg(shown));
    else
        tell(kKeyMissing(shown.isEmpty() ? QStringLiteral("with the code %1").arg(combination.keyCode) : shown),
             QStringLiteral("no key for the code %1").arg(combination.keyCode));
}

void X11HotKeys::grabAllAnew() {
    mServer->forgetKeyboard();
    for (const auto &registration : mBook.all()) {
        if (!mServer->isGrabbed(registration.combination))
            grab(registration.combination);
    }
    if (triggersDidChange)
        triggersDidChange();
}

void X11HotKeys::pressed(const HotKeyCombination &combination) {
    mBook.press([&](const HotKeyBook::Registration &other) { return other.combination == combination; });
}

void X11HotKeys::tell(const foundation::Sentence &sentence, const QString &detail) {
    if (trouble)
        trouble(Failure{sentence, detail});
}

} // namespace cantorel::desktop

#pragma once

#include "tests/support/PrivateWorld.h"

#include <QDeadlineTimer>
#include <QProcess>

#include <sys/prctl.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <thread>

namespace cantorel::test {

// An X server of the test's own, and a keyboard whose keys the test presses.
class PrivateDisplay {
public:
    // geometry: of the screen, as Xvfb takes it.
    explicit PrivateDisplay(const QString &geometry = "64x64x8") {
        mServer.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }); // a test that aborts leaves none
        mServer.start("Xvfb", {"-displayfd", "1", "-screen", "0", geometry, "-nolisten", "tcp", "-noreset"});
        QByteArray number;
        while (!number.contains('\n') && mServer.waitForReadyRead(20'000))
            number += mServer.readAllStandardOutput();
        if (number.trimmed().isEmpty())
            return;
        mName = ':' + QString::fromLatin1(number.trimmed());
        mConnection = xcb_connect(mName.toLocal8Bit().constData(), nullptr);
    }
    ~PrivateDisplay() {
        if (mConnection != nullptr)
            xcb_disconnect(mConnection);
        kill();
    }
    PrivateDisplay(const PrivateDisplay &) = delete;
    PrivateDisplay &operator=(const PrivateDisplay &) = delete;

    bool ready() const { return mConnection != nullptr && xcb_connection_has_error(mConnection) == 0; }
    QString name() const { return mName; }
    xcb_connection_t *connection() const { return mConnection; }
    xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(mConnection)).data->root; }
    void kill() {
        mServer.kill();
        mServer.waitForFinished();
    }

    // The key that makes a sign; 0 when there is none.
    xcb_keycode_t keyOf(xcb_keysym_t sign) const {
        const xcb_setup_t *setup = xcb_get_setup(mConnection);
        const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        xcb_get_keyboard_mapping_reply_t *reply = xcb_get_keyboard_mapping_reply(
            mConnection, xcb_get_keyboard_mapping(mConnection, setup->min_keycode, count), nullptr);
        xcb_keycode_t found = 0;
        for (int i = 0; reply != nullptr && i < count && found == 0; ++i) {
            if (xcb_get_keyboard_mapping_keysyms(reply)[i * reply->keysyms_per_keycode] == sign)
                found = static_cast<xcb_keycode_t>(setup->min_keycode + i);
        }
        std::free(reply);
        return found;
    }
    void press(xcb_keysym_t sign) const { fake(XCB_KEY_PRESS, keyOf(sign)); }
    void release(xcb_keysym_t sign) const { fake(XCB_KEY_RELEASE, keyOf(sign)); }
    // Presses all, the last one last, and lets them go.
    void strike(std::initializer_list<xcb_keysym_t> signs) const {
        for (const xcb_keysym_t sign : signs)
            press(sign);
        for (const xcb_keysym_t sign : signs)
            release(sign);
        // Two strikes of one millisecond would look like one held key.
        const QDeadlineTimer passed(3);
        (void)eventually([&] { return passed.hasExpired(); });
    }
    // Gives a key other signs.
    void change(xcb_keycode_t key, xcb_keysym_t sign) const {
        const xcb_keysym_t signs[] = {sign, sign};
        xcb_change_keyboard_mapping(mConnection, 1, key, 2, signs);
        sync();
    }
    // Returns when the server has done all that was asked before.
    void sync() const { std::free(xcb_get_input_focus_reply(mConnection, xcb_get_input_focus(mConnection), nullptr)); }

private:
    void fake(std::uint8_t type, xcb_keycode_t key) const {
        xcb_test_fake_input(mConnection, type, key, XCB_CURRENT_TIME, root(), 0, 0, 0);
        sync();
    }

    QProcess mServer;
    QString mName;
    xcb_connection_t *mConnection = nullptr;
};

} // namespace cantorel::test

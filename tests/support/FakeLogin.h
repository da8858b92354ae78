#pragma once

#include "tests/support/FakeService.h"

#include <QDBusUnixFileDescriptor>

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace cantorel::test {

// login1, which hands out a descriptor and knows whether it is still open.
class FakeLogin : public FakeService {
public:
    FakeLogin() : FakeService("org.freedesktop.login1", "/org/freedesktop/login1", QDBusConnection::SystemBus) {
        EXPECT_EQ(::pipe2(mPipe, O_CLOEXEC | O_NONBLOCK), 0);
    }
    ~FakeLogin() override {
        ::close(mPipe[0]);
        ::close(mPipe[1]);
    }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        answers = {{message.member(), QVariant::fromValue(QDBusUnixFileDescriptor(mPipe[1]))}}; // a copy
        const bool sent = FakeService::handleMessage(message, bus);
        answers.clear();
        ::close(std::exchange(mPipe[1], -1));
        return sent;
    }
    // Nobody has the descriptor any more.
    bool isReleased() const {
        char byte = 0;
        return ::read(mPipe[0], &byte, 1) == 0;
    }
    void tell(const char *signal, bool begins) {
        FakeService::tell("org.freedesktop.login1.Manager", signal, {begins});
    }

private:
    int mPipe[2] = {-1, -1};
};

} // namespace cantorel::test

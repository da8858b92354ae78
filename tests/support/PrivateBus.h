#pragma once

#include "platform/foundation/ChildProcess.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QTemporaryDir>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <thread>

namespace cantorel::test {

// A bus of our own, without any service of the machine, as both session and system bus.
class PrivateBus {
public:
    PrivateBus() {
        QFile configuration(mFolder.filePath("bus.conf"));
        if (!configuration.open(QIODevice::WriteOnly))
            return;
        configuration.write("<busconfig><type>session</type><listen>unix:path=" + mFolder.filePath("bus").toUtf8()
                            + "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                              "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
        configuration.close();
        auto started = foundation::ChildProcess::start(
            {"dbus-daemon", {"--nofork", "--nopidfile", "--config-file=" + configuration.fileName()}, {}, {}});
        if (started)
            mDaemon = std::move(started.value());
        const QDeadlineTimer deadline(10'000);
        while (!answers() && !deadline.hasExpired())
            std::this_thread::yield();
        const QByteArray address = "unix:path=" + mFolder.filePath("bus").toUtf8();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
    }

private:
    // A socket is there before anybody listens.
    bool answers() const {
        const QByteArray path = mFolder.filePath("bus").toLocal8Bit();
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy_n(path.constData(), std::min<std::size_t>(path.size(), sizeof address.sun_path - 1),
                    address.sun_path);
        const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool connected = ::connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        ::close(probe);
        return connected;
    }

    const QTemporaryDir mFolder;
    std::unique_ptr<foundation::ChildProcess> mDaemon;
};

} // namespace cantorel::test

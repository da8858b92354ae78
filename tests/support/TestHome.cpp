#include "tests/support/TestHome.h"

#include <QDir>

namespace cantorel::test {

TestHome::TestHome() : mFolder(QDir::tempPath() + "/cantorel-test-XXXXXX") {
    const auto folder = [&](const char *variable, const QString &name) {
        const QString path = mFolder.filePath(name);
        QDir().mkpath(path);
        qputenv(variable, path.toUtf8());
    };
    folder("HOME", "home");
    folder("XDG_CONFIG_HOME", "home/.config");
    folder("XDG_CACHE_HOME", "home/.cache");
    folder("XDG_DATA_HOME", "home/.local/share");
    folder("XDG_STATE_HOME", "home/.local/state");
    folder("XDG_RUNTIME_DIR", "run");
    QFile::setPermissions(mFolder.filePath("run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    for (const char *variable : {"PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_REMOTE", "PULSE_SERVER", "DISPLAY",
                                 "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"})
        qunsetenv(variable);
}

} // namespace cantorel::test

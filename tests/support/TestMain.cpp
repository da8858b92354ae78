// The entry point of every test program: a home folder of its own, an application object, then the tests.

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#ifdef __SANITIZE_THREAD__
#include <cstdarg>

// QProcess starts its children on our own memory for a moment. The thread sanitizer takes that for a fork, marks the
// child's memory, which is ours, and from then on loses sight of our locks: its hook is passed by.
extern "C" int __clone(int (*run)(void *), void *stack, int flags, void *argument, ...);
extern "C" __attribute__((visibility("default"))) int clone(int (*run)(void *), void *stack, int flags, void *argument,
                                                            ...) {
    std::va_list more;
    va_start(more, argument);
    void *const parent = va_arg(more, void *);
    void *const storage = va_arg(more, void *);
    void *const child = va_arg(more, void *);
    va_end(more);
    return __clone(run, stack, flags, argument, parent, storage, child);
}
#endif

int main(int argc, char **argv) {
    const QTemporaryDir home(QDir::tempPath() + QStringLiteral("/cantorel-test-XXXXXX"));
    if (!home.isValid())
        return 2;
    const auto folder = [&](const char *variable, const QString &name) {
        const QString path = home.filePath(name);
        QDir().mkpath(path);
        qputenv(variable, path.toUtf8());
    };
    folder("HOME", QStringLiteral("home"));
    folder("XDG_CONFIG_HOME", QStringLiteral("home/.config"));
    folder("XDG_CACHE_HOME", QStringLiteral("home/.cache"));
    folder("XDG_DATA_HOME", QStringLiteral("home/.local/share"));
    folder("XDG_STATE_HOME", QStringLiteral("home/.local/state"));
    folder("XDG_RUNTIME_DIR", QStringLiteral("run"));
    QFile::setPermissions(home.filePath(QStringLiteral("run")), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    for (const char *variable : {"PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_REMOTE", "PULSE_SERVER", "DISPLAY",
                                 "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"})
        qunsetenv(variable);

    QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}

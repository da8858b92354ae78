#include "platform/desktop/dbus/DBusFileManagerReveal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFileInfo>
#include <QProcess>

namespace cantorel::desktop {

namespace {

constexpr int kPatience = 3000; // milliseconds for an answer

foundation::Result<void> start(const QString &program, const QString &argument) {
    if (QProcess::startDetached(program, {argument}))
        return {};
    return foundation::Failure{
        QStringLiteral("\"%1\" cannot be opened, since the program \"%2\" cannot be started.").arg(argument, program),
        QStringLiteral("%1 not started for %2").arg(program, argument)};
}

} // namespace

foundation::Result<void> DBusFileManagerReveal::reveal(const QStringList &paths) {
    if (paths.isEmpty())
        return {};
    QStringList addresses;
    for (const QString &path : paths)
        addresses << QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toString(QUrl::FullyEncoded);
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << addresses << QString();
    const auto bus = QDBusConnection::sessionBus();
    if (bus.isConnected() && bus.call(call, QDBus::Block, kPatience).type() == QDBusMessage::ReplyMessage)
        return {};
    return open(QUrl::fromLocalFile(QFileInfo(paths.constFirst()).absolutePath()), {});
}

foundation::Result<void> DBusFileManagerReveal::open(const QUrl &url, const QString &withApplication) {
    const QString target = url.isLocalFile() ? url.toLocalFile() : url.toString(QUrl::FullyEncoded);
    return start(withApplication.isEmpty() ? QStringLiteral("xdg-open") : withApplication, target);
}

} // namespace cantorel::desktop

// A tray without a face: answers for the desktop's watcher of status items, and prints the address of each item that
// comes. For measuring a window that has gone into the tray.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <cstdio>

namespace {

class Watcher : public QDBusVirtualObject {
public:
    QString introspect(const QString &) const override {
        return QStringLiteral("<interface name=\"org.kde.StatusNotifierWatcher\">"
                              "<property name=\"IsStatusNotifierHostRegistered\" type=\"b\" access=\"read\"/>"
                              "<method name=\"RegisterStatusNotifierItem\"><arg type=\"s\" direction=\"in\"/></method>"
                              "</interface>");
    }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
            const QString named = message.arguments().value(0).toString();
            std::printf("%s\n", qPrintable(named.startsWith(QLatin1Char('/')) ? message.service() : named));
            std::fflush(stdout);
            return bus.send(message.createReply());
        }
        if (message.member() == QLatin1String("Get")) // is anybody showing items?
            return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
        return false;
    }
};

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    Watcher watcher;
    auto bus = QDBusConnection::sessionBus();
    if (!bus.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), &watcher)
        || !bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher")))
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

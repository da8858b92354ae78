#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariant>

#include <gtest/gtest.h>

#include <chrono>
#include <future>

namespace cantorel::test {

// What another program is answered, or brings about, while this thread serves.
template <class Question> auto whileServing(Question question) {
    auto answer = std::async(std::launch::async, question);
    while (answer.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return answer.get();
}

// A service of the desktop on a connection of its own. It notes what it is asked, as "method argument argument".
class FakeService : public QDBusVirtualObject {
public:
    FakeService(const QString &name, const QString &path, QDBusConnection::BusType type = QDBusConnection::SessionBus)
        : mName(name), mPath(path), mBus(QDBusConnection::connectToBus(type, name)) {
        EXPECT_TRUE(mBus.registerVirtualObject(path, this, QDBusConnection::SubPath) && mBus.registerService(name));
    }
    ~FakeService() override {
        mBus.unregisterService(mName);
        QDBusConnection::disconnectFromBus(mName);
    }
    QStringList calls;
    QVariantMap answers; // by method; nothing for the others

    bool tell(const QString &interface, const QString &signal, const QVariantList &arguments, const QString &path) {
        QDBusMessage message = QDBusMessage::createSignal(path, interface, signal);
        message.setArguments(arguments);
        return mBus.send(message);
    }
    bool tell(const QString &interface, const QString &signal, const QVariantList &arguments) {
        return tell(interface, signal, arguments, mPath);
    }
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        QStringList parts{message.member()};
        for (const QVariant &argument : message.arguments())
            parts << (argument.typeId() == QMetaType::QStringList ? argument.toStringList()
                                                                  : QStringList{argument.toString()});
        parts.removeAll(QString());
        calls << parts.join(' ');
        const QVariant answer = answers.value(message.member());
        return bus.send(message.createReply(answer.isValid() ? QVariantList{answer} : QVariantList()));
    }

protected:
    const QString mName, mPath;
    QDBusConnection mBus;
};

} // namespace cantorel::test

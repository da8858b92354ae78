#pragma once

#include "platform/desktop/FileChooser.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QHash>
#include <QObject>

namespace cantorel::desktop {

// The dialog that the desktop's portal shows. Nothing is asked of the bus before the first question.
class PortalFileChooser : public QObject, public FileChooser {
    Q_OBJECT

public:
    explicit PortalFileChooser(std::function<QDBusConnection()> bus);

    void ask(const Question &question, Answer answered) override;

private Q_SLOTS:
    void requestDidRespond(const QDBusMessage &signal);

private:
    struct Asked {
        Question::What what;
        Answer answered;
    };
    void answer(const QString &request, const std::optional<QStringList> &paths);

    const std::function<QDBusConnection()> mBus;
    QHash<QString, Asked> mAsked; // by the path that the answer comes from
    int mTokens = 0;
};

} // namespace cantorel::desktop

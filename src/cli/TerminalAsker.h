#pragma once

#include "util/Asker.h"

namespace cantorel {

// Prints alerts on the console. Nobody can answer there, so it takes the safe choice and prints which. Owned by main.
class TerminalAsker : public Asker {
public:
    void tell(const QString &title, const QString &message, AlertStyle style, QObject *window) override;
    int ask(const QString &title, const QString &message, const QStringList &choices, QObject *window) override;
    QString askForNewFile(const QString &folder, const QString &extension) override;
};

} // namespace cantorel

#pragma once

#include "util/Asker.h"

namespace cantorel {

// Tells and asks on the console, where nobody can answer: the safe choice is taken and said. Owned by main.
class TerminalAsker : public Asker {
public:
    void tell(const QString &title, const QString &message, AlertStyle style, QObject *window) override;
    int ask(const QString &title, const QString &message, const QStringList &choices, QObject *window) override;
    QString askForNewFile(const QString &folder, const QString &extension) override;
};

} // namespace cantorel

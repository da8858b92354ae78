#include "cli/TerminalAsker.h"

#include "platform/foundation/Console.h"

namespace cantorel {

void TerminalAsker::tell(const QString &title, const QString &message, AlertStyle, QObject *) {
    foundation::printToConsole(title.isEmpty() ? message + QLatin1Char('\n')
                                               : QStringLiteral("%1: %2\n").arg(title, message));
}

int TerminalAsker::ask(const QString &title, const QString &message, const QStringList &choices, QObject *window) {
    const auto safe = static_cast<int>(choices.size()) - 1;
    const QString taken = choices.isEmpty() ? QString() : QStringLiteral(" [%1]").arg(choices.constLast());
    tell(title, message + taken, AlertStyle::Informational, window);
    return safe;
}

QString TerminalAsker::askForNewFile(const QString &, const QString &) { return {}; }

} // namespace cantorel

#include "platform/foundation/Console.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace cantorel::foundation {

QString printable(const QString &text) {
    const auto acts = [](QChar c) {
        const bool turnsText = (c >= QChar(0x202A) && c <= QChar(0x202E)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
        return turnsText || (c.category() == QChar::Other_Control && c != QLatin1Char('\n') && c != QLatin1Char('\t'));
    };
    QString clean = text;
    std::replace_if(clean.begin(), clean.end(), acts, QChar(QChar::ReplacementCharacter));
    return clean;
}

void printToConsole(const QString &text) {
    const QByteArray bytes = printable(text).toUtf8();
    qsizetype written = 0;
    while (written < bytes.size()) {
        const auto count = ::write(STDERR_FILENO, bytes.data() + written, static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        written += count;
    }
}

void ignoreBrokenPipes() { std::signal(SIGPIPE, SIG_IGN); }

} // namespace cantorel::foundation

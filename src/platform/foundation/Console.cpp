#include "platform/foundation/Console.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace cantorel::foundation {

void printToConsole(const QString &text) {
    const QByteArray bytes = text.toUtf8();
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

#include "platform/foundation/Console.h"

#include <unistd.h>

namespace cantorel::foundation {

void printToConsole(const QString &text) {
    const QByteArray bytes = text.toUtf8();
    qsizetype written = 0;
    while (written < bytes.size()) {
        const auto count = ::write(STDERR_FILENO, bytes.data() + written, static_cast<size_t>(bytes.size() - written));
        if (count <= 0)
            return;
        written += count;
    }
}

} // namespace cantorel::foundation

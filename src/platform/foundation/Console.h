#pragma once

#include <QString>

namespace cantorel::foundation {

// The system console is standard error: writes the text as UTF-8 in one piece, adding nothing. Any thread; not
// real-time. What cannot be written is dropped.
void printToConsole(const QString &text);

} // namespace cantorel::foundation

#pragma once

#include <QString>

namespace cantorel::foundation {

// The system console is standard error: writes the text as UTF-8 in one piece, adding nothing. Any thread; not
// real-time. What cannot be written is dropped.
void printToConsole(const QString &text);

// A reader that goes away, of a pipe or of the console, is a failed write from now on, not the end of the program. Each
// program says so first in its main function; children get the usual end back.
void ignoreBrokenPipes();

} // namespace cantorel::foundation

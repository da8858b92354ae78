#pragma once

#include <QString>

namespace cantorel::foundation {

// The text with a sign in the place of every character that acts on a terminal instead of standing there, but for line
// feeds and tabs: names come from devices, files and other programs.
QString printable(const QString &text);

// The system console is standard error: writes the text, made printable, as UTF-8 in one piece, adding nothing. Any
// thread; not real-time. What cannot be written is dropped.
void printToConsole(const QString &text);

// A reader that goes away, of a pipe or of the console, is a failed write from now on, not the end of the program. Each
// program says so first in its main function; children get the usual end back.
void ignoreBrokenPipes();

} // namespace cantorel::foundation

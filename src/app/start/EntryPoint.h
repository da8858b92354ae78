#pragma once

#include <QStringList>

#include <functional>
#include <optional>

namespace cantorel {

// The program's entry: prints and obeys the arguments, the program's path included, and runs the main loop. Answers
// what the loop answers, or 0 after an exception, which is logged. Arguments are name=value pairs joined by "&"; "lang"
// sets the interface language of this run by a language code, others are passed over.
// What "--help" and "--version" answer on standard output, without a display; nothing for other arguments.
std::optional<QString> answeredByArguments(const QStringList &arguments);

int runMain(const QStringList &arguments, const std::function<int()> &mainLoop);

} // namespace cantorel

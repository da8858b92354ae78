#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

namespace cantorel::ui {

// What the keys of the whole window do, wherever the focus is.
enum class Command {
    Record,
    Pause,
    Split,
    RecordPage,
    LibraryPage,
    NextPage,
    PreviousPage,
    NextRegion,
    Menu,
    Back,
    Settings,
    Quit
};

// Every command, and the keys of each; the first is the one that is shown.
const QList<Command> &allCommands();
QList<QKeySequence> keysOf(Command command);
// A text with its keys behind it, for the tip of a button: "Pause (Ctrl+P)".
QString withKeys(const QString &text, Command command);

} // namespace cantorel::ui

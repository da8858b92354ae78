#include "ui/WindowKeys.h"

namespace cantorel::ui {

namespace {

struct Keys {
    Command command;
    QKeyCombination first;
    QKeyCombination second = {}; // of none
};
constexpr Keys kTable[] = {
    {Command::Record, Qt::CTRL | Qt::Key_R},
    {Command::Pause, Qt::CTRL | Qt::Key_P},
    {Command::Split, Qt::CTRL | Qt::Key_T},
    {Command::RecordPage, Qt::CTRL | Qt::Key_1},
    {Command::LibraryPage, Qt::CTRL | Qt::Key_2},
    {Command::NextPage, Qt::CTRL | Qt::Key_PageDown},
    {Command::PreviousPage, Qt::CTRL | Qt::Key_PageUp},
    {Command::NextRegion, Qt::Key_F6},
    {Command::Menu, Qt::Key_F10},
    {Command::Back, Qt::Key_Escape, Qt::ALT | Qt::Key_Left},
    {Command::Settings, Qt::CTRL | Qt::Key_Comma},
    {Command::Quit, Qt::CTRL | Qt::Key_Q},
};

} // namespace

const QList<Command> &allCommands() {
    static const QList<Command> commands = [] {
        QList<Command> all;
        for (const Keys &keys : kTable)
            all << keys.command;
        return all;
    }();
    return commands;
}

QList<QKeySequence> keysOf(Command command) {
    QList<QKeySequence> found;
    for (const Keys &keys : kTable)
        if (keys.command == command)
            for (const QKeyCombination combination : {keys.first, keys.second})
                if (combination != QKeyCombination())
                    found << QKeySequence(combination);
    return found;
}

QString withKeys(const QString &text, Command command) {
    return QStringLiteral("%1 (%2)").arg(text, keysOf(command).constFirst().toString(QKeySequence::NativeText));
}

} // namespace cantorel::ui

#include "cli/Commands.h"
#include "recording/hotkeys/HotkeyManager.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

void addHotkeysCommand(CLI::App &root, CommandSession &session) {
    const auto text = std::make_shared<std::string>();
    CLI::App &hotkeys = addVerb(root, session, "hotkeys", "Explains hot keys", "hotkeys parse \"ctrl cmd s\"");
    CLI::App &parsing = addVerb(
        hotkeys, session, "parse", "The key code and the modifiers of a text", "hotkeys parse \"ctrl cmd s\" --json",
        [&session, text] {
            const auto combination = HotkeyManager::combinationOf(QString::fromStdString(*text));
            session.answer(
                {{QStringLiteral("keyCode"), static_cast<qint64>(combination.keyCode)},
                 {QStringLiteral("modifiers"), static_cast<qint64>(combination.modifiers)}},
                QStringLiteral("key code %1, modifiers %2").arg(combination.keyCode).arg(combination.modifiers));
            return Outcome::done();
        });
    parsing.add_option("TEXT", *text, "Words such as \"ctrl cmd s\"")->required();
}

} // namespace cantorel

#include "cli/HotkeysCommand.h"

#include "recording/hotkeys/HotkeyManager.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

void addHotkeysCommand(CLI::App &root, CommandSession &session) {
    const auto text = std::make_shared<std::string>();
    CLI::App *hotkeys = root.add_subcommand("hotkeys", "Explains hot keys");
    hotkeys->require_subcommand(1);
    hotkeys->footer("Example: cantorel-cli hotkeys parse \"ctrl cmd s\"");
    CLI::App *parsing = hotkeys->add_subcommand("parse", "The key code and the modifiers of a text");
    parsing->add_option("TEXT", *text, "Words such as \"ctrl cmd s\"")->required();
    parsing->footer("Example: cantorel-cli hotkeys parse \"ctrl cmd s\" --json");
    parsing->callback([&session, text] {
        session.action = [&session, text] {
            const auto combination = HotkeyManager::combinationOf(QString::fromStdString(*text));
            session.answer(
                {{QStringLiteral("keyCode"), static_cast<qint64>(combination.keyCode)},
                 {QStringLiteral("modifiers"), static_cast<qint64>(combination.modifiers)}},
                QStringLiteral("key code %1, modifiers %2").arg(combination.keyCode).arg(combination.modifiers));
            return Outcome::done();
        };
    });
}

} // namespace cantorel

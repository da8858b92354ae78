#include "cli/CommandTable.h"

#include "cli/ControlCommand.h"
#include "cli/DevicesCommand.h"
#include "cli/DoctorCommand.h"
#include "cli/DriverCommand.h"
#include "cli/HotkeysCommand.h"
#include "cli/LangCommand.h"
#include "cli/LibraryCommand.h"
#include "cli/RecordCommand.h"
#include "cli/SettingsCommand.h"
#include "cli/TasksCommand.h"
#include "cli/UpdateCommand.h"
#include "log/GuardedAction.h"
#include "platform/foundation/Console.h"
#include "settings/AppSettings.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace cantorel {

namespace {

std::string versionText() { return "cantorel-cli " + AppSettings::appVersion().toStdString(); }

void addCommonOptions(CLI::App &root, CommandSession &session) {
    root.add_flag("--json", session.json, "One JSON object a line on standard output, nothing else there");
    root.add_flag("--quiet", session.quiet, "Only results and failures");
    root.set_version_flag("--version", versionText(), "Print the version");
    root.add_option_function<std::string>(
            "--backend",
            [&session](const std::string &name) {
                session.backend = name == "pipewire"   ? BackendChoice::PipeWire
                                  : name == "embedded" ? BackendChoice::Embedded
                                                       : BackendChoice::Automatic;
            },
            "The audio backend: auto, pipewire or embedded")
        ->check(CLI::IsMember({"auto", "pipewire", "embedded"}))
        ->type_name("NAME");
    root.fallthrough(); // the common options may stand behind the command too
    root.require_subcommand(1);
}

int fail(const Outcome &outcome) {
    foundation::printToConsole(outcome.sentence + QLatin1Char('\n'));
    return outcome.status;
}

} // namespace

std::span<const AddCommand> allCommands() {
    static constexpr AddCommand kCommands[] = {addDoctorCommand,   addDevicesCommand,  addDriverCommand,
                                               addRecordCommand,   addSettingsCommand, addTasksCommand,
                                               addHotkeysCommand,  addLangCommand,     addLibraryCommand,
                                               addControlCommands, addUpdateCommand};
    return kCommands;
}

void composeCommandLine(CLI::App &root, CommandSession &session, std::span<const AddCommand> commands) {
    root.name("cantorel-cli");
    root.description("Records what the computer plays, the microphone, or both.");
    addCommonOptions(root, session);
    root.footer("Example: cantorel-cli settings list");
    for (const AddCommand add : commands)
        add(root, session);
}

int runCommandLine(const QStringList &arguments, std::span<const AddCommand> commands) {
    CommandSession session;
    CLI::App root;
    composeCommandLine(root, session, commands);

    std::vector<std::string> reversed; // the order in which CLI11 takes them
    for (const QString &argument : arguments)
        reversed.push_back(argument.toStdString());
    std::reverse(reversed.begin(), reversed.end());
    try {
        root.parse(reversed);
    } catch (const CLI::Success &asked) { // help and version
        return root.exit(asked);
    } catch (const CLI::ParseError &error) {
        const auto unknown = root.remaining(true);
        const QString what =
            unknown.empty() ? QString::fromStdString(error.what()).simplified()
                            : QStringLiteral("\"%1\" is not understood.").arg(QString::fromStdString(unknown.front()));
        return fail(
            Outcome::wrongUsage(QStringLiteral("%1%2 Run with --help to see what is possible.")
                                    .arg(what, what.endsWith(QLatin1Char('.')) ? QString() : QStringLiteral("."))));
    }

    Outcome outcome = Outcome::failed(QStringLiteral("The command ended unexpectedly; the log says why."));
    if (session.action)
        (void)guarded("command", [&] { outcome = session.action(); }); // what was thrown is logged; the sentence stands
    if (outcome.status == 0 && !printedAll())
        outcome = Outcome::failed(QStringLiteral("The answer could not be written; check where standard output goes."));
    return outcome.status == 0 ? 0 : fail(outcome);
}

} // namespace cantorel

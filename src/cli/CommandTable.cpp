#include "cli/CommandTable.h"

#include "cli/CommandManual.h"
#include "cli/Commands.h"
#include "log/GuardedAction.h"
#include "platform/foundation/Console.h"
#include "settings/AppSettings.h"

#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

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

CLI::App &addVerb(CLI::App &above, CommandSession &session, const char *name, const char *what,
                  const std::string &example, std::function<Outcome()> action) {
    CLI::App *verb = above.add_subcommand(name, what);
    verb->footer("Example: cantorel-cli " + example);
    if (!action)
        verb->require_subcommand(1);
    else
        verb->callback([&session, action = std::move(action)] {
            if (!session.action) // that of a command below it stands
                session.action = action;
        });
    return *verb;
}

QList<QUrl> fileUrls(const std::vector<std::string> &files) {
    QList<QUrl> urls;
    for (const std::string &file : files)
        urls << QUrl::fromLocalFile(QFileInfo(QString::fromStdString(file)).absoluteFilePath());
    return urls;
}

std::span<const AddCommand> allCommands() {
    static constexpr AddCommand kCommands[] = {
        addDoctorCommand,       addDevicesCommand,  addDriverCommand, addRecordCommand,  addRecordScreenCommand,
        addRecordCameraCommand, addSettingsCommand, addTasksCommand,  addHotkeysCommand, addLangCommand,
        addLibraryCommand,      addControlCommands, addUpdateCommand, addTagsCommand,    addInfoCommand,
        addConvertCommand,      addIdentifyCommand, addWaveCommand,   addEditCommand};
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

void printProposals(const QStringList &words, std::span<const AddCommand> commands) {
    CommandSession session;
    CLI::App root;
    composeCommandLine(root, session, commands);
    std::vector<std::string> typed;
    for (const QString &word : words)
        typed.push_back(word.toStdString());
    for (const Proposal &proposal : proposals(root, typed))
        std::printf("%s\t%s\n", proposal.word.c_str(), proposal.description.c_str());
}

int runCommandLine(const QStringList &arguments, std::span<const AddCommand> commands) {
    CommandSession session;
    CLI::App root;
    composeCommandLine(root, session, commands);

    std::vector<std::string> reversed; // the order in which CLI11 takes them
    for (const QString &argument : arguments) {
        // CLI11 would take the next argument for a value that is empty.
        const bool isEmptyValue = argument.startsWith(QLatin1String("--")) && argument.endsWith(QLatin1Char('='))
                                  && argument.count(QLatin1Char('=')) == 1;
        reversed.push_back(argument.chopped(isEmptyValue ? 1 : 0).toStdString());
        if (isEmptyValue)
            reversed.emplace_back();
    }
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

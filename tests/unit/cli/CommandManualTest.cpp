#include "cli/CommandManual.h"

#include "cli/CommandSession.h"
#include "cli/CommandTable.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

namespace cantorel::test {
namespace {

struct CommandManualTest : testing::Test {
    CommandManualTest() { composeCommandLine(root, session, allCommands()); }
    CommandSession session;
    CLI::App root;
};

// What troff makes "\-" of is the minus of the program.
std::string printed(const std::string &page) { return CLI::detail::find_and_replace(page, "\\-", "-"); }

void expectAll(const CLI::App &command, const std::string &page) {
    EXPECT_NE(page.find(command.get_description()), std::string::npos) << command.get_name();
    for (const CLI::Option *option : command.get_options())
        EXPECT_NE(page.find(option->get_description()), std::string::npos) << option->get_name();
    for (const CLI::App *below : command.get_subcommands([](const CLI::App *) { return true; }))
        expectAll(*below, page);
}

TEST_F(CommandManualTest, ThePageHasEveryCommandAndOption) {
    const std::string page = printed(manualPage(root));
    expectAll(root, page);
    EXPECT_NE(page.find(".SS tasks add\n"), std::string::npos);
    EXPECT_NE(page.find("\\fB--source\\fR \\fIsystem|mic|both\\fR"), std::string::npos);
    EXPECT_NE(page.find("\\fIKEY\\fR"), std::string::npos);
}

TEST_F(CommandManualTest, TextIsNeverTakenForARequestOfThePage) {
    CLI::App odd(".TH at the start", "odd");
    odd.add_subcommand("one", "'quoted' and a \\ backslash");
    const std::string page = manualPage(odd);
    EXPECT_NE(page.find("\n\\&.TH at the start\n"), std::string::npos);
    EXPECT_NE(page.find("\n\\&'quoted' and a \\e backslash.\n"), std::string::npos);
}

struct Line {
    const char *typed;    // the last word is the one that is completed
    const char *proposed; // in the order of the table
};

void PrintTo(const Line &line, std::ostream *stream) { *stream << line.typed; }

// Each shell runs the completion that is installed, which asks the program that was built.
class CompletionTest : public testing::TestWithParam<Line> {
protected:
    // What the script prints: in it $1 is the completion's file, $2 what is typed, its words parted by '|'.
    static QStringList printed(const char *shell, const char *file, const QStringList &options, const QString &script) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PATH"),
                           QFileInfo(QStringLiteral(CANTOREL_CLI)).path() + ":" + environment.value("PATH"));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(QDir::homePath() + QStringLiteral("/empty"));
        QDir().mkpath(process.workingDirectory()); // no files are proposed
        const QString completion = QStringLiteral(CANTOREL_COMPLETIONS "/") + QLatin1String(file);
        process.start(shell, options + QStringList{"-c", script, completion, GetParam().typed});
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.readAllStandardError().toStdString(), "");
        return QString::fromUtf8(process.readAllStandardOutput()).simplified().split(QLatin1Char(' '));
    }
    static QStringList expected() { return QString::fromLatin1(GetParam().proposed).split(QLatin1Char(' ')); }
};

TEST_P(CompletionTest, ProposesWhatMayStandThere) {
    EXPECT_EQ(printed("bash", "cantorel-cli", {},
                      "IFS='|' COMP_WORDS=($1) COMP_CWORD=$(( ${#COMP_WORDS[@]} - 1 )); IFS=$' \\t\\n'\n"
                      "[ \"${COMP_WORDS[COMP_CWORD]}\" != _ ] || COMP_WORDS[COMP_CWORD]=\n"
                      ". \"$0\"; _cantorel_cli; printf '%s ' \"${COMPREPLY[@]}\""),
              expected());
}

// zsh's own completer is played: what it would be told is printed.
TEST_P(CompletionTest, ProposesTheSameInZsh) {
    EXPECT_EQ(printed("zsh", "_cantorel-cli", {"-f"},
                      "words=(\"${(@s:|:)1}\"); CURRENT=${#words}\n"
                      "[[ $words[CURRENT] != _ ]] || words[CURRENT]=\n"
                      "_describe() { print -rn -- ${${(P)3}%%:*}; }; _files() { :; }\n"
                      ". \"$0\""),
              expected());
}

TEST_P(CompletionTest, ProposesTheSameInFish) {
    QStringList sorted = expected();
    sorted.sort(); // as fish does
    EXPECT_EQ(
        printed("fish", "cantorel-cli.fish", {"--no-config"},
                "source $argv[1]; set -l typed (string replace -r '[|]_$' '|' $argv[2] | string replace -a '|' ' ')\n"
                "complete -C \"$typed\" | string replace -r '\\t.*' ''"),
        sorted);
}

// "_" stands for a word of which nothing is typed yet.
INSTANTIATE_TEST_SUITE_P(, CompletionTest,
                         testing::Values(Line{"cantorel-cli|dev", "devices"}, Line{"cantorel-cli|--js", "--json"},
                                         Line{"cantorel-cli|tasks|ru", "run"},
                                         Line{"cantorel-cli|record|--source|_", "system mic both"},
                                         Line{"cantorel-cli|record|--source|b", "both"},
                                         Line{"cantorel-cli|record|--folder|_", ""},
                                         Line{"cantorel-cli|--backend|embedded|dri", "driver"},
                                         Line{"cantorel-cli|record|--backend|e", "embedded"},
                                         Line{"cantorel-cli|record|--name|stop|--split-s", "--split-silence"},
                                         Line{"cantorel-cli|record|--sourc", "--source"},
                                         Line{"cantorel-cli|tasks|add|--name|run|--dai", "--daily"},
                                         Line{"cantorel-cli|nonsense|dev", "devices"}));

} // namespace
} // namespace cantorel::test

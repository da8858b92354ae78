#include "cli/CommandManual.h"

#include "cli/CommandSession.h"
#include "cli/CommandTable.h"

#include <QDir>
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

class CompletionTest : public CommandManualTest, public testing::WithParamInterface<Line> {};

TEST_P(CompletionTest, ProposesWhatMayStandThere) {
    const QString script =
        QString::fromStdString(bashCompletion(root))
        + QStringLiteral("\nIFS=$'|' COMP_WORDS=($1) COMP_CWORD=$(( ${#COMP_WORDS[@]} - 1 ))\n"
                         "IFS=$' \\t\\n'; [ \"${COMP_WORDS[COMP_CWORD]}\" != _ ] || COMP_WORDS[COMP_CWORD]=\n"
                         "_cantorel_cli; printf %s \"${COMPREPLY[*]}\"");
    QProcess bash;
    bash.start("bash", {"-c", script, "bash", GetParam().typed});
    ASSERT_TRUE(bash.waitForFinished());
    EXPECT_EQ(bash.readAllStandardError().toStdString(), "");
    EXPECT_EQ(bash.readAllStandardOutput().toStdString(), GetParam().proposed);
}

// zsh's own completer is played: what it would be told is printed, and narrowed to what is typed.
TEST_P(CompletionTest, ProposesTheSameInZsh) {
    const QString script = QStringLiteral("words=(\"${(@s:|:)1}\"); CURRENT=${#words}\n"
                                          "[[ $words[CURRENT] != _ ]] || words[CURRENT]=\n"
                                          "show() { local w; local -a all\n"
                                          "  for w; do [[ $w != $words[CURRENT]* ]] || all+=($w); done\n"
                                          "  print -rn -- $all; }\n"
                                          "compadd() { show ${@:2}; }\n"
                                          "_describe() { show ${${(P)3}%%:*}; }\n"
                                          "_files() { :; }\n")
                           + QString::fromStdString(zshCompletion(root));
    QProcess zsh;
    zsh.start("zsh", {"-f", "-c", script, "zsh", GetParam().typed});
    ASSERT_TRUE(zsh.waitForFinished());
    EXPECT_EQ(zsh.readAllStandardError().toStdString(), "");
    EXPECT_EQ(zsh.readAllStandardOutput().toStdString(), GetParam().proposed);
}

TEST_P(CompletionTest, ProposesTheSameInFish) {
    QStringList typed = QString::fromLatin1(GetParam().typed).split('|');
    if (typed.last() == "_")
        typed.last().clear();
    const QString script =
        QString::fromStdString(fishCompletion(root)) + "complete -C \"$argv[1]\" | string replace -r '\\t.*' ''\n";
    QProcess fish;
    fish.setWorkingDirectory(QDir::homePath() + "/empty");
    QDir().mkpath(fish.workingDirectory()); // No files are proposed.
    fish.start("fish", {"--no-config", "-c", script, typed.join(' ')});
    ASSERT_TRUE(fish.waitForFinished());
    EXPECT_EQ(fish.readAllStandardError().toStdString(), "");
    QStringList proposed = QString::fromUtf8(fish.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    QStringList expected = QString::fromLatin1(GetParam().proposed).split(' ', Qt::SkipEmptyParts);
    proposed.sort(); // as fish does
    expected.sort();
    EXPECT_EQ(proposed, expected) << proposed.join(' ').toStdString();
}

// "_" stands for a word of which nothing is typed yet.
INSTANTIATE_TEST_SUITE_P(, CompletionTest,
                         testing::Values(Line{"cantorel-cli|dev", "devices"}, Line{"cantorel-cli|--js", "--json"},
                                         Line{"cantorel-cli|tasks|ru", "run"},
                                         Line{"cantorel-cli|record|--source|_", "system mic both"},
                                         Line{"cantorel-cli|record|--source|b", "both"},
                                         Line{"cantorel-cli|record|--folder|_", ""},
                                         Line{"cantorel-cli|--backend|embedded|reco", "record"},
                                         Line{"cantorel-cli|record|--backend|e", "embedded"},
                                         Line{"cantorel-cli|record|--name|stop|--split-s", "--split-silence"},
                                         Line{"cantorel-cli|record|--sourc", "--source"},
                                         Line{"cantorel-cli|tasks|add|--name|run|--dai", "--daily"},
                                         Line{"cantorel-cli|nonsense|dev", "devices"}));

} // namespace
} // namespace cantorel::test

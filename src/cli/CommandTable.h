#pragma once

#include "cli/CommandSession.h"

#include <QStringList>

#include <span>

namespace CLI {
class App;
}

namespace cantorel {

// Adds one command with its options and its example to the command line, and has it set the session's action when it
// is chosen. The session outlives the command line.
using AddCommand = void (*)(CLI::App &root, CommandSession &session);

// All commands of the program; one file each.
std::span<const AddCommand> allCommands();

// Makes the root the whole command line: its name, the common options and the commands. The session outlives the root.
void composeCommandLine(CLI::App &root, CommandSession &session, std::span<const AddCommand> commands);

// Prints what may stand where the last of the words stands, for the shells' completion: a line each, with what it is
// for behind a tab.
void printProposals(const QStringList &words, std::span<const AddCommand> commands);

// Reads the arguments (without the program's name), runs the command, and answers the exit status. When it fails, the
// last line on the console is the sentence that says why.
int runCommandLine(const QStringList &arguments, std::span<const AddCommand> commands);

} // namespace cantorel

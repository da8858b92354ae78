// Writes the manual page and the shells' completions of the command line; run by the build.
// usage: write_manual PAGE BASH ZSH FISH

#include "cli/CommandManual.h"
#include "cli/CommandSession.h"
#include "cli/CommandTable.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>

int main(int argc, char **argv) {
    using namespace cantorel;
    if (argc != 5) {
        std::fputs("usage: write_manual PAGE BASH ZSH FISH\n", stderr);
        return 2;
    }
    CommandSession session;
    CLI::App root;
    composeCommandLine(root, session, allCommands());
    const std::string texts[] = {manualPage(root), bashCompletion(root), zshCompletion(root), fishCompletion(root)};
    for (const std::string &text : texts) {
        std::ofstream file(*++argv);
        file << text << std::flush;
        if (!file)
            return 1;
    }
    return 0;
}

// Writes the manual page of the command line; run by the build.
// usage: write_manual PAGE

#include "cli/CommandManual.h"
#include "cli/CommandSession.h"
#include "cli/CommandTable.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>

int main(int argc, char **argv) {
    using namespace cantorel;
    if (argc != 2) {
        std::fputs("usage: write_manual PAGE\n", stderr);
        return 2;
    }
    CommandSession session;
    CLI::App root;
    composeCommandLine(root, session, allCommands());
    std::ofstream file(argv[1]);
    file << manualPage(root) << std::flush;
    return file ? 0 : 1;
}

// Writes the manual page and the shell's completion of the command line; run by the build.
// usage: write_manual PAGE COMPLETION

#include "cli/CommandManual.h"
#include "cli/CommandSession.h"
#include "cli/CommandTable.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>

int main(int argc, char **argv) {
    using namespace cantorel;
    if (argc != 3) {
        std::fputs("usage: write_manual PAGE COMPLETION\n", stderr);
        return 2;
    }
    CommandSession session;
    CLI::App root;
    composeCommandLine(root, session, allCommands());
    std::ofstream page(argv[1]), completion(argv[2]);
    page << manualPage(root) << std::flush;
    completion << bashCompletion(root) << std::flush;
    return page && completion ? 0 : 1;
}

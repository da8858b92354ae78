#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cantorel {

// What a command line tells of itself: commands, options, choices and examples. The command line is only read.

// A manual page of section 1 for man.
std::string manualPage(const CLI::App &root);

struct Proposal {
    std::string word;
    std::string description; // empty for a value
};

// What may stand where the last of the typed words stands (the program's name is none of them) and begins as it does.
// Nothing where the value may be anything, as a file.
std::vector<Proposal> proposals(const CLI::App &root, std::vector<std::string> typed);

} // namespace cantorel

#pragma once

#include <string>

namespace CLI {
class App;
}

namespace cantorel {

// What is written of a command line for its readers and its shell, from the command line itself: commands, options,
// choices and examples. The command line is only read.

// A manual page of section 1 for man.
std::string manualPage(const CLI::App &root);

// A completion for bash: commands, options, and the values of options that have a choice; files elsewhere.
std::string bashCompletion(const CLI::App &root);

} // namespace cantorel

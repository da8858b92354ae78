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

// A completion for a shell: commands, options, and the values of options that have a choice; files elsewhere. Those for
// zsh and fish say what each is for.
std::string bashCompletion(const CLI::App &root);
std::string zshCompletion(const CLI::App &root);
std::string fishCompletion(const CLI::App &root);

} // namespace cantorel

#include "cli/CommandManual.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <sstream>
#include <vector>

namespace cantorel {

namespace {

std::vector<const CLI::App *> commandsOf(const CLI::App &command) {
    return command.get_subcommands([](const CLI::App *each) { return !each->get_name().empty(); });
}

// Every command and what stands below it, with the words that lead to it, as "tasks add".
using Visit = std::function<void(const CLI::App &command, const std::string &words)>;
void visitCommands(const CLI::App &above, const std::string &wordsAbove, const Visit &visit) {
    for (const CLI::App *command : commandsOf(above)) {
        const std::string words = wordsAbove.empty() ? command->get_name() : wordsAbove + ' ' + command->get_name();
        visit(*command, words);
        visitCommands(*command, words, visit);
    }
}

bool isHelp(const CLI::Option &option) { return option.check_name("--help"); }
bool takesValue(const CLI::Option &option) { return option.get_items_expected_max() > 0; }

std::vector<std::string> optionNames(const CLI::Option &option) {
    std::vector<std::string> names;
    for (const std::string &name : option.get_snames())
        names.push_back('-' + name);
    for (const std::string &name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

// The values that an option may have, from "TEXT:{on,off}"; none where it takes others too.
std::vector<std::string> choicesOf(const CLI::Option &option) {
    const std::string type = option.get_type_name();
    const auto begin = type.find('{');
    const auto end = type.find('}');
    if (!takesValue(option) || begin == std::string::npos || end == std::string::npos || end < begin)
        return {};
    return CLI::detail::split(type.substr(begin + 1, end - begin - 1), ',');
}

std::string joined(const std::vector<std::string> &words, const std::string &between) {
    return CLI::detail::join(words, between);
}

// Text as troff prints it: a minus that can be copied, and no line that is taken for a request.
std::string troff(const std::string &text) {
    std::string escaped;
    for (const char c : text) {
        if ((c == '.' || c == '\'') && (escaped.empty() || escaped.back() == '\n'))
            escaped += "\\&";
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else
            escaped += c;
    }
    return escaped;
}

std::string valueOf(const CLI::Option &option) {
    if (const auto choices = choicesOf(option); !choices.empty())
        return joined(choices, "|");
    const std::string type = option.get_type_name();
    return type.substr(0, type.find(':'));
}

// "--format INT", the name bold and the value slanted.
std::string heading(const CLI::Option &option) {
    if (option.get_positional())
        return "\\fI" + troff(option.get_name(true)) + "\\fR";
    std::vector<std::string> names;
    for (const std::string &name : optionNames(option))
        names.push_back("\\fB" + troff(name) + "\\fR");
    return joined(names, ", ") + (takesValue(option) ? " \\fI" + troff(valueOf(option)) + "\\fR" : std::string());
}

void writeOptions(std::ostream &page, const CLI::App &command, bool withHelp) {
    for (const CLI::Option *option : command.get_options()) {
        if (isHelp(*option) && !withHelp)
            continue;
        page << ".TP\n" << heading(*option) << '\n' << troff(option->get_description());
        if (option->get_required() && !option->get_positional())
            page << " (required)";
        page << '\n';
    }
}

void writeExample(std::ostream &page, const CLI::App &command) {
    const std::string footer = command.get_footer();
    const std::string lead = "Example: ";
    if (footer.rfind(lead, 0) == 0)
        page << ".PP\n.EX\n" << troff(footer.substr(lead.size())) << "\n.EE\n";
}

std::vector<std::string> namesBelow(const CLI::App &command) {
    std::vector<std::string> names;
    for (const CLI::App *below : commandsOf(command))
        names.push_back(below->get_name());
    return names;
}

std::vector<std::string> wordsBehind(const CLI::App &command) {
    std::vector<std::string> words = namesBelow(command);
    for (const CLI::Option *option : command.get_options())
        for (const std::string &name : optionNames(*option))
            words.push_back(name);
    return words;
}

// The cases in which the word before is an option that takes a value: its choices, else what the shell itself offers.
void writeValueCases(std::ostream &script, const CLI::App &command, const std::string &before) {
    for (const CLI::Option *option : command.get_options()) {
        if (!takesValue(*option) || option->get_positional())
            continue;
        for (const std::string &name : optionNames(*option)) {
            script << "        " << before << name << "\") ";
            if (const auto choices = choicesOf(*option); !choices.empty())
                script << "COMPREPLY=($(compgen -W \"" << joined(choices, " ") << "\" -- \"$word\")); ";
            script << "return ;;\n";
        }
    }
}

// A text as one word of a shell.
std::string quoted(const std::string &text) { return '\'' + CLI::detail::find_and_replace(text, "'", "'\\''") + '\''; }

std::vector<const CLI::Option *> optionsOf(const CLI::App &command) {
    return command.get_options([](const CLI::Option *option) { return !option->get_positional(); });
}

// Every path of commands as a shell's word, "tasks add" among them.
std::vector<std::string> pathsOf(const CLI::App &root) {
    std::vector<std::string> paths;
    visitCommands(root, {}, [&](const CLI::App &, const std::string &path) { paths.push_back(path); });
    return paths;
}

// "'word:description'", as zsh describes what it proposes.
std::string described(const std::string &word, const std::string &description) {
    const auto escaped = [](const std::string &text) { return CLI::detail::find_and_replace(text, ":", "\\:"); };
    return quoted(escaped(word) + ':' + escaped(description));
}

std::string describedOptions(const CLI::App &command) {
    std::string words;
    for (const CLI::Option *option : optionsOf(command))
        for (const std::string &name : optionNames(*option))
            words += ' ' + described(name, option->get_description());
    return words;
}

std::string describedCommands(const CLI::App &command) {
    std::string words;
    for (const CLI::App *below : commandsOf(command))
        words += ' ' + described(below->get_name(), below->get_description());
    return words;
}

// The cases of zsh in which the word before is an option that takes a value.
void writeZshValues(std::ostream &script, const CLI::App &command, const std::string &before) {
    for (const CLI::Option *option : optionsOf(command)) {
        if (!takesValue(*option))
            continue;
        const auto choices = choicesOf(*option);
        for (const std::string &name : optionNames(*option))
            script << "    " << before << name << "\") "
                   << (choices.empty() ? std::string("_files") : "compadd -- " + joined(choices, " "))
                   << "; return ;;\n";
    }
}

// One line of fish for each option of a command, at its path or, for the common ones, everywhere.
void writeFishOptions(std::ostream &script, const CLI::App &command, const std::string &condition) {
    for (const CLI::Option *option : optionsOf(command)) {
        script << "complete -c cantorel-cli" << condition;
        for (const std::string &name : option->get_snames())
            script << " -s " << name;
        for (const std::string &name : option->get_lnames())
            script << " -l " << name;
        if (const auto choices = choicesOf(*option); !choices.empty())
            script << " -x -a " << quoted(joined(choices, " "));
        else if (takesValue(*option))
            script << " -r -F";
        script << " -d " << quoted(option->get_description()) << '\n';
    }
}

void writeFishCommands(std::ostream &script, const CLI::App &command, const std::string &condition) {
    for (const CLI::App *below : commandsOf(command))
        script << "complete -c cantorel-cli" << condition << " -a " << below->get_name() << " -d "
               << quoted(below->get_description()) << '\n';
}

} // namespace

std::string manualPage(const CLI::App &root) {
    const std::string &name = root.get_name();
    std::string title = name;
    for (char &c : title)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    std::ostringstream page;
    page << ".TH " << title << " 1 \"\" \"" << root.version() << "\" \"User Commands\"\n"
         << ".SH NAME\n"
         << troff(name) << " \\- record and control recordings from the command line\n"
         << ".SH SYNOPSIS\n\\fB" << troff(name) << "\\fR [\\fIoptions\\fR] \\fIcommand\\fR [\\fIoptions\\fR]\n"
         << ".SH DESCRIPTION\n"
         << troff(root.get_description()) << '\n'
         << ".SH COMMON OPTIONS\nThey may stand before the command and behind it.\n";
    writeOptions(page, root, true);
    page << ".SH COMMANDS\n";
    visitCommands(root, {}, [&page](const CLI::App &command, const std::string &words) {
        page << ".SS " << troff(words) << '\n' << troff(command.get_description()) << ".\n";
        writeOptions(page, command, false);
        writeExample(page, command);
    });
    page
        << ".SH EXIT STATUS\n"
           "0 when it was done, 1 when it failed, 2 when the command line was not understood. The last line then says\n"
           "why and what to do.\n"
           ".SH SEE ALSO\n.BR cantorel (1)\n";
    return page.str();
}

std::string bashCompletion(const CLI::App &root) {
    std::ostringstream values, words;
    std::vector<std::string> paths;
    writeValueCases(values, root, "*\" "); // the common options may stand anywhere
    visitCommands(root, {}, [&](const CLI::App &command, const std::string &path) {
        writeValueCases(values, command, "\" " + path + " ");
        paths.push_back("\" " + path + "\"");
        words << "        \" " << path << "\") words=\"" << joined(wordsBehind(command), " ") << "\" ;;\n";
    });
    std::vector<std::string> common;
    for (const CLI::Option *option : root.get_options())
        if (!isHelp(*option))
            for (const std::string &name : optionNames(*option))
                common.push_back(name);

    std::ostringstream script;
    script << "# Completion of " << root.get_name() << " for bash, written by the build from the table of commands.\n"
           << "_cantorel_cli() {\n"
              "    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} path= words= i\n"
              "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
              "        case \"$path ${COMP_WORDS[i]}\" in\n"
              "        "
           << joined(paths, " | ")
           << ") path=\"$path ${COMP_WORDS[i]}\" ;;\n"
              "        esac\n"
              "    done\n"
              "    case \"$path $previous\" in\n"
           << values.str()
           << "    esac\n"
              "    case \"$path\" in\n"
              "        \"\") words=\""
           << joined(namesBelow(root), " ") << " --help\" ;;\n"
           << words.str()
           << "    esac\n"
              "    COMPREPLY=($(compgen -W \"$words "
           << joined(common, " ")
           << "\" -- \"$word\"))\n"
              "}\n"
              "complete -o default -F _cantorel_cli "
           << root.get_name() << '\n';
    return script.str();
}

std::string zshCompletion(const CLI::App &root) {
    std::ostringstream values, words;
    std::vector<std::string> paths;
    for (const std::string &path : pathsOf(root))
        paths.push_back("\" " + path + '"');
    writeZshValues(values, root, "*\" "); // the common options may stand anywhere
    visitCommands(root, {}, [&](const CLI::App &command, const std::string &path) {
        writeZshValues(values, command, "\" " + path + " ");
        words << "    \" " << path << "\") proposed=(" << describedCommands(command) << describedOptions(command)
              << " ) ;;\n";
    });
    std::ostringstream script;
    script << "#compdef " << root.get_name()
           << "\n# Completion for zsh, written by the build from the table of commands.\n"
              "_cantorel_cli() {\n"
              "    local at= before=${words[CURRENT-1]} i\n" // "path" is zsh's own
              "    local -a proposed\n"
              "    for ((i = 2; i < CURRENT; i++)); do\n"
              "        case \"$at ${words[i]}\" in\n        "
           << joined(paths, " | ")
           << ") at+=\" ${words[i]}\" ;;\n"
              "        esac\n"
              "    done\n"
              "    case \"$at $before\" in\n"
           << values.str()
           << "    esac\n"
              "    case \"$at\" in\n    \"\") proposed=("
           << describedCommands(root) << " ) ;;\n"
           << words.str() << "    esac\n    proposed+=(" << describedOptions(root)
           << " )\n"
              "    _describe -o 'cantorel-cli' proposed || _files\n"
              "}\n"
              "_cantorel_cli \"$@\"\n";
    return script.str();
}

std::string fishCompletion(const CLI::App &root) {
    const auto at = [](const std::string &path) { return " -n '__cantorel_cli_at \"" + path + "\"'"; };
    std::vector<std::string> paths;
    for (const std::string &path : pathsOf(root))
        paths.push_back(quoted(path));
    std::ostringstream script;
    script << "# Completion of " << root.get_name()
           << " for fish, written by the build from the table of commands.\n"
              "function __cantorel_cli_at --description 'Whether these commands have been typed'\n"
              "    set -l at\n"
              "    for word in (commandline -opc)[2..-1]\n"
              "        if contains -- \"$at $word\" "
           <<
        [&paths] {
            std::string all;
            for (const std::string &path : paths)
                all += "\\\n            ' " + path.substr(1) + ' ';
            return all;
        }()
           << "\n            set at \"$at $word\"\n"
              "        end\n"
              "    end\n"
              "    test (string trim -- \"$at\") = \"$argv[1]\"\n"
              "end\n";
    writeFishOptions(script, root, {});
    writeFishCommands(script, root, at({}) + " -f");
    visitCommands(root, {}, [&](const CLI::App &command, const std::string &path) {
        writeFishCommands(script, command, at(path) + " -f");
        writeFishOptions(script, command, at(path));
    });
    return script.str();
}

} // namespace cantorel

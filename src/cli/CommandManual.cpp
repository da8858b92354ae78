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

} // namespace cantorel

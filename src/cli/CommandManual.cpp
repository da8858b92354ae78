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

const CLI::App *commandNamed(const CLI::App &above, const std::string &name) {
    for (const CLI::App *command : commandsOf(above))
        if (command->get_name() == name)
            return command;
    return nullptr;
}

// Of the command, or one of those that may stand anywhere.
const CLI::Option *optionNamed(const CLI::App &root, const CLI::App &command, const std::string &name) {
    for (const CLI::App *app : {&command, &root})
        for (const CLI::Option *option : app->get_options())
            if (!option->get_positional() && option->check_name(name))
                return option;
    return nullptr;
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

std::vector<Proposal> proposals(const CLI::App &root, std::vector<std::string> typed) {
    const std::string last = typed.empty() ? std::string() : typed.back();
    if (!typed.empty())
        typed.pop_back();
    const CLI::App *command = &root;
    const CLI::Option *asksForValue = nullptr; // the option just before
    for (const std::string &word : typed) {
        const CLI::Option *option = asksForValue != nullptr ? nullptr : optionNamed(root, *command, word);
        if (const CLI::App *below = commandNamed(*command, word); below != nullptr && asksForValue == nullptr)
            command = below;
        asksForValue = option != nullptr && takesValue(*option) ? option : nullptr;
    }

    std::vector<Proposal> found;
    const auto propose = [&](const std::string &word, const std::string &description) {
        if (word.rfind(last, 0) == 0)
            found.push_back({word, description});
    };
    if (asksForValue != nullptr) {
        for (const std::string &choice : choicesOf(*asksForValue))
            propose(choice, {});
        return found;
    }
    for (const CLI::App *below : commandsOf(*command))
        propose(below->get_name(), below->get_description());
    for (const CLI::Option *option : command->get_options())
        for (const std::string &name : optionNames(*option))
            propose(name, option->get_description());
    for (const CLI::Option *option : root.get_options())
        if (command != &root && !isHelp(*option)) // every command has its own
            for (const std::string &name : optionNames(*option))
                propose(name, option->get_description());
    return found;
}

} // namespace cantorel

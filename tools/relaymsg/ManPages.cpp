/// @file
/// Writes the man pages, one for the tool and one for each of its commands, from what `--help` prints:
///
///     relaymsg_man DIRECTORY
#include "tools/relaymsg/CommandLine.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>

namespace {

/// Text as the formatter reads it.
std::string quoted(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
    }
    const bool request = !result.empty() && (result[0] == '.' || result[0] == '\'');
    return request ? "\\&" + result : result;
}

std::string bold(const std::string& text) {
    return "\\fB" + quoted(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + quoted(text) + "\\fR";
}

std::string upper(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

std::string lowerFirst(std::string text) {
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    while (text.back() == '.') {
        text.pop_back();
    }
    return text;
}

/// The options and arguments, those of groups included.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
    std::vector<const CLI::Option*> options = app.get_options();
    for (const CLI::App* group : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (group->get_name().empty()) {
            const auto more = group->get_options();
            options.insert(options.end(), more.begin(), more.end());
        }
    }
    return options;
}

std::string optionPages(const CLI::App& app) {
    std::string text;
    for (const CLI::Option* option : optionsOf(app)) {
        const bool positional = option->get_positional();
        text += ".TP\n" + (positional ? italic(option->get_name()) : bold(option->get_name(false, true)));
        const std::string value = option->get_type_name();
        if (!positional && option->get_type_size() != 0 && !value.empty()) {
            text += ' ' + italic(value);
        }
        text += '\n' + quoted(option->get_description()) + '\n';
    }
    return text;
}

/// What --help says behind the options, in sections: before those of the page, and behind them.
struct Prose {
    std::string description;
    std::string rest;
};

Prose proseOf(const std::string& footer) {
    std::istringstream lines(footer);
    Prose prose{".SH DESCRIPTION\n", ""};
    std::string* to = &prose.description;
    bool begins = true;   // a section
    bool literal = false; // lines that are not filled
    bool ended = false;   // a paragraph
    for (std::string line; std::getline(lines, line);) {
        const bool indented = line.substr(0, 2) == "  ";
        if (literal && !indented) {
            *to += ".fi\n.RE\n";
            ended = true;
        }
        if (line == "Example:" || line == "Examples:" || line == "Exit status:") {
            to = &prose.rest;
            *to += ".SH " + upper(line.substr(0, line.size() - 1)) + '\n';
            begins = true;
        } else if (line.empty()) {
            ended = true;
        } else {
            *to += (ended || (indented && !literal)) && !begins ? ".PP\n" : "";
            *to += indented && !literal ? ".RS\n.nf\n" : "";
            *to += quoted(indented ? line.substr(2) : line) + '\n';
            ended = false;
            begins = false;
        }
        literal = indented;
    }
    *to += literal ? ".fi\n.RE\n" : "";
    if (prose.description.find('\n') + 1 == prose.description.size()) {
        prose.description.clear();
    }
    return prose;
}

std::string page(const CLI::App& app, const std::string& name, const std::string& seeAlso) {
    std::string command = name;
    std::replace(command.begin(), command.end(), '-', ' ');
    std::string text = ".\\\" Made by relaymsg_man from what --help prints.\n.TH " + upper(name) +
                       " 1 \"\" relaymsg \"User Commands\"\n.SH NAME\n" + quoted(name) + " \\- " +
                       quoted(lowerFirst(app.get_description())) + "\n.SH SYNOPSIS\n" + bold(command);
    text += app.get_parent() == nullptr ? ' ' + italic("COMMAND") : "";
    text += " [" + italic("OPTION") + "]...";
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional()) {
            const std::string argument = italic(option->get_name());
            text += option->get_required() ? ' ' + argument : " [" + argument + ']';
        }
    }
    text += '\n';
    const Prose prose = proseOf(app.get_footer());
    std::string options = ".SH OPTIONS\n" + optionPages(app);
    if (app.get_parent() == nullptr) {
        options += ".SH COMMANDS\n";
        for (const CLI::App* sub : app.get_subcommands([](const CLI::App*) { return true; })) {
            options += ".TP\n" + bold(sub->get_name()) + '\n' + quoted(sub->get_description()) + '\n';
        }
    }
    return text + prose.description + options + prose.rest + ".SH SEE ALSO\n" + seeAlso + '\n';
}

std::string reference(const std::string& name) {
    return bold(name) + "(1)";
}

bool write(const std::string& directory, const std::string& name, const std::string& text) {
    const std::string path = directory + '/' + name + ".1";
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) {
        std::cerr << path << " cannot be written\n";
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::cerr << "usage: relaymsg_man DIRECTORY\n";
        return 1;
    }
    CLI::App app;
    relaymsg::ExitStatus status{};
    relaymsg::addAll(app, status);
    std::string all;
    bool written = true;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        const std::string name = "relaymsg-" + command->get_name();
        all += (all.empty() ? "" : ", ") + reference(name);
        written = write(argv[1], name, page(*command, name, reference("relaymsg"))) && written;
    }
    written = write(argv[1], "relaymsg", page(app, "relaymsg", all)) && written;
    return written ? 0 : 1;
} catch (const std::exception& error) {
    std::cerr << "relaymsg_man: " << error.what() << '\n';
    return 1;
}

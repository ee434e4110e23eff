/// @file
/// The man pages say what --help says, and a formatter takes them without a word.
#include "tests/tool/Program.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

namespace {

const std::vector<std::string> COMMANDS = {"", "decode", "encode", "new", "diff", "stats", "schema"};

std::string pageOf(const std::string& command) {
    return std::string(MAN_PAGES) + "/relaymsg" + (command.empty() ? "" : "-" + command) + ".1";
}

std::string helpOf(const std::string& command) {
    const Outcome help = command.empty() ? runTool({"--help"}) : runTool({command, "--help"});
    EXPECT_EQ(help.status, 0) << command;
    return help.out;
}

/// What @p pattern finds in each of the lines, its first group.
std::set<std::string> found(const std::string& text, const std::string& pattern) {
    std::set<std::string> all;
    std::istringstream lines(text);
    const std::regex expression(pattern);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_search(line, match, expression)) {
            all.insert(match[1]);
        }
    }
    return all;
}

/// The page as it is read, its markup left out.
std::string plain(std::string page) {
    page = std::regex_replace(page, std::regex(R"(\\f[BIR])"), "");
    page = std::regex_replace(page, std::regex(R"(\\-)"), "-");
    page = std::regex_replace(page, std::regex(R"(\\&)"), "");
    return std::regex_replace(page, std::regex(R"(\\e)"), "\\");
}

TEST(ManPages, areWhatTheirProgramWrites) {
    std::string directory = "/tmp/relaymsg_man_XXXXXX";
    ASSERT_NE(::mkdtemp(directory.data()), nullptr);
    EXPECT_EQ(runProgram({RELAYMSG_MAN, directory}).status, 0);
    size_t pages = 0;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        const std::string name = entry.path().filename();
        EXPECT_EQ(wire::file(entry.path()), wire::file(std::string(MAN_PAGES) + '/' + name)) << name;
        ++pages;
    }
    EXPECT_EQ(pages, COMMANDS.size());
    const auto committed = std::filesystem::directory_iterator(MAN_PAGES);
    EXPECT_EQ(static_cast<size_t>(std::distance(begin(committed), end(committed))), COMMANDS.size());
    std::filesystem::remove_all(directory);
}

TEST(ManPages, haveTheOptionsOfTheHelp) {
    for (const std::string& command : COMMANDS) {
        const std::set<std::string> inHelp = found(helpOf(command), R"(^ +(?:-\w,)?(--[a-z-]+)(?: |$))");
        const std::set<std::string> onPage =
            found(plain(wire::file(pageOf(command))), R"(^(?:-\w,)?(--[a-z-]+)(?: \S+)?$)");
        EXPECT_EQ(inHelp, onPage) << command;
        EXPECT_EQ(inHelp.count("--help"), 1u) << command;
    }
}

TEST(ManPages, haveTheCommandsOfTheHelp) {
    const std::string help = helpOf("");
    const std::set<std::string> inHelp = found(help.substr(help.find("Subcommands:")), R"(^  ([a-z]+)  )");
    EXPECT_EQ(inHelp, std::set<std::string>(COMMANDS.begin() + 1, COMMANDS.end()));
    const std::string page = plain(wire::file(pageOf("")));
    for (const std::string& command : inHelp) {
        EXPECT_NE(page.find("\n.TP\n" + command + '\n'), std::string::npos) << command;
        EXPECT_NE(page.find("relaymsg-" + command + "(1)"), std::string::npos) << command;
    }
}

TEST(ManPages, showTheExamplesAndTheWordsOfTheHelp) {
    for (const std::string& command : COMMANDS) {
        const std::string help = helpOf(command);
        const std::string page = plain(wire::file(pageOf(command)));
        EXPECT_NE(help.find("\nExample"), std::string::npos) << command;
        std::istringstream lines(help.substr(help.find("\nExample") + 1));
        size_t examples = 0;
        for (std::string line; std::getline(lines, line);) {
            const bool example = line.find("relaymsg") != std::string::npos && line.substr(0, 2) == "  ";
            examples += example ? 1u : 0u;
            EXPECT_TRUE(!example || page.find('\n' + line.substr(2) + '\n') != std::string::npos) << line;
        }
        EXPECT_GE(examples, 1u) << command;
    }
}

/// A formatter's complaints, none if it is not installed.
std::string complaints(const std::string& tool, const std::string& line) {
    if (shell("command -v " + tool).status != 0) {
        return "";
    }
    const Outcome outcome = shell(line);
    return outcome.err + (tool == "mandoc" ? outcome.out : "");
}

TEST(ManPages, areFormattedWithoutAWord) {
    for (const std::string& command : COMMANDS) {
        const std::string page = "'" + pageOf(command) + "'";
        EXPECT_EQ(complaints("man", "LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z " +
                                        page + " > /dev/null"),
                  "");
        EXPECT_EQ(complaints("mandoc", "mandoc -Tlint -Wwarning " + page), "");
    }
}

} // namespace

/// @file
/// Runs the tool as its user does.
#ifndef KORVAN_TESTS_TOOL_PROGRAM_H
#define KORVAN_TESTS_TOOL_PROGRAM_H

#include "tests/tool/Wire.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// A file of its own for one test, gone with this object.
class ScratchFile {
public:
    explicit ScratchFile(std::string_view content = "") {
        const int fd = ::mkstemp(path_.data());
        for (size_t at = 0; at < content.size();) {
            const ssize_t count = ::write(fd, content.data() + at, content.size() - at);
            if (count <= 0) {
                std::abort();
            }
            at += static_cast<size_t>(count);
        }
        ::close(fd);
    }
    ~ScratchFile() { ::unlink(path_.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& path() const { return path_; }
    std::string content() const { return wire::file(path_); }

private:
    std::string path_ = "/tmp/relaymsg_test_XXXXXX";
};

struct Outcome {
    int status; ///< the exit status, or -1 if it did not exit by itself
    std::string out;
    std::string err;
};

/// Runs @p program with @p input as its standard input.
inline Outcome runProgram(std::vector<std::string> command, std::string_view input = "") {
    const ScratchFile in(input);
    const ScratchFile out;
    const ScratchFile err;
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::open(in.path().c_str(), O_RDONLY), STDIN_FILENO);
        ::dup2(::open(out.path().c_str(), O_WRONLY), STDOUT_FILENO);
        ::dup2(::open(err.path().c_str(), O_WRONLY), STDERR_FILENO);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out.content(), err.content()};
}

/// Runs relaymsg.
inline Outcome runTool(std::vector<std::string> arguments, std::string_view input = "") {
    arguments.insert(arguments.begin(), RELAYMSG);
    return runProgram(std::move(arguments), input);
}

/// Runs a line of shell in which relaymsg is the tool, whatever its path holds.
inline Outcome shell(const std::string& line) {
    return runProgram({"/bin/sh", "-c", "relaymsg() { '" RELAYMSG "' \"$@\"; }; " + line});
}

#endif

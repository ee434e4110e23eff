/// @file
/// How fast the tool is beside a bare loop that reads and unpacks the same file:
///
///     tool_speed RELAYMSG SESSION [MIB] [ROUNDS]
///
/// Writes MIB (1024) of SESSION, a file of messages, over and over again, to a file in the directory that
/// TMPDIR names, and reads it once so that it is in the page cache. Then takes turns ROUNDS (5) times; the
/// best of each counts. Ends with 1 if a target is missed: `stats` at half the loop's speed, `decode
/// --summary` at 150 MB of output a second.
#include "protocol/cs_relay_msg.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using cs_relay_msg::CSRelayMsg;

[[noreturn]] void refuse(const std::string& why) {
    std::fprintf(stderr, "tool_speed: %s\n", why.c_str());
    std::exit(2);
}

class Seconds {
public:
    double count() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Reads the file piece by piece and unpacks each message: what every reader has to do, and nothing else.
size_t bareLoop(const std::string& path) {
    constexpr size_t READ_SIZE = 256 * 1024;
    static const auto message = std::make_unique<CSRelayMsg>();
    std::vector<char> buffer(CSRelayMsg::maxWireSize + READ_SIZE);
    const int fd = ::open(path.c_str(), O_RDONLY);
    size_t begin = 0;
    size_t end = 0;
    size_t messages = 0;
    for (ssize_t count; (count = ::read(fd, buffer.data() + end, READ_SIZE)) > 0;) {
        end += static_cast<size_t>(count);
        size_t used = 0;
        while (message->unpack(buffer.data() + begin, end - begin, &used) == cs_relay_msg::BIX_OK) {
            begin += used;
            ++messages;
        }
        std::memmove(buffer.data(), buffer.data() + begin, end - begin);
        end -= begin;
        begin = 0;
    }
    ::close(fd);
    return messages;
}

/// Runs the tool; returns the bytes that it printed, if they are to be counted.
size_t run(std::vector<std::string> command, bool countOutput) {
    int ends[2];
    if (::pipe(ends) != 0) {
        refuse("no pipe");
    }
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(countOutput ? ends[1] : ::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    ::close(ends[1]);
    size_t bytes = 0;
    std::vector<char> buffer(1 << 20);
    for (ssize_t count; (count = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
        bytes += static_cast<size_t>(count);
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        refuse(command[0] + ' ' + command[1] + " failed");
    }
    return bytes;
}

template <class Work>
void keepBest(double& best, Work work) {
    const Seconds seconds;
    work();
    best = std::min(best, seconds.count());
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        refuse("usage: tool_speed RELAYMSG SESSION [MIB] [ROUNDS]");
    }
    const std::string tool = argv[1];
    std::ifstream input(argv[2], std::ios::binary);
    const std::string session{std::istreambuf_iterator<char>(input), {}};
    const size_t size = (argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 1024) << 20;
    const unsigned long rounds = argc > 4 ? std::strtoul(argv[4], nullptr, 10) : 5;
    if (session.empty() || size == 0 || rounds == 0) {
        refuse("nothing to measure");
    }

    const char* const directory = std::getenv("TMPDIR");
    std::string path = std::string(directory != nullptr ? directory : "/tmp") + "/tool_speed_XXXXXX";
    const int fd = ::mkstemp(path.data());
    std::string block;
    while (block.size() < (1 << 20)) {
        block += session;
    }
    size_t bytes = 0;
    for (; bytes < size; bytes += block.size()) {
        if (::write(fd, block.data(), block.size()) != static_cast<ssize_t>(block.size())) {
            ::unlink(path.c_str());
            refuse(path + " cannot be written");
        }
    }
    ::close(fd);

    const size_t messages = bareLoop(path);
    const size_t printed = run({tool, "decode", "--summary", path}, true);
    double loop = 1e9;
    double stats = 1e9;
    double summary = 1e9;
    for (unsigned long round = 0; round < rounds; ++round) {
        keepBest(loop, [&] { bareLoop(path); });
        keepBest(stats, [&] { run({tool, "stats", path}, false); });
        keepBest(summary, [&] { run({tool, "decode", "--summary", path}, false); });
    }
    ::unlink(path.c_str());

    const double mb = static_cast<double>(bytes) / 1e6;
    const double outputRate = static_cast<double>(printed) / 1e6 / summary;
    const double ratio = loop / stats;
    std::printf("%zu messages, %.0f MB\n", messages, mb);
    std::printf("bare loop         %8.1f MB/s  %6.2f ns a message\n", mb / loop,
                loop * 1e9 / static_cast<double>(messages));
    std::printf("stats             %8.1f MB/s  %6.2f of the loop's speed (at least 0.50)\n", mb / stats,
                ratio);
    std::printf("decode --summary  %8.1f MB/s of output (at least 150)\n", outputRate);
    return ratio >= 0.5 && outputRate >= 150 ? 0 : 1;
}

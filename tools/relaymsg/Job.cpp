#include "tools/relaymsg/Job.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace relaymsg {

namespace {

void sayAlone(const std::string& text) {
    Output error(STDERR_FILENO);
    error.append("relaymsg: " + text);
    error.flush();
}

/// Prints what is left of @p out. Returns @p status unless that is impossible.
ExitStatus finish(Output& out, ExitStatus status) {
    out.flush();
    if (out.error() == EPIPE) { // its reader had enough
        return ExitStatus::Ok;
    }
    if (out.error() != 0) {
        sayAlone(std::string("the output cannot be written: ") + std::strerror(out.error()) + ".\n");
        return ExitStatus::Output;
    }
    return status;
}

} // namespace

Job::Job(const std::string& path) : file_(path), out_(STDOUT_FILENO) {
    file_.onWait([this] { out_.flush(); });
    file_.onProgress([this](uint64_t done, uint64_t total) { progress_.show(done, total); });
    out_.onWrite([this] { progress_.clear(); });
}

void Job::say(const std::string& text) {
    out_.flush();
    progress_.clear();
    sayAlone(text);
}

ExitStatus Job::end(ExitStatus status) {
    progress_.clear();
    return finish(out_, status);
}

ExitStatus print(std::string_view text) {
    Output out(STDOUT_FILENO);
    out.append(text);
    return finish(out, ExitStatus::Ok);
}

} // namespace relaymsg

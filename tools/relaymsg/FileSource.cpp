#include "tools/relaymsg/FileSource.h"

#include "tools/relaymsg/TextEscape.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace relaymsg {

FileSource::FileSource(const std::string& path) {
    const bool standardInput = path == "-";
    name_ = standardInput ? "standard input" : escaped(path);
    fd_ = standardInput ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat info {};
    if (fd_ < 0 || ::fstat(fd_, &info) != 0) {
        fail(std::string("cannot be opened: ") + std::strerror(errno) + ".");
    } else if (S_ISDIR(info.st_mode)) {
        fail("is a directory, not a recorded stream.");
    } else if (S_ISREG(info.st_mode)) {
        size_ = static_cast<uint64_t>(info.st_size);
    }
}

FileSource::~FileSource() {
    if (fd_ > STDIN_FILENO) {
        ::close(fd_);
    }
}

bool FileSource::wouldWait() const {
    pollfd ready{fd_, POLLIN, 0};
    return ::poll(&ready, 1, 0) == 0;
}

size_t FileSource::read(char* to, size_t size) {
    if (!error().empty()) {
        return 0;
    }
    if (wouldWait()) {
        beforeWait_();
    }
    for (;;) {
        const ssize_t count = ::read(fd_, to, size);
        if (count >= 0) {
            done_ += static_cast<uint64_t>(count);
            if (size_ != 0) {
                afterRead_(done_, size_);
            }
            return static_cast<size_t>(count);
        }
        if (errno == EAGAIN || errno == EWOULDBLOCK) { // standard input may have been made non-blocking
            pollfd ready{fd_, POLLIN, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return fail(std::string("cannot be read: ") + std::strerror(errno) + ".");
        }
    }
}

} // namespace relaymsg

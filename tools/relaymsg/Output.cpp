#include "tools/relaymsg/Output.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace relaymsg {

Output::Output(int fd) : fd_(fd), buffer_(new char[CAPACITY]) {}

void Output::append(std::string_view text) {
    if (text.size() > CAPACITY - used_) {
        flush();
    }
    if (text.size() > CAPACITY) {
        write(text);
        return;
    }
    std::memcpy(buffer_.get() + used_, text.data(), text.size());
    used_ += text.size();
}

void Output::flush() {
    write({buffer_.get(), used_});
    used_ = 0;
}

void Output::write(std::string_view text) {
    if (!text.empty()) {
        beforeWrite_();
    }
    while (!text.empty() && error_ == 0) {
        const ssize_t count = ::write(fd_, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<size_t>(count));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            pollfd ready{fd_, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            error_ = errno;
        }
    }
}

} // namespace relaymsg

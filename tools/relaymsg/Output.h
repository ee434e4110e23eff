/// @file
/// What the tool prints, gathered into large writes.
#ifndef KORVAN_TOOLS_RELAYMSG_OUTPUT_H
#define KORVAN_TOOLS_RELAYMSG_OUTPUT_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace relaymsg {

class Output {
public:
    /// Writes to the file descriptor @p fd, which stays open.
    explicit Output(int fd);

    void append(std::string_view text);
    void append(char c) { append(std::string_view(&c, 1)); }

    /// Writes what was gathered.
    void flush();

    /// What to do before each write.
    void onWrite(std::function<void()> action) { beforeWrite_ = std::move(action); }

    /// The `errno` of the write that failed, or 0. After it nothing more is written.
    int error() const { return error_; }

private:
    static constexpr size_t CAPACITY = 128 * 1024;

    void write(std::string_view text);

    int fd_;
    int error_ = 0;
    size_t used_ = 0;
    std::unique_ptr<char[]> buffer_;
    std::function<void()> beforeWrite_ = [] {};
};

} // namespace relaymsg

#endif

/// @file
/// The bytes of a file, a pipe or a terminal.
#ifndef KORVAN_TOOLS_RELAYMSG_FILE_SOURCE_H
#define KORVAN_TOOLS_RELAYMSG_FILE_SOURCE_H

#include "tools/relaymsg/ByteSource.h"

#include <cstdint>
#include <functional>
#include <string>

namespace relaymsg {

class FileSource : public ByteSource {
public:
    /// Opens @p path; "-" is standard input. If that fails, `error` says why and there are no bytes.
    explicit FileSource(const std::string& path);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    size_t read(char* to, size_t size) override;

    /// What to do each time before `read` has to wait for a byte.
    void onWait(std::function<void()> action) { beforeWait_ = std::move(action); }

    /// What to do after each read of a file that has an end: it is given the bytes read so far, and all.
    void onProgress(std::function<void(uint64_t, uint64_t)> action) { afterRead_ = std::move(action); }

    /// The input's name as messages give it.
    const std::string& name() const { return name_; }

private:
    bool wouldWait() const;

    std::string name_;
    int fd_ = -1;
    uint64_t size_ = 0; // 0 if it is none that has an end
    uint64_t done_ = 0;
    std::function<void()> beforeWait_ = [] {};
    std::function<void(uint64_t, uint64_t)> afterRead_ = [](uint64_t, uint64_t) {};
};

} // namespace relaymsg

#endif

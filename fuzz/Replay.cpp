// Runs a target on the inputs given, files or folders of them, without a fuzzer: for compilers that have
// none.
#include "fuzz/Target.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

namespace {

namespace fs = std::filesystem;

void replay(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) {
        throw fs::filesystem_error("cannot read", path, std::make_error_code(std::errc::io_error));
    }
    // A block of exactly this size, so that a sanitizer sees a read behind it.
    const std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), exact.get());
    std::printf("%s\n", path.c_str());
    std::fflush(stdout); // the last line names the input at which it stopped
    LLVMFuzzerTestOneInput(exact.get(), bytes.size());
}

int replayAll(int count, char** paths) {
    size_t inputs = 0;
    for (int i = 1; i < count; ++i) {
        if (fs::is_directory(paths[i])) {
            for (const fs::directory_entry& entry : fs::directory_iterator(paths[i])) {
                replay(entry.path());
                ++inputs;
            }
        } else {
            replay(paths[i]);
            ++inputs;
        }
    }
    std::printf("%zu inputs replayed\n", inputs);
    return inputs != 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return replayAll(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}

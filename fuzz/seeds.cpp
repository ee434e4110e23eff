// Writes the seeds. Records: for each record type at each of its versions, and for each command, the wire
// form of a smallest and of a small record. Buffers: for each operation one sequence that repeats it.
//
//     fuzz_seeds fuzz/corpus
#include "fuzz/Case.h"
#include "protocol/cs_relay_msg.h"
#include "tests/plain/PlainCodec.h"
#include "tests/support/Memory.h"
#include "tests/support/RandomRecord.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using cs_relay_msg::schema::Type;

void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

void writeSeed(const std::filesystem::path& folder, size_t typeNumber, uint32_t version, int command,
               const tests::Shape& shape, const char* size) {
    const Type& type = *cs_relay_msg::schema::types()[typeNumber];
    std::vector<char> record(type.size);
    tests::Random random(typeNumber * 1000 + version * 100 + static_cast<unsigned>(command + 1));
    tests::fillRecord(type, record.data(), random, shape.of(command));
    std::vector<char> wire(cs_relay_msg::schema::wireSize(type, version).max);
    Korvan::BixWriteBuf out(wire.data(), wire.size());
    if (cs_relay_msg::plain::pack(type, record.data(), out, version) != 0) {
        throw std::runtime_error(std::string("cannot pack ") + type.name);
    }
    const char header[fuzz::Case::HEADER] = {static_cast<char>(typeNumber), static_cast<char>(version), 8, 1};
    const std::string commandPart = command >= 0 ? "-" + std::to_string(command) : "";
    const std::string name = type.name + commandPart + "-v" + std::to_string(version) + "-" + size;
    writeFile(folder / name,
              std::string(header, sizeof(header)) + std::string(wire.data(), out.getUsedSize()));
}

void writeRecords(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (size_t i = 0; i < cs_relay_msg::schema::types().size; ++i) {
        const Type& type = *cs_relay_msg::schema::types()[i];
        for (const int command : tests::commandsFor(type)) {
            const auto* const member = cs_relay_msg::schema::findCommand(command);
            const uint32_t versions = member != nullptr ? member->type->currentVersion : type.currentVersion;
            for (uint32_t version = 1; version <= versions; ++version) {
                writeSeed(folder, i, version, command, tests::SMALLEST, "smallest");
                writeSeed(folder, i, version, command, tests::TINY, "small");
            }
        }
    }
}

void writeBuffers(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    constexpr char SIZE = 24;
    constexpr int MOST_OPERATIONS = 14; // of either buffer
    for (int operation = 0; operation < MOST_OPERATIONS; ++operation) {
        std::string writes{0, SIZE};
        std::string reads{1, SIZE};
        for (char byte = 0; byte < SIZE; ++byte) {
            reads += byte;
        }
        for (int repeated = 0; repeated < 6; ++repeated) {
            const std::string call = static_cast<char>(operation) + std::string("\x01\x02\x03\x04");
            writes += call;
            reads += call;
        }
        writeFile(folder / ("write-" + std::to_string(operation)), writes);
        writeFile(folder / ("read-" + std::to_string(operation)), reads);
    }
}

/// Bytes as `xxd`, `hexdump -C` and `od -Ax -tx1` print them, and as plain digits.
std::string hexText(const std::string& bytes, const char* offset, const char* before, const char* between) {
    constexpr size_t LINE = 16;
    std::string text;
    char piece[24];
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i % LINE == 0) {
            std::snprintf(piece, sizeof(piece), offset, static_cast<unsigned>(i));
            text += (i == 0 ? "" : "\n") + std::string(piece) + before;
        }
        std::snprintf(piece, sizeof(piece), "%02x", static_cast<unsigned>(static_cast<uint8_t>(bytes[i])));
        text += piece + std::string(between);
    }
    return text + "\n";
}

void writeReaders(const std::filesystem::path& folder, const std::filesystem::path& session) {
    std::filesystem::create_directories(folder);
    std::ifstream file(session, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.empty()) {
        throw std::runtime_error("cannot read " + session.string());
    }
    const std::string part = bytes.substr(0, 200);
    const std::string header{0, 1};
    writeFile(folder / "raw", header + part);
    writeFile(folder / "raw-whole", header + bytes);
    writeFile(folder / "totals", std::string{4, 1} + bytes);
    writeFile(folder / "to-json", std::string{8, 1} + bytes);
    writeFile(folder / "base64", header + "AAAD6QAAAAcDAQK4AAAAAA==\n");
    writeFile(folder / "json",
              std::string{12, 1} +
                  R"({"stHead":{"dwUserID":1001,"dwRoomID":7,"bVersion":3,"wAsyncID":258,"bCmdId":184},)" +
                  R"("stBody":{"stCSRelayMsgHeartBeatReq":{"dwUnused":0}}})");
    writeFile(folder / "plain", header + hexText(part, "", "", ""));
    writeFile(folder / "xxd", header + hexText(part, "%08x:", " ", ""));
    writeFile(folder / "hexdump", header + hexText(part, "%08x", "  ", " "));
    writeFile(folder / "od", header + hexText(part, "%06x", " ", " "));
    writeFile(folder / "repeated",
              std::string{2, 1} + hexText(std::string(16, '\1'), "%08x", "  ", " ") + "*\n00000040\n");
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER SESSION\n");
        return 2;
    }
    try {
        writeRecords(std::filesystem::path(argv[1]) / "records");
        writeBuffers(std::filesystem::path(argv[1]) / "buffers");
        writeReaders(std::filesystem::path(argv[1]) / "readers", argv[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

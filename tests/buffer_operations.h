/// @file
/// Every bounds-checked operation of the two buffers by its name, for the tests of the assertion.
#ifndef KORVAN_TESTS_BUFFER_OPERATIONS_H
#define KORVAN_TESTS_BUFFER_OPERATIONS_H

#include "Common/Source/Core/BIX/BixBuf.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>

// Everything here has internal linkage: it is compiled with and without assertions into one program.
namespace {

using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

KORVAN_PRINTF(2, 3)
inline int32_t callVtextize(BixWriteBuf& buf, const char* format, ...) {
    va_list ap;
    va_start(ap, format);
    const int32_t result = buf.vtextize(format, ap);
    va_end(ap);
    return result;
}

struct WriteOperation {
    const char* name;
    bool appends; ///< whether it needs room behind the cursor
    int32_t (*run)(BixWriteBuf&);
};

const WriteOperation WRITE_OPERATIONS[] = {
    {"writeUInt8", true, [](BixWriteBuf& b) { return b.writeUInt8(1); }},
    {"writeUChar", true, [](BixWriteBuf& b) { return b.writeUChar(1); }},
    {"writeUInt16", true, [](BixWriteBuf& b) { return b.writeUInt16(1); }},
    {"writeUInt32", true, [](BixWriteBuf& b) { return b.writeUInt32(1); }},
    {"writeInt32", true, [](BixWriteBuf& b) { return b.writeInt32(1); }},
    {"writeUInt64", true, [](BixWriteBuf& b) { return b.writeUInt64(1); }},
    {"writeBytes", true, [](BixWriteBuf& b) { return b.writeBytes("x", 1); }},
    {"reserve", true, [](BixWriteBuf& b) { return b.reserve(1); }},
    {"writeCharWithNull", true, [](BixWriteBuf& b) { return b.writeCharWithNull('c'); }},
    {"textize", true, [](BixWriteBuf& b) { return b.textize("%s", "t"); }},
    {"vtextize", true, [](BixWriteBuf& b) { return callVtextize(b, "%s", "t"); }},
    {"writeUInt32", false, [](BixWriteBuf& b) { return b.writeUInt32(1, 0); }},
    {"writeUInt8", false, [](BixWriteBuf& b) { return b.writeUInt8(1, 0); }},
    {"writeChar", false, [](BixWriteBuf& b) { return b.writeChar('c', 0); }},
};

struct ReadOperation {
    const char* name;
    bool consumes; ///< whether it needs bytes behind the cursor
    int32_t (*run)(BixReadBuf&);
};

const ReadOperation READ_OPERATIONS[] = {
    {"readUInt8", true,
     [](BixReadBuf& b) {
         uint8_t v = 0;
         return b.readUInt8(v);
     }},
    {"readUChar", true,
     [](BixReadBuf& b) {
         uint8_t v = 0;
         return b.readUChar(v);
     }},
    {"readUInt16", true,
     [](BixReadBuf& b) {
         uint16_t v = 0;
         return b.readUInt16(v);
     }},
    {"readUInt32", true,
     [](BixReadBuf& b) {
         uint32_t v = 0;
         return b.readUInt32(v);
     }},
    {"readInt32", true,
     [](BixReadBuf& b) {
         int32_t v = 0;
         return b.readInt32(v);
     }},
    {"readUInt64", true,
     [](BixReadBuf& b) {
         uint64_t v = 0;
         return b.readUInt64(v);
     }},
    {"readBytes", true,
     [](BixReadBuf& b) {
         char to = 0;
         return b.readBytes(&to, 1);
     }},
    {"readUInt8", false,
     [](BixReadBuf& b) {
         uint8_t v = 0;
         return b.readUInt8(v, 0);
     }},
};

} // namespace

#endif

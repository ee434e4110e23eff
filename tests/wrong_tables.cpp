// Tables that must not compile. CTest compiles this file once for each of these cases.
#include "protocol/Record.h"
#include "protocol/Table.h"

/// A record with these members, and its table.
#define SAMPLE(members, ...)                                                                                 \
    namespace cs_relay_msg {                                                                                 \
    struct KORVAN_PACKED Sample : Record<Sample> {                                                           \
        members                                                                                              \
    };                                                                                                       \
    }                                                                                                        \
    namespace cs_relay_msg::table {                                                                          \
    KORVAN_TABLE(Sample, __VA_ARGS__)                                                                        \
    }

namespace cs_relay_msg {
struct KORVAN_PACKED Element : Record<Element> {
    uint32_t dwId;
};
namespace table {
KORVAN_TABLE(Element, FIELD(dwId))
} // namespace table
} // namespace cs_relay_msg

// clang-format off

#if defined(WRONG_NOTHING)
SAMPLE(uint32_t dwFirst; int32_t iSecond; uint64_t ullThird; uint8_t bCount; uint8_t szBytes[8];
       char szText[8]; Element stElement; uint16_t wCount; Element astElements[3]; uint8_t bLater;,
       FIELD(dwFirst).startsAt(7), FIELD(iSecond), FIELD(ullThird), FIELD(bCount), COUNTED(szBytes, bCount),
       FIELD(szText), FIELD(stElement), FIELD(wCount), COUNTED(astElements, wCount), FIELD(bLater).addedIn(2))

// ---- The lines do not tile the record ----
#elif defined(WRONG_FIRST_FIELD_MISSING)
SAMPLE(uint32_t dwFirst; uint32_t dwSecond;, FIELD(dwSecond))
#elif defined(WRONG_MIDDLE_FIELD_MISSING)
SAMPLE(uint32_t dwFirst; uint32_t dwSecond; uint32_t dwThird;, FIELD(dwFirst), FIELD(dwThird))
#elif defined(WRONG_LAST_FIELD_MISSING)
SAMPLE(uint32_t dwFirst; uint32_t dwSecond;, FIELD(dwFirst))
#elif defined(WRONG_DOUBLED_FIELD)
SAMPLE(uint32_t dwFirst; uint32_t dwSecond;, FIELD(dwFirst), FIELD(dwFirst), FIELD(dwSecond))
#elif defined(WRONG_SWAPPED_FIELDS)
SAMPLE(uint32_t dwFirst; uint32_t dwSecond;, FIELD(dwSecond), FIELD(dwFirst))

// ---- An array and its count ----
#elif defined(WRONG_COUNT_LATER)
SAMPLE(uint8_t szBytes[8]; uint8_t bCount;, COUNTED(szBytes, bCount), FIELD(bCount))
#elif defined(WRONG_COUNT_APART)
SAMPLE(uint8_t bCount; uint8_t bOther; uint8_t szBytes[8];, FIELD(bCount), FIELD(bOther), COUNTED(szBytes, bCount))
#elif defined(WRONG_COUNT_SIGNED)
SAMPLE(int32_t iCount; uint8_t szBytes[8];, FIELD(iCount), COUNTED(szBytes, iCount))
#elif defined(WRONG_COUNT_NO_INTEGER)
SAMPLE(Element stCount; uint8_t szBytes[8];, FIELD(stCount), COUNTED(szBytes, stCount))
#elif defined(WRONG_COUNT_OF_ANOTHER_VERSION)
SAMPLE(uint8_t bCount; uint8_t szBytes[8];, FIELD(bCount).addedIn(2), COUNTED(szBytes, bCount))
#elif defined(WRONG_BYTES_WITHOUT_COUNT)
SAMPLE(uint8_t bCount; uint8_t szBytes[8];, FIELD(bCount), FIELD(szBytes))
#elif defined(WRONG_RECORDS_WITHOUT_COUNT)
SAMPLE(uint8_t bCount; Element astElements[3];, FIELD(bCount), FIELD(astElements))
#elif defined(WRONG_TEXT_WITH_COUNT)
SAMPLE(uint8_t bCount; char szText[8];, FIELD(bCount), COUNTED(szText, bCount))

// ---- Versions ----
#elif defined(WRONG_TEXT_ADDED_LATER)
SAMPLE(uint8_t bFirst; char szText[8];, FIELD(bFirst), FIELD(szText).addedIn(2))
#elif defined(WRONG_BYTES_ADDED_LATER)
SAMPLE(uint8_t bCount; uint8_t szBytes[8];, FIELD(bCount).addedIn(2), COUNTED(szBytes, bCount).addedIn(2))
#elif defined(WRONG_RECORD_ADDED_LATER)
SAMPLE(uint8_t bFirst; Element stElement;, FIELD(bFirst), FIELD(stElement).addedIn(2))

// ---- The name tells another type ----
#elif defined(WRONG_TYPE_TOO_NARROW)
SAMPLE(uint16_t dwFirst;, FIELD(dwFirst))
#elif defined(WRONG_TYPE_TOO_WIDE)
SAMPLE(uint32_t wFirst;, FIELD(wFirst))
#elif defined(WRONG_TYPE_SIGNED)
SAMPLE(int32_t dwFirst;, FIELD(dwFirst))
#elif defined(WRONG_TYPE_UNSIGNED)
SAMPLE(uint32_t iFirst;, FIELD(iFirst))
#elif defined(WRONG_TYPE_SIGNED_16_BITS)
SAMPLE(int16_t iFirst;, FIELD(iFirst))
#elif defined(WRONG_TYPE_SIGNED_16_BITS_WITHOUT_PREFIX)
SAMPLE(int16_t First;, FIELD(First))
#elif defined(WRONG_PREFIX_WITHOUT_CAPITAL)
SAMPLE(uint32_t dwfirst;, FIELD(dwfirst))
#elif defined(WRONG_PREFIX_ALONE)
SAMPLE(uint32_t dw;, FIELD(dw))
#elif defined(WRONG_PREFIX_OF_TEXT)
SAMPLE(char bText[8];, FIELD(bText))
#elif defined(WRONG_PREFIX_OF_RECORD)
SAMPLE(Element astElement;, FIELD(astElement))
#elif defined(WRONG_PREFIX_OF_RECORDS)
SAMPLE(uint8_t bCount; Element stElements[3];, FIELD(bCount), COUNTED(stElements, bCount))

// ---- No plain struct, no field of the protocol ----
#elif defined(WRONG_CONSTRUCTOR)
SAMPLE(uint32_t dwFirst; Sample() : dwFirst(1) {}, FIELD(dwFirst))
#elif defined(WRONG_FLOATING_POINT)
SAMPLE(float dwFirst;, FIELD(dwFirst))
#elif defined(WRONG_ARRAY_OF_INTEGERS)
SAMPLE(uint8_t bCount; uint16_t szWide[8];, FIELD(bCount), COUNTED(szWide, bCount))
#endif

// clang-format on

constexpr cs_relay_msg::schema::Type DESCRIBED = cs_relay_msg::table::describe<cs_relay_msg::Sample>();

size_t fieldCount() {
    return DESCRIBED.fieldCount;
}

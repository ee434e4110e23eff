/// @file
/// The record types by their C++ names, for what the tables' type-erased operations do not reach.
#ifndef KORVAN_TESTS_SUPPORT_RECORD_TYPES_H
#define KORVAN_TESTS_SUPPORT_RECORD_TYPES_H

#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tests {

/// @p X is called with each record type.
#define KORVAN_RECORD_TYPES(X)                                                                               \
    X(CSRelayMsgHead)                                                                                        \
    X(CSRelayMsgPack)                                                                                        \
    X(CSRelayData)                                                                                           \
    X(CSRelayInput)                                                                                          \
    X(CSRelayInputMulty)                                                                                     \
    X(CSRelayFrame)                                                                                          \
    X(CSRelayFramePack)                                                                                      \
    X(CSRelayMsgLoginReq)                                                                                    \
    X(CSRelayMsgLoginRes)                                                                                    \
    X(CSRelayMsgReloginNotify)                                                                               \
    X(CSRelayMsgHeartBeatReq)                                                                                \
    X(CSRelayMsgHeartBeatRes)                                                                                \
    X(CSRelayMsgStopReq)                                                                                     \
    X(CSRelayMsgStopRes)                                                                                     \
    X(CSRelayError)                                                                                          \
    X(CSRelayMsgStartReq)                                                                                    \
    X(CSRelayMsgStartRes)                                                                                    \
    X(CreateRoomUserInfo)                                                                                    \
    X(CSRelayMsgSyncReq)                                                                                     \
    X(CSRelayMsgSyncRes)                                                                                     \
    X(ReplayPieceInof)                                                                                       \
    X(CSRelaySeekPlayReq)                                                                                    \
    X(CSRelaySeekPlayRes)                                                                                    \
    X(CSRelayStatReq)                                                                                        \
    X(CSRelayStatRes)                                                                                        \
    X(CSRelayMsg)

template <class T>
struct RecordName;
#define KORVAN_RECORD_NAME(T)                                                                                \
    template <>                                                                                              \
    struct RecordName<cs_relay_msg::T> {                                                                     \
        static constexpr const char* value = #T;                                                             \
    };
KORVAN_RECORD_TYPES(KORVAN_RECORD_NAME)
#undef KORVAN_RECORD_NAME

/// Names the cases of a typed test suite after their records.
struct RecordNames {
    template <class T>
    static const char* GetName(int /*index*/) {
        return RecordName<T>::value;
    }
};

#define KORVAN_RECORD_TYPE(T) , cs_relay_msg::T
template <class First, class... T>
using TypesBehind = ::testing::Types<T...>;
using RecordTypes = TypesBehind<void KORVAN_RECORD_TYPES(KORVAN_RECORD_TYPE)>;
#undef KORVAN_RECORD_TYPE
#undef KORVAN_RECORD_TYPES

/// The table's description of @p T, or null if there is none.
template <class T>
const cs_relay_msg::schema::Type* schemaOf() {
    for (const cs_relay_msg::schema::Type* type : cs_relay_msg::schema::types()) {
        if (std::strcmp(type->name, RecordName<T>::value) == 0) {
            return type;
        }
    }
    return nullptr;
}

} // namespace tests

#endif

#include "protocol/Stream.h"

using namespace cs_relay_msg;

// Every template once, so that its body is compiled with a client's flags.
int32_t streamHeaderAlone(CSRelayMsgHead& head, CSRelayInput& input, CSRelayMsgLoginReq& login, char* buffer,
                          size_t size) {
    Korvan::BixWriteBuf out(buffer, size);
    Korvan::BixReadBuf in(buffer, size);
    return packMessage(head, input, buffer, size) + packMessage(head, input, out) +
           unpackMessage(head, input, buffer, size) + unpackMessage(head, input, in) +
           setText(login.szSigBuf, "text") +
           setBytes(input.stRelayData, &CSRelayData::szRelayBuf, buffer, size) +
           (equal(login, login) ? 1 : 0);
}

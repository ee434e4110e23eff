/// nlohmann-json, for text: a document that stands ready is written without blanks. Payloads are arrays of
/// numbers.
#include "Peer.h"

#include <nlohmann/json.hpp>

namespace peers {

namespace {

using nlohmann::json;

json makeData(const CSRelayData& data) {
    return {{"dwObjectId", +data.dwObjectId},
            {"szRelayBuf", std::vector<uint8_t>(data.szRelayBuf, data.szRelayBuf + data.wRelayLen)},
            {"bUserStatusFlag", data.bUserStatusFlag},
            {"wSequance", +data.wSequance}};
}

json makeBody(const Message& m) {
    switch (m.stHead.bCmdId) {
    case cmd::stRelayLoginReq:
        return {{"szSigBuf", m.stBody.stRelayLoginReq.szSigBuf},
                {"dwReserve", +m.stBody.stRelayLoginReq.dwReserve}};
    case cmd::stRelayInputing:
        return {{"stRelayData", makeData(m.stBody.stRelayInputing.stRelayData)},
                {"bRepeatCount", m.stBody.stRelayInputing.bRepeatCount}};
    case cmd::stRelayLockStep: {
        json frames = json::array();
        for (size_t i = 0; i < m.stBody.stRelayLockStep.bCount; ++i) {
            const CSRelayFrame& frame = m.stBody.stRelayLockStep.astRelayData[i];
            json data = json::array();
            for (size_t k = 0; k < frame.bCount; ++k) {
                data.push_back(makeData(frame.astRelayData[k]));
            }
            frames.push_back({{"dwFrameId", +frame.dwFrameId},
                              {"astRelayData", std::move(data)},
                              {"dwLastHasDataFrameId", +frame.dwLastHasDataFrameId}});
        }
        return {{"astRelayData", std::move(frames)}};
    }
    case cmd::stCSRelayMsgStatUserRes:
        return {{"szRoomRetStr", m.stBody.stCSRelayMsgStatUserRes.szRoomRetStr},
                {"szUserRetStr", m.stBody.stCSRelayMsgStatUserRes.szUserRetStr},
                {"szProcessRetStr", m.stBody.stCSRelayMsgStatUserRes.szProcessRetStr}};
    default:
        return {{"dwUnused", heartBeat(m)}};
    }
}

json makeMessage(const Message& m) {
    return {{"stHead",
             {{"dwUserID", +m.stHead.dwUserID},
              {"dwRoomID", +m.stHead.dwRoomID},
              {"bVersion", m.stHead.bVersion},
              {"wAsyncID", +m.stHead.wAsyncID},
              {"bCmdId", m.stHead.bCmdId}}},
            {"stBody", makeBody(m)}};
}

} // namespace

void addNlohmann() {
    static std::vector<std::unique_ptr<json>> kept;
    for (const works::Work& work : works::all()) {
        kept.push_back(std::make_unique<json>(makeMessage(*work.record)));
        const json* const document = kept.back().get();
        run::require(json::parse(document->dump()) == *document, "nlohmann-json", "does not render");
        run::measure(run::name("text", work.letter, "nlohmann-json"), document->dump().size(),
                     [=] { return document->dump().size(); });
    }
}

} // namespace peers

/// @file
/// Records a short game of four players as a relay server sees it, and writes it to session.bin (raw bytes)
/// and session.hex (hexadecimal text, a paragraph for each message).
///
///     record_session DIRECTORY
///
/// Nothing in it is random: it always writes the same bytes. All 25 commands occur, and all three versions,
/// because the players' programs are of different age.
#include "protocol/cs_relay_msg.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace cs_relay_msg;

struct Player {
    uint32_t id;
    uint8_t version; ///< of the player's program: what is said to and by it is packed for this version
    const char* signature;
};

constexpr Player ANN{1001, 3, "ann:5f1d9a"};
constexpr Player BEN{1002, 3, "ben:77c02e"};
constexpr Player CLEO{1003, 2, "cleo:e40b13"};
constexpr Player DAN{1004, 1, "dan:09ab5c"};
constexpr Player PLAYERS[] = {ANN, BEN, CLEO, DAN};
constexpr uint32_t ROOM = 7;

/// Packs messages one behind the other.
class Session {
public:
    /// Packs one message. @p fill sets the fields of the body that are not to keep their defaults.
    template <class Fill>
    void say(const Player& player, uint8_t command, uint16_t asyncId, Fill fill) {
        message_->construct();
        message_->stHead.dwUserID = player.id;
        message_->stHead.dwRoomID = ROOM;
        message_->stHead.wAsyncID = asyncId;
        message_->stHead.bCmdId = command;
        message_->stBody.construct(command);
        fill(message_->stBody);

        size_t used = 0;
        const int32_t result = message_->pack(buffer_.data(), buffer_.size(), &used, player.version);
        if (result != BIX_OK) {
            std::fprintf(stderr, "record_session: %s: %s\n", commandName(command),
                         Korvan::resultName(result));
            failed_ = true;
            return;
        }
        messages_.emplace_back(buffer_.data(), used);
    }

    bool failed() const { return failed_; }
    const std::vector<std::string>& messages() const { return messages_; }

private:
    // Half a megabyte each: on the heap, and used again for every message.
    std::unique_ptr<CSRelayMsg> message_ = std::make_unique<CSRelayMsg>();
    std::vector<char> buffer_ = std::vector<char>(CSRelayMsg::maxWireSize);
    std::vector<std::string> messages_;
    bool failed_ = false;
};

template <size_t Capacity>
void setText(char (&field)[Capacity], const char* text) {
    std::snprintf(field, Capacity, "%s", text);
}

/// What a player did in one tick: here three bytes, a key and two coordinates.
void setInput(CSRelayData& data, const Player& player, uint16_t sequence) {
    data.dwObjectId = player.id;
    data.szRelayBuf[0] = 'k';
    data.szRelayBuf[1] = static_cast<uint8_t>(player.id % 100 * 10);
    data.szRelayBuf[2] = static_cast<uint8_t>(sequence);
    data.wRelayLen = 3;
    data.bUserStatusFlag = 1;
    data.wSequance = sequence;
}

void setFrame(CSRelayFrame& frame, uint32_t id, uint32_t lastWithData, std::initializer_list<Player> inputs) {
    frame.dwFrameId = id;
    frame.dwLastHasDataFrameId = lastWithData;
    frame.bCount = 0;
    for (const Player& player : inputs) {
        setInput(frame.astRelayData[frame.bCount], player, static_cast<uint16_t>(id));
        ++frame.bCount;
    }
}

void login(Session& session, const Player& player, uint16_t asyncId) {
    session.say(player, cmd::stRelayLoginReq, asyncId,
                [&](CSRelayMsgBody& body) { setText(body.stRelayLoginReq.szSigBuf, player.signature); });
    session.say(player, cmd::stRelayLoginRes, asyncId, [](CSRelayMsgBody&) {});
}

void start(Session& session, const Player& player) {
    session.say(player, cmd::stRelayStartReq, 2, [](CSRelayMsgBody&) {});
    session.say(player, cmd::stRelayStartRes, 2, [](CSRelayMsgBody& body) {
        setText(body.stRelayStartRes.szErrorDesc, "ok");
        body.stRelayStartRes.dwBeginFrameID = 1;
    });
}

void heartBeat(Session& session, const Player& player) {
    session.say(player, cmd::stCSRelayMsgHeartBeatReq, 3, [](CSRelayMsgBody&) {});
    session.say(player, cmd::stCSRelayMsgHeartBeatRes, 3,
                [](CSRelayMsgBody& body) { body.stCSRelayMsgHeartBeatRes.dwHeartBeatIntervalMs = 5000; });
}

/// One of the five commands that carry a single input.
void sendInput(Session& session, uint8_t command, const Player& player, uint16_t sequence) {
    session.say(player, command, 0, [&](CSRelayMsgBody& body) {
        setInput(body.stRelayInputing.stRelayData, player, sequence);
        body.stRelayInputing.bRepeatCount = 2;
    });
}

/// The server sends the same frames to every player.
template <class Fill>
void sendFrames(Session& session, uint8_t command, Fill fill) {
    for (const Player& player : PLAYERS) {
        session.say(player, command, 0, [&](CSRelayMsgBody& body) { fill(body.stRelayLockStep); });
    }
}

void stop(Session& session, const Player& player) {
    session.say(player, cmd::stRelayStopReq, 9, [](CSRelayMsgBody&) {});
    session.say(player, cmd::stRelayStopRes, 9, [](CSRelayMsgBody&) {});
}

void play(Session& session) {
    for (const Player& player : PLAYERS) {
        login(session, player, 1);
    }
    for (const Player& player : PLAYERS) {
        start(session, player);
    }

    // Frame 1 carries two inputs, frame 2 none, frame 3 one of each player.
    sendInput(session, cmd::stRelayInputing, ANN, 1);
    sendInput(session, cmd::stRelayInputing, BEN, 1);
    sendFrames(session, cmd::stRelayLockStep, [](CSRelayFramePack& pack) {
        pack.bCount = 1;
        setFrame(pack.astRelayData[0], 1, 0, {ANN, BEN});
    });
    for (const Player& player : PLAYERS) {
        heartBeat(session, player);
    }
    for (const Player& player : PLAYERS) {
        sendInput(session, cmd::stRelayInputing, player, 3);
    }
    sendFrames(session, cmd::stRelayLockStep, [](CSRelayFramePack& pack) {
        pack.bCount = 2;
        setFrame(pack.astRelayData[0], 2, 1, {});
        setFrame(pack.astRelayData[1], 3, 1, {ANN, BEN, CLEO, DAN});
    });

    // Dan loses the connection, logs in again and asks for what he missed.
    session.say(DAN, cmd::stRelayReloginNotify, 0,
                [](CSRelayMsgBody& body) { body.stRelayReloginNotify.ullQuestion = 0x1122334455667788; });
    login(session, DAN, 4);
    session.say(DAN, cmd::stRelaySyncReq, 5, [](CSRelayMsgBody& body) {
        body.stRelaySyncReq.dwFrameIdBegin = 2;
        body.stRelaySyncReq.dwFrameIdEnd = 3;
    });
    session.say(DAN, cmd::stRelaySyncRes, 5,
                [](CSRelayMsgBody& body) { setFrame(body.stRelaySyncRes.stSyncData, 2, 1, {}); });
    session.say(DAN, cmd::stRelaySyncRes, 5, [](CSRelayMsgBody& body) {
        setFrame(body.stRelaySyncRes.stSyncData, 3, 1, {ANN, BEN, CLEO, DAN});
    });
    session.say(DAN, cmd::stRelayInputMulty, 0, [](CSRelayMsgBody& body) {
        body.stRelayInputMulty.bFrameCount = 2;
        setInput(body.stRelayInputMulty.astRelayData[0], DAN, 4);
        setInput(body.stRelayInputMulty.astRelayData[1], DAN, 5);
    });

    // Ann broadcasts, the others check; Cleo sends a payload in two pieces.
    sendInput(session, cmd::stRelayBroadCastReq, ANN, 4);
    sendFrames(session, cmd::stRelayBroadCastRes, [](CSRelayFramePack& pack) {
        pack.bCount = 1;
        setFrame(pack.astRelayData[0], 4, 3, {ANN, DAN});
    });
    sendInput(session, cmd::stRelayInputCheckReq, BEN, 4);
    sendInput(session, cmd::stRelayBroadCastCheckReq, CLEO, 4);
    sendInput(session, cmd::stRelayCheckReq, DAN, 4);
    for (uint8_t piece = 0; piece < 2; ++piece) {
        session.say(CLEO, cmd::stRelayMsgPack, 0, [&](CSRelayMsgBody& body) {
            CSRelayMsgPack& pack = body.stRelayMsgPack;
            pack.wSeqId = 1;
            pack.bCount = 2;
            pack.bIndex = piece;
            pack.wLength = 40;
            for (uint8_t i = 0; i < 40; ++i) {
                pack.szData[i] = static_cast<uint8_t>(piece * 40 + i);
            }
        });
    }

    // Ben looks at an earlier recording, and at the numbers.
    session.say(BEN, cmd::stCSRelaySeekPlayReq, 6, [](CSRelayMsgBody& body) {
        CSRelaySeekPlayReq& seek = body.stCSRelaySeekPlayReq;
        seek.dwStartFrame = 1;
        seek.dwFrameCount = 4;
        seek.dwReplayPieceInofCount = 2;
        seek.astReplayPieceInof[0].dwStartFrame = 1;
        seek.astReplayPieceInof[0].dwFrameCount = 2;
        seek.astReplayPieceInof[1].dwStartFrame = 3;
        seek.astReplayPieceInof[1].dwFrameCount = 2;
    });
    session.say(BEN, cmd::stCSRelaySeekPlayRes, 6,
                [](CSRelayMsgBody& body) { setText(body.stCSRelaySeekPlayRes.szRetStr, "ok"); });
    session.say(BEN, cmd::stCSRelayMsgStatUserReq, 7, [](CSRelayMsgBody&) {});
    session.say(BEN, cmd::stCSRelayMsgStatUserRes, 7, [](CSRelayMsgBody& body) {
        setText(body.stCSRelayMsgStatUserRes.szRoomRetStr, "players=4\nframes=4");
        setText(body.stCSRelayMsgStatUserRes.szUserRetStr, "name=Béla\ninputs=2");
        setText(body.stCSRelayMsgStatUserRes.szProcessRetStr, "rooms=1\tuptime=3600");
    });

    // Dan asks for something that is not there, and is told so.
    session.say(DAN, cmd::stRelaySyncReq, 8, [](CSRelayMsgBody& body) {
        body.stRelaySyncReq.dwFrameIdBegin = 90;
        body.stRelaySyncReq.dwFrameIdEnd = 99;
    });
    session.say(DAN, cmd::stRelayError, 8, [](CSRelayMsgBody& body) {
        CSRelayError& error = body.stRelayError;
        error.dwError_code = 404;
        setText(error.szError_code_str, "no such frame");
        setText(error.szError_svr_url, "relay-2.example.net:9000");
        error.bRequest_cmd_code = cmd::stRelaySyncReq;
    });

    for (const Player& player : PLAYERS) {
        stop(session, player);
    }
}

/// Each message a paragraph, 32 bytes a line.
std::string hexText(const std::vector<std::string>& messages) {
    constexpr size_t BYTES_PER_LINE = 32;
    std::string text;
    for (const std::string& message : messages) {
        if (!text.empty()) {
            text += '\n';
        }
        for (size_t i = 0; i < message.size(); ++i) {
            char digits[4];
            std::snprintf(digits, sizeof(digits), "%02x",
                          static_cast<unsigned>(static_cast<uint8_t>(message[i])));
            text += digits;
            text += i % BYTES_PER_LINE == BYTES_PER_LINE - 1 || i + 1 == message.size() ? '\n' : ' ';
        }
    }
    return text;
}

bool write(const std::string& path, const std::string& content) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    bool written = file != nullptr && std::fwrite(content.data(), 1, content.size(), file) == content.size();
    if (file != nullptr) {
        written = std::fclose(file) == 0 && written;
    }
    if (!written) {
        std::perror(path.c_str());
    }
    return written;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: record_session DIRECTORY\n");
        return 1;
    }
    Session session;
    play(session);
    std::string bytes;
    for (const std::string& message : session.messages()) {
        bytes += message;
    }
    const std::string directory = argv[1];
    const bool written = !session.failed() && write(directory + "/session.bin", bytes) &&
                         write(directory + "/session.hex", hexText(session.messages()));
    return written ? 0 : 1;
}

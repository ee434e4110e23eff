#include "examples/lockstep/Client.h"

#include "examples/lockstep/Screen.h"
#include "protocol/Stream.h"

#include <algorithm>
#include <cstdio>

namespace lockstep {

using namespace cs_relay_msg;
using std::chrono::milliseconds;

namespace {

constexpr uint32_t CHECK_EVERY = 25; // ticks
constexpr uint8_t SPRINT = 2;        // steps
constexpr milliseconds WATCH{100};

template <class T, size_t N>
constexpr size_t bound(T (&)[N]) {
    return N;
}

/// Whether @p a comes behind @p b, where numbers begin again behind the largest.
bool isBehind(uint16_t a, uint16_t b) {
    return static_cast<int16_t>(a - b) > 0;
}

} // namespace

Client::Client(Loop& loop, const ClientOptions& options)
    : loop_(loop), options_(options), post_(options.log, ""),
      datagrams_(loop, options.loss, options.player,
                 [this](std::string_view bytes, uint16_t port) { datagram(bytes, port); }),
      tcp_(connect(loop, options.port)), framer_(CSRelayMsg::maxWireSize),
      frame_(std::make_unique<CSRelayFrame>()) {
    tcp_->start([this](std::string_view bytes) { received(bytes); },
                [this] { end("the relay ended the session"); });
    login();
    watch();
}

// ---- From the network ----

void Client::received(std::string_view bytes) {
    heard_ = Clock::now();
    const bool goOn = framer_.take(bytes, [this](std::string_view whole) {
        const CSRelayMsg* message = read(whole);
        return message != nullptr && handle(*message);
    });
    if (!goOn) {
        end("the relay's stream cannot be read: " + framer_.problem());
    } else if (game_) {
        advance();
    }
}

void Client::datagram(std::string_view bytes, uint16_t port) {
    if (port != relayPort_ || !game_) {
        return;
    }
    const CSRelayMsg* message = read(bytes);
    if (message == nullptr) {
        return; // a datagram stands alone: the next one is not spoiled
    }
    heard_ = Clock::now();
    if (message->stHead.bCmdId == cmd::stRelayLockStep) {
        numbers_.received += keep(message->stBody.stRelayLockStep, message->stHead.bVersion);
        advance();
    } else if (message->stHead.bCmdId == cmd::stCSRelayMsgHeartBeatRes) {
        const uint32_t interval = message->stBody.stCSRelayMsgHeartBeatRes.dwHeartBeatIntervalMs;
        heartbeat_ = milliseconds(std::clamp<uint32_t>(interval, 10, 5000));
    }
}

/// A program that really is old could not unpack what is newer than itself. This one only plays to be old, so
/// it looks: the relay must pack for the version that it was spoken to with.
const CSRelayMsg* Client::read(std::string_view bytes) {
    const CSRelayMsg* message = post_.unpack(bytes);
    if (message != nullptr && message->stHead.bVersion > options_.version) {
        post_.note("dropped a message of a later version");
        return nullptr;
    }
    return message;
}

bool Client::handle(const CSRelayMsg& message) {
    const CSRelayMsgBody& body = message.stBody;
    switch (message.stHead.bCmdId) {
    case cmd::stRelayLoginRes:
        return true; // the settings follow
    case cmd::stRelayMsgPack:
        prepare(body.stRelayMsgPack);
        return true;
    case cmd::stRelayStartRes:
        begin(body.stRelayStartRes);
        return true;
    case cmd::stCSRelaySeekPlayRes:
        if (body.stCSRelaySeekPlayRes.dwRetCode != 0) {
            end(body.stCSRelaySeekPlayRes.szRetStr);
        }
        return true;
    case cmd::stRelayLockStep:
        numbers_.sought += keep(body.stRelayLockStep, message.stHead.bVersion);
        return true;
    case cmd::stRelaySyncRes:
        if (body.stRelaySyncRes.iResult == 0 &&
            keep(body.stRelaySyncRes.stSyncData, message.stHead.bVersion)) {
            ++numbers_.synced;
        }
        return true;
    case cmd::stCSRelayMsgStatUserRes: {
        const CSRelayStatRes& texts = body.stCSRelayMsgStatUserRes;
        std::printf("statistics room: %s; user: %s; relay: %s\n", texts.szRoomRetStr, texts.szUserRetStr,
                    texts.szProcessRetStr);
        overTcp(request(cmd::stRelayStopReq));
        return true;
    }
    case cmd::stRelayStopRes:
        end("");
        return true;
    case cmd::stRelayReloginNotify:
        end("the same player logged in elsewhere");
        return true;
    case cmd::stRelayError: {
        const CSRelayError& error = body.stRelayError;
        const char* command = commandName(error.bRequest_cmd_code);
        const std::string text = "error " + std::to_string(error.dwError_code) + ": " +
                                 error.szError_code_str + " (" +
                                 (command != nullptr ? command : "no command") + ")";
        post_.note(text);
        if (error.bIsFatalError != 0) {
            end(text);
        }
        return true;
    }
    default:
        return true; // a newer relay may say more
    }
}

void Client::prepare(const CSRelayMsgPack& pack) {
    Settings settings{};
    if (game_ || !getSettings(pack, settings)) {
        return;
    }
    game_.emplace(settings.seed);
    lastTick_ = settings.lastTick;
    relayPort_ = settings.port;
    overTcp(request(cmd::stRelayStartReq));
    heartbeat();
}

void Client::begin(const CSRelayMsgStartRes& start) {
    if (start.iResult != 0) {
        end(start.szErrorDesc);
        return;
    }
    begin_ = start.dwBeginFrameID;
    if (start.bNeedToPlayFromFrame0 == 0) {
        return;
    }
    // The game is under way: all frames up to now, in one piece, which is what a request has by default.
    CSRelayMsg& seek = request(cmd::stCSRelaySeekPlayReq);
    CSRelaySeekPlayReq& wanted = seek.stBody.stCSRelaySeekPlayReq;
    wanted.dwFrameIntervalMs = 0; // as fast as it can
    wanted.dwStartFrame = 1;
    wanted.dwFrameCount = begin_ - 1;
    wanted.astReplayPieceInof[0].dwStartFrame = 1;
    wanted.astReplayPieceInof[0].dwFrameCount = begin_ - 1;
    overTcp(seek);
    asked_ = begin_ - 1;
}

uint32_t Client::keep(const CSRelayFramePack& frames, uint8_t version) {
    uint32_t added = 0;
    for (uint8_t i = 0; i < frames.bCount; ++i) {
        added += keep(frames.astRelayData[i], version) ? 1u : 0u;
    }
    return added;
}

/// Whether the frame was not here before.
bool Client::keep(const CSRelayFrame& frame, uint8_t version) {
    const uint32_t id = frame.dwFrameId;
    if (id > lastTick_ || store_.has(id) || !store_.put(frame)) {
        return false;
    }
    // Since version 3 a frame tells which one before it had inputs last. Those in between were empty, so they
    // need not be asked for. From an older peer the field is 0, which says nothing.
    if (version >= 3 && frame.dwLastHasDataFrameId < id) {
        frame_->bCount = 0;
        frame_->dwLastHasDataFrameId = frame.dwLastHasDataFrameId;
        for (uint32_t empty = std::max(+frame.dwLastHasDataFrameId, game_->tick()) + 1; empty < id; ++empty) {
            frame_->dwFrameId = empty;
            if (!store_.has(empty) && store_.put(*frame_)) {
                ++numbers_.empty;
            }
        }
    }
    return true;
}

// ---- The game ----

/// Plays what can be played, and does what is due then.
void Client::advance() {
    const uint32_t before = game_->tick();
    while (store_.get(game_->tick() + 1, *frame_)) {
        step(*frame_);
    }
    closeGap();
    if (game_->tick() == before) {
        return;
    }
    if (options_.draw) {
        std::fputs(draw(*game_, options_.player, lastTick_, numbers_).c_str(), stderr);
    }
    if (game_->tick() == lastTick_ && !over_) {
        over_ = true;
        overTcp(request(cmd::stCSRelayMsgStatUserReq));
    } else if (begin_ != 0 && game_->tick() + 1 >= begin_) {
        sendInput();
    }
}

void Client::step(const CSRelayFrame& frame) {
    inputs_.clear();
    for (uint8_t i = 0; i < frame.bCount; ++i) {
        const CSRelayData& data = frame.astRelayData[i];
        Move move{};
        if (getMove(data, move)) { // every client sees the same bytes, and so leaves out the same
            inputs_.push_back({data.dwObjectId, move, data.bUserStatusFlag});
        }
        if (data.dwObjectId == options_.player) { // also before a restart: its numbers go on
            sequence_ = isBehind(data.wSequance, sequence_) ? +data.wSequance : sequence_;
            while (!sent_.empty() && !isBehind(sent_.front().sequence, data.wSequance)) {
                sent_.pop_front();
            }
        }
    }
    game_->step(inputs_);
    if (game_->tick() == options_.spoilAt) {
        game_->spoil();
    }
    if (game_->tick() % CHECK_EVERY == 0 || game_->tick() == lastTick_) {
        sendCheck();
    }
}

/// Asks for frames that were lost: later ones are here.
void Client::closeGap() {
    const uint32_t next = std::max(game_->tick(), asked_) + 1;
    const uint32_t first = store_.firstBehind(next - 1);
    if (begin_ == 0 || first <= next) {
        return; // 0 is none
    }
    CSRelayMsg& sync = request(cmd::stRelaySyncReq);
    sync.stBody.stRelaySyncReq.dwFrameIdBegin = next;
    sync.stBody.stRelaySyncReq.dwFrameIdEnd = first - 1;
    overTcp(sync); // over TCP, so that neither it nor its answer is lost
    asked_ = first - 1;
}

// ---- To the relay ----

CSRelayMsg& Client::request(uint8_t command) {
    return post_.begin(command, options_.player, ++asyncId_);
}

void Client::overTcp(const CSRelayMsg& message) {
    tcp_->send(post_.pack(message, options_.version));
}

void Client::overUdp(const CSRelayMsg& message) {
    datagrams_.send(post_.pack(message, options_.version), relayPort_);
}

void Client::login() {
    CSRelayMsg& login = request(cmd::stRelayLoginReq);
    if (setText(login.stBody.stRelayLoginReq.szSigBuf, options_.signature) != BIX_OK) {
        end("the signature is too long");
        return;
    }
    overTcp(login);
}

/// Shows that it is alive, and where its datagrams come from.
void Client::heartbeat() {
    overUdp(request(cmd::stCSRelayMsgHeartBeatReq));
    loop_.after(heartbeat_, [this] { heartbeat(); });
}

void Client::sendInput() {
    const auto fill = [this](CSRelayData& data, const Sent& input) {
        data.dwObjectId = options_.player;
        data.wSequance = input.sequence;
        data.bUserStatusFlag = static_cast<uint8_t>(options_.version);
        setMove(data, input.choice.move);
    };
    sent_.push_back({++sequence_, choose(*game_, options_.player)});
    if (sent_.size() == 1) {
        CSRelayMsg& input = request(cmd::stRelayInputing);
        CSRelayInput& one = input.stBody.stRelayInputing;
        fill(one.stRelayData, sent_.back());
        // Set whatever the version: packed for version 1 it stays out, and the relay reads 1.
        one.bRepeatCount = sent_.back().choice.sprint ? SPRINT : 1;
        overUdp(input);
        return;
    }
    // The one before is in no frame yet: it may be lost, and is sent again.
    CSRelayMsg& again = request(cmd::stRelayInputMulty);
    CSRelayInputMulty& several = again.stBody.stRelayInputMulty;
    if (sent_.size() > bound(several.astRelayData)) {
        sent_.pop_front();
    }
    for (const Sent& input : sent_) {
        fill(several.astRelayData[several.bFrameCount++], input);
    }
    numbers_.resent += static_cast<uint32_t>(sent_.size() - 1);
    overUdp(again);
}

void Client::sendCheck() {
    CSRelayMsg& check = request(cmd::stRelayCheckReq);
    setCheck(check.stBody.stRelayCheckReq.stRelayData, {game_->tick(), game_->hash()});
    overTcp(check);
}

// ---- The end ----

void Client::watch() {
    if (Clock::now() - heard_ > milliseconds(options_.patienceMs)) {
        end("the relay is silent");
        return;
    }
    loop_.after(WATCH, [this] { watch(); });
}

void Client::end(const std::string& problem) {
    if (problem_.empty()) {
        problem_ = problem;
    }
    if (problem.empty()) {
        tcp_->close();
    }
    loop_.stop();
}

} // namespace lockstep

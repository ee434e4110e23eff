#include "examples/lockstep/Relay.h"

#include "examples/lockstep/Payload.h"
#include "protocol/Stream.h"

#include <algorithm>

namespace lockstep {

using namespace cs_relay_msg;
using std::chrono::milliseconds;

namespace {

// A client sends nothing longer. The limit is what a stranger can make the relay hold.
constexpr size_t LONGEST_REQUEST = CSRelayMsgHead::maxWireSize + CSRelayInputMulty::maxWireSize;
constexpr uint32_t FRAMES_IN_DATAGRAM = 2; // the newest, and the one before in case its datagram was lost
constexpr uint32_t MOST_REPEATS = 2;
constexpr uint32_t MOST_EMPTY = 20; // frames in a row: a game that nobody plays waits
constexpr uint32_t HEARTBEAT_MS = 200;
constexpr milliseconds WATCH{100};

/// Why a client is refused.
enum Reason : uint32_t { BAD_BYTES = 400, NOT_LOGGED_IN = 401, NO_SUCH_FRAME = 404, STATE_DIFFERS = 409 };

} // namespace

Relay::Relay(Loop& loop, const RelayOptions& options)
    : loop_(loop), options_(options), post_(options.log, options.capture),
      listener_(loop, [this](std::shared_ptr<Connection> tcp) { accepted(std::move(tcp)); }),
      datagrams_(loop, options.loss, options.seed,
                 [this](std::string_view bytes, uint16_t port) { datagram(bytes, port); }),
      next_(std::make_unique<CSRelayFrame>()), frames_(std::make_unique<CSRelayMsg>()) {
    next_->construct();
    if (!beginMessage(*frames_, cmd::stRelayLockStep)) {
        problem_ = "no command for frames";
    }
    frames_->stHead.dwRoomID = ROOM;
    watch();
}

// ---- From the network ----

void Relay::accepted(std::shared_ptr<Connection> tcp) {
    Session& session = sessions_.emplace_back(Session{std::move(tcp), Framer(LONGEST_REQUEST), Clock::now()});
    session.tcp->start([this, &session](std::string_view bytes) { received(session, bytes); },
                       [this, &session] { closed(session); });
}

void Relay::received(Session& session, std::string_view bytes) {
    session.heard = Clock::now();
    const bool goOn = session.framer.take(bytes, [&](std::string_view message) {
        const CSRelayMsg* request = post_.unpack(message);
        return request != nullptr && handle(session, *request);
    });
    if (!goOn) {
        if (!session.framer.problem().empty()) {
            post_.note("a stream ends: " + session.framer.problem());
            CSRelayMsg& nothing = post_.begin(cmd::stRelayError, 0); // what was asked is not known
            refuse(session, nothing, BAD_BYTES, true, session.framer.problem());
        }
        session.tcp->close();
    }
}

void Relay::closed(const Session& session) {
    if (session.player != nullptr) {
        session.player->session = nullptr;
        session.player->started = false;
        session.player->port = 0;
    }
    sessions_.remove_if([&session](const Session& other) { return &other == &session; });
    const auto finished = std::count_if(players_.begin(), players_.end(),
                                        [](const auto& player) { return player.second.finished; });
    if (sessions_.empty() && finished >= static_cast<std::ptrdiff_t>(options_.finishers)) {
        loop_.stop();
    }
}

/// Nothing is answered to a datagram that is not from a player: who sent it may be anybody.
void Relay::datagram(std::string_view bytes, uint16_t port) {
    const CSRelayMsg* message = post_.unpack(bytes);
    if (message == nullptr) {
        return;
    }
    const auto found = players_.find(message->stHead.dwUserID);
    if (found == players_.end() || found->second.session == nullptr) {
        return;
    }
    Player& player = found->second;
    player.port = port;
    player.session->heard = Clock::now();
    switch (message->stHead.bCmdId) {
    case cmd::stRelayInputing: {
        const CSRelayInput& input = message->stBody.stRelayInputing;
        addInput(player, input.stRelayData, input.bRepeatCount); // 1 from a client at version 1
        break;
    }
    case cmd::stRelayInputMulty: {
        const CSRelayInputMulty& inputs = message->stBody.stRelayInputMulty;
        for (uint8_t i = 0; i < inputs.bFrameCount; ++i) {
            addInput(player, inputs.astRelayData[i], 1);
        }
        break;
    }
    case cmd::stCSRelayMsgHeartBeatReq: {
        CSRelayMsg& alive = answer(*message, cmd::stCSRelayMsgHeartBeatRes);
        alive.stBody.stCSRelayMsgHeartBeatRes.dwHeartBeatIntervalMs = HEARTBEAT_MS;
        datagrams_.send(post_.pack(alive, player.session->version), port);
        break;
    }
    default:
        break;
    }
}

// ---- Requests ----

bool Relay::handle(Session& session, const CSRelayMsg& request) {
    session.version = request.stHead.bVersion;
    if (request.stHead.bCmdId == cmd::stRelayLoginReq) {
        return login(session, request);
    }
    if (session.player == nullptr || session.player->id != request.stHead.dwUserID) {
        refuse(session, request, NOT_LOGGED_IN, true, "log in first");
        return false;
    }
    switch (request.stHead.bCmdId) {
    case cmd::stRelayStartReq:
        return start(session, request);
    case cmd::stRelaySyncReq:
        return sync(session, request);
    case cmd::stCSRelaySeekPlayReq:
        return seek(session, request);
    case cmd::stCSRelayMsgStatUserReq:
        return statistics(session, request);
    case cmd::stRelayCheckReq:
        return check(session, request);
    case cmd::stRelayStopReq:
        return stop(session, request);
    default:
        refuse(session, request, BAD_BYTES, false, "not a request of this game");
        return true;
    }
}

bool Relay::login(Session& session, const CSRelayMsg& request) {
    const uint32_t id = request.stHead.dwUserID;
    if (request.stHead.dwRoomID != ROOM || request.stBody.stRelayLoginReq.szSigBuf != signature(id)) {
        refuse(session, request, NOT_LOGGED_IN, true, "no such player, room or signature");
        return false;
    }
    Player& player = players_[id];
    if (Session* before = player.session; before != nullptr && before != &session) {
        send(*before, post_.begin(cmd::stRelayReloginNotify, id)); // somebody else has come in its place
        before->player = nullptr;
        before->tcp->close();
    }
    player.id = id;
    player.session = &session;
    session.player = &player;
    progress_ = Clock::now();

    send(session, answer(request, cmd::stRelayLoginRes));
    CSRelayMsg& settings = answer(request, cmd::stRelayMsgPack);
    setSettings(settings.stBody.stRelayMsgPack, {options_.seed, options_.frames, datagrams_.port()});
    send(session, settings);
    return true;
}

bool Relay::start(Session& session, const CSRelayMsg& request) {
    CSRelayMsg& begin = answer(request, cmd::stRelayStartRes);
    begin.stBody.stRelayStartRes.dwBeginFrameID = frame_ + 1;
    begin.stBody.stRelayStartRes.bNeedToPlayFromFrame0 = frame_ > 0 ? 1 : 0;
    send(session, begin);

    session.player->started = true;
    const auto started = std::count_if(players_.begin(), players_.end(),
                                       [](const auto& player) { return player.second.started; });
    if (!running_ && started >= static_cast<std::ptrdiff_t>(options_.players)) {
        running_ = true;
        tick();
    }
    return true;
}

bool Relay::sync(Session& session, const CSRelayMsg& request) {
    const uint32_t first = request.stBody.stRelaySyncReq.dwFrameIdBegin;
    const uint32_t last = request.stBody.stRelaySyncReq.dwFrameIdEnd;
    if (last < first || !isKept(first, uint64_t{last} - first + 1)) {
        refuse(session, request, NO_SUCH_FRAME, false, "no such frames");
        return true;
    }
    CSRelayMsg& frame = answer(request, cmd::stRelaySyncRes);
    for (uint32_t id = first; id <= last; ++id) {
        store_.get(id, frame.stBody.stRelaySyncRes.stSyncData);
        send(session, frame);
        ++session.player->synced;
    }
    return true;
}

bool Relay::seek(Session& session, const CSRelayMsg& request) {
    const CSRelaySeekPlayReq& wanted = request.stBody.stCSRelaySeekPlayReq;
    for (uint32_t i = 0; i < wanted.dwReplayPieceInofCount; ++i) {
        const ReplayPieceInof& piece = wanted.astReplayPieceInof[i];
        if (!isKept(piece.dwStartFrame, piece.dwFrameCount)) {
            refuse(session, request, NO_SUCH_FRAME, false, "no such frames");
            return true;
        }
    }
    CSRelayMsg& found = answer(request, cmd::stCSRelaySeekPlayRes);
    setText(found.stBody.stCSRelaySeekPlayRes.szRetStr, "the frames follow");
    send(session, found);

    CSRelayFramePack& pack = frames_->stBody.stRelayLockStep;
    constexpr uint8_t MOST = sizeof(pack.astRelayData) / sizeof(pack.astRelayData[0]);
    frames_->stHead.dwUserID = session.player->id;
    for (uint32_t i = 0; i < wanted.dwReplayPieceInofCount; ++i) {
        uint32_t id = wanted.astReplayPieceInof[i].dwStartFrame;
        uint32_t left = wanted.astReplayPieceInof[i].dwFrameCount;
        while (left > 0) {
            for (pack.bCount = 0; pack.bCount < MOST && left > 0; ++pack.bCount, ++id, --left) {
                store_.get(id, pack.astRelayData[pack.bCount]);
            }
            send(session, *frames_);
        }
    }
    return true;
}

bool Relay::statistics(Session& session, const CSRelayMsg& request) {
    const Player& player = *session.player;
    CSRelayMsg& numbers = answer(request, cmd::stCSRelayMsgStatUserRes);
    CSRelayStatRes& texts = numbers.stBody.stCSRelayMsgStatUserRes;
    const bool fit =
        setText(texts.szRoomRetStr, "frames=" + std::to_string(frame_) +
                                        " players=" + std::to_string(players_.size())) == BIX_OK &&
        setText(texts.szUserRetStr, "inputs=" + std::to_string(player.inputs) +
                                        " frames-synced=" + std::to_string(player.synced)) == BIX_OK &&
        setText(texts.szProcessRetStr,
                "sessions=" + std::to_string(sessions_.size()) +
                    " datagrams-thrown-away=" + std::to_string(datagrams_.thrownAway())) == BIX_OK;
    send(session, numbers);
    return fit;
}

bool Relay::check(Session& session, const CSRelayMsg& request) {
    Check state{};
    if (!getCheck(request.stBody.stRelayCheckReq.stRelayData, state) || state.tick > frame_) {
        refuse(session, request, BAD_BYTES, true, "not a state");
        return false;
    }
    const auto [first, isNew] = hashes_.emplace(state.tick, state.hash);
    if (first->second != state.hash) {
        problem_ = "the state of player " + std::to_string(session.player->id) + " differs at frame " +
                   std::to_string(state.tick);
        session.player->finished = true; // nothing can mend it
        refuse(session, request, STATE_DIFFERS, true, problem_);
        return false;
    }
    return true;
}

bool Relay::stop(Session& session, const CSRelayMsg& request) {
    session.player->finished = true;
    session.player->started = false; // no more frames
    progress_ = Clock::now();
    send(session, answer(request, cmd::stRelayStopRes));
    return true; // the client closes, once it has this
}

CSRelayMsg& Relay::answer(const CSRelayMsg& request, uint8_t command) {
    return post_.begin(command, request.stHead.dwUserID, request.stHead.wAsyncID);
}

void Relay::send(Session& session, const CSRelayMsg& message) {
    session.tcp->send(post_.pack(message, session.version));
}

void Relay::refuse(Session& session, const CSRelayMsg& request, uint32_t code, bool fatal,
                   const std::string& why) {
    const uint8_t command = request.stHead.bCmdId;
    CSRelayMsg& refusal = answer(request, cmd::stRelayError);
    CSRelayError& error = refusal.stBody.stRelayError;
    error.dwError_code = code;
    error.bRequest_cmd_code = command;
    error.bIsFatalError = fatal ? 1 : 0;
    if (setText(error.szError_code_str, why) != BIX_OK) {
        setText(error.szError_code_str, "refused");
    }
    send(session, refusal);
}

// ---- The game ----

void Relay::addInput(Player& player, const CSRelayData& data, uint32_t times) {
    // An input comes again until a frame has it, and datagrams overtake each other: only a later one counts.
    const auto ahead = static_cast<int16_t>(data.wSequance - player.sequence);
    if (ahead <= 0 || !running_) {
        return;
    }
    constexpr size_t MOST = sizeof(next_->astRelayData) / sizeof(next_->astRelayData[0]);
    for (uint32_t i = 0; i < std::min(times, MOST_REPEATS) && next_->bCount < MOST; ++i) {
        CSRelayData& added = next_->astRelayData[next_->bCount++];
        added = data;
        added.dwObjectId = player.id; // a player moves nobody else
    }
    player.sequence = data.wSequance;
    ++player.inputs;
}

void Relay::tick() {
    if (frame_ < options_.frames && (next_->bCount > 0 || frame_ - lastWithInputs_ < MOST_EMPTY)) {
        makeFrame();
    }
    sendNewest(); // the last one again and again: nothing behind it would show that it was lost
    loop_.after(milliseconds(options_.tickMs), [this] { tick(); });
}

void Relay::makeFrame() {
    next_->dwFrameId = ++frame_;
    next_->dwLastHasDataFrameId = lastWithInputs_;
    store_.put(*next_);
    if (next_->bCount > 0) {
        lastWithInputs_ = frame_;
    }
    next_->bCount = 0; // what lies behind the count is neither sent nor cleared
    progress_ = Clock::now();
    if (frame_ % 10 == 0) {
        std::printf("frame %u\n", frame_);
        std::fflush(stdout);
    }
}

void Relay::sendNewest() {
    CSRelayFramePack& pack = frames_->stBody.stRelayLockStep;
    const auto count = static_cast<uint8_t>(std::min(frame_, FRAMES_IN_DATAGRAM));
    for (uint8_t i = 0; i < count; ++i) {
        store_.get(frame_ - i, pack.astRelayData[i]);
    }
    for (const auto& [id, player] : players_) {
        if (!player.started || player.port == 0) {
            continue;
        }
        frames_->stHead.dwUserID = id;
        pack.bCount = count;
        std::string_view bytes = post_.pack(*frames_, player.session->version);
        if (bytes.size() > Post::DATAGRAM) { // a message may be half a megabyte, a datagram may not
            pack.bCount = 1;
            bytes = post_.pack(*frames_, player.session->version);
        }
        datagrams_.send(bytes, player.port);
    }
}

bool Relay::isKept(uint64_t first, uint64_t count) const {
    return first >= 1 && count >= 1 && first + count - 1 <= frame_; // in 64 bits nothing wraps around
}

// ---- Peers that vanish ----

void Relay::watch() {
    const auto now = Clock::now();
    const milliseconds patience(options_.patienceMs);
    for (const Session& session : sessions_) {
        if (now - session.heard > patience) {
            session.tcp->close();
        }
    }
    if (now - progress_ > patience) {
        problem_ = problem_.empty() ? "nothing goes on: players are missing" : problem_;
        loop_.stop();
        return;
    }
    loop_.after(WATCH, [this] { watch(); });
}

} // namespace lockstep

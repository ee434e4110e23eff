/// One player's program: it plays the game from the frames that the relay sends, and sends its player's
/// inputs.
#pragma once

#include "examples/lockstep/Bot.h"
#include "examples/lockstep/FrameStore.h"
#include "examples/lockstep/Framer.h"
#include "examples/lockstep/Game.h"
#include "examples/lockstep/Net.h"
#include "examples/lockstep/Payload.h"
#include "examples/lockstep/Post.h"

#include <deque>
#include <optional>
#include <string>

namespace lockstep {

struct ClientOptions {
    uint16_t port = 0; ///< of the relay
    uint32_t player = 0;
    uint32_t version = 3; ///< of this program, which understands no later one
    std::string signature;
    uint32_t loss = 0; ///< of 100 datagrams
    uint32_t patienceMs = 10000;
    uint32_t spoilAt = 0; ///< tick at which its game goes wrong; 0 is never
    bool draw = false;
    std::string log;
};

/// What happened to the frames and inputs.
struct Numbers {
    uint32_t received = 0; ///< frames in datagrams, each counted once
    uint32_t sought = 0;   ///< frames from before it came, played at once
    uint32_t synced = 0;   ///< frames lost, and asked for
    uint32_t empty = 0;    ///< frames lost that did not need to be asked for
    uint32_t resent = 0;   ///< inputs sent again
};

class Client {
public:
    Client(Loop& loop, const ClientOptions& options);

    /// Once the loop has ended: why the game was not played to its end; or nothing.
    const std::string& problem() const { return problem_; }
    const Game& game() const { return *game_; } ///< if there is no problem
    const Numbers& numbers() const { return numbers_; }

private:
    using Clock = std::chrono::steady_clock;

    /// An input that is in no frame yet, as far as is known.
    struct Sent {
        uint16_t sequence;
        Choice choice;
    };

    // From the network.
    void received(std::string_view bytes);
    void datagram(std::string_view bytes, uint16_t port);
    const cs_relay_msg::CSRelayMsg* read(std::string_view bytes);
    bool handle(const cs_relay_msg::CSRelayMsg& message);
    void prepare(const cs_relay_msg::CSRelayMsgPack& settings);
    void begin(const cs_relay_msg::CSRelayMsgStartRes& start);
    uint32_t keep(const cs_relay_msg::CSRelayFramePack& frames, uint8_t version);
    bool keep(const cs_relay_msg::CSRelayFrame& frame, uint8_t version);

    // The game.
    void advance();
    void step(const cs_relay_msg::CSRelayFrame& frame);
    void closeGap();

    // To the relay.
    cs_relay_msg::CSRelayMsg& request(uint8_t command);
    void overTcp(const cs_relay_msg::CSRelayMsg& message);
    void overUdp(const cs_relay_msg::CSRelayMsg& message);
    void login();
    void heartbeat();
    void sendInput();
    void sendCheck();

    void watch();
    void end(const std::string& problem);

    Loop& loop_;
    ClientOptions options_;
    Post post_;
    Datagrams datagrams_;
    std::shared_ptr<Connection> tcp_;
    Framer framer_;
    uint16_t asyncId_ = 0;
    uint16_t relayPort_ = 0;
    std::chrono::milliseconds heartbeat_{20}; // until the relay says how often
    Clock::time_point heard_ = Clock::now();

    std::optional<Game> game_;
    uint32_t lastTick_ = 0;
    uint32_t begin_ = 0; ///< the frame at which it came in; 0 while that is not known
    uint32_t asked_ = 0; ///< all frames up to this one are here or have been asked for
    FrameStore store_;
    std::unique_ptr<cs_relay_msg::CSRelayFrame> frame_; ///< used again for each frame
    std::vector<Input> inputs_;

    uint16_t sequence_ = 0;
    std::deque<Sent> sent_;
    bool over_ = false;
    Numbers numbers_;
    std::string problem_;
};

} // namespace lockstep

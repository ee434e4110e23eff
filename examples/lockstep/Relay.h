/// The relay server: it gathers the players' inputs into frames, sends these to everybody, and keeps them for
/// those who missed some. It does not know the game.
#pragma once

#include "examples/lockstep/FrameStore.h"
#include "examples/lockstep/Framer.h"
#include "examples/lockstep/Net.h"
#include "examples/lockstep/Post.h"

#include <list>
#include <map>
#include <string>

namespace lockstep {

struct RelayOptions {
    uint32_t players = 3;   ///< the game starts when so many are there
    uint32_t finishers = 3; ///< the relay ends when so many have played it to its end
    uint32_t frames = 300;
    uint32_t tickMs = 50;
    uint32_t seed = 1;
    uint32_t loss = 0;           ///< of 100 datagrams
    uint32_t patienceMs = 10000; ///< of silence from a client, and without any progress
    std::string log;
    std::string capture;
};

class Relay {
public:
    Relay(Loop& loop, const RelayOptions& options);

    uint16_t port() const { return listener_.port(); }

    /// Once the loop has ended: why the game was not played to its end by all, with the same state; or
    /// nothing.
    const std::string& problem() const { return problem_; }

private:
    using Clock = std::chrono::steady_clock;
    struct Player;

    /// A connection, and who logged in over it.
    struct Session {
        std::shared_ptr<Connection> tcp;
        Framer framer;
        Clock::time_point heard;
        uint8_t version = 0; ///< of the client's program: everything to it is packed for this version
        Player* player = nullptr;
    };

    /// Stays when the connection breaks, for the player to come back.
    struct Player {
        uint32_t id = 0;
        Session* session = nullptr;
        uint16_t port = 0; ///< where its datagrams come from; 0 while there was none
        uint16_t sequence = 0;
        bool started = false;
        bool finished = false;
        uint32_t inputs = 0;
        uint32_t synced = 0;
    };

    // From the network.
    void accepted(std::shared_ptr<Connection> tcp);
    void received(Session& session, std::string_view bytes);
    void closed(const Session& session);
    void datagram(std::string_view bytes, uint16_t port);

    // Requests over TCP; false ends the session.
    bool handle(Session& session, const cs_relay_msg::CSRelayMsg& request);
    bool login(Session& session, const cs_relay_msg::CSRelayMsg& request);
    bool start(Session& session, const cs_relay_msg::CSRelayMsg& request);
    bool sync(Session& session, const cs_relay_msg::CSRelayMsg& request);
    bool seek(Session& session, const cs_relay_msg::CSRelayMsg& request);
    bool statistics(Session& session, const cs_relay_msg::CSRelayMsg& request);
    bool check(Session& session, const cs_relay_msg::CSRelayMsg& request);
    bool stop(Session& session, const cs_relay_msg::CSRelayMsg& request);

    cs_relay_msg::CSRelayMsg& answer(const cs_relay_msg::CSRelayMsg& request, uint8_t command);
    void send(Session& session, const cs_relay_msg::CSRelayMsg& message);
    void refuse(Session& session, const cs_relay_msg::CSRelayMsg& request, uint32_t code, bool fatal,
                const std::string& why);

    // The game.
    void addInput(Player& player, const cs_relay_msg::CSRelayData& data, uint32_t times);
    void tick();
    void makeFrame();
    void sendNewest();
    bool isKept(uint64_t first, uint64_t count) const;

    void watch();

    Loop& loop_;
    RelayOptions options_;
    Post post_;
    Listener listener_;
    Datagrams datagrams_;
    std::list<Session> sessions_;
    std::map<uint32_t, Player> players_;

    std::unique_ptr<cs_relay_msg::CSRelayFrame> next_; ///< gathers the inputs of the next tick
    std::unique_ptr<cs_relay_msg::CSRelayMsg> frames_; ///< a message of frames, kept to be used again
    FrameStore store_;
    uint32_t frame_ = 0; ///< the newest
    uint32_t lastWithInputs_ = 0;
    bool running_ = false;
    std::map<uint32_t, uint64_t> hashes_; ///< the first one that came of each tick
    Clock::time_point progress_ = Clock::now();
    std::string problem_;
};

} // namespace lockstep

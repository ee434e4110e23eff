/// The game: players on a grid collect gems. It knows nothing of messages or sockets.
///
/// The same seed and the same inputs in the same order give the same state everywhere: only integers, a
/// random generator of its own, and nothing that depends on time, memory addresses or the machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace lockstep {

enum class Move : uint8_t { Stay, Up, Down, Left, Right };

/// What one player did in one tick.
struct Input {
    uint32_t player;
    Move move;
    uint8_t program; ///< version of the player's program: shown, not part of the state
};

struct Cell {
    uint8_t x;
    uint8_t y;
    friend bool operator==(Cell a, Cell b) { return a.x == b.x && a.y == b.y; }
};

struct Player {
    uint32_t id;
    Cell at;
    uint32_t gems;
    uint32_t lastInput; ///< tick
    uint8_t program;
};

class Game {
public:
    static constexpr uint8_t WIDTH = 40;
    static constexpr uint8_t HEIGHT = 14;
    static constexpr size_t GEMS = 9;

    explicit Game(uint32_t seed);

    /// One tick. A player whose first input this is enters the grid.
    void step(const std::vector<Input>& inputs);

    uint32_t tick() const { return tick_; }
    const std::vector<Player>& players() const { return players_; } ///< in the order in which they entered
    const std::vector<Cell>& gems() const { return gems_; }
    const Player* find(uint32_t player) const;

    /// Equal states have equal hashes; of two that differ, as good as never.
    uint64_t hash() const;

    /// Makes this game differ from all others: to see that it is noticed.
    void spoil() { random(); }

private:
    uint32_t random();
    Cell freeCell();
    Player& enter(uint32_t player);

    uint32_t tick_ = 0;
    uint32_t random_;
    std::vector<Player> players_;
    std::vector<Cell> gems_;
};

} // namespace lockstep

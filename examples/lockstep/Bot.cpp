#include "examples/lockstep/Bot.h"

#include <cstdlib>

namespace lockstep {

Choice choose(const Game& game, uint32_t player) {
    const Player* self = game.find(player);
    if (self == nullptr) {
        return {Move::Stay, false}; // the first input enters the grid
    }
    constexpr int FAR = 5;
    int best = Game::WIDTH * Game::HEIGHT;
    int dx = 0;
    int dy = 0;
    for (size_t i = 0; i < game.gems().size(); ++i) {
        const Cell gem = game.gems()[i];
        const int toX = gem.x - self->at.x;
        const int toY = gem.y - self->at.y;
        // Each player has a taste of its own, or all would run for the same gem.
        const int cost = std::abs(toX) + std::abs(toY) + static_cast<int>((i + player) % Game::GEMS) * 2;
        if (cost < best) {
            best = cost;
            dx = toX;
            dy = toY;
        }
    }
    const bool sprint = std::abs(dx) + std::abs(dy) >= FAR;
    if (std::abs(dx) > std::abs(dy)) {
        return {dx < 0 ? Move::Left : Move::Right, sprint};
    }
    return {dy < 0 ? Move::Up : Move::Down, sprint};
}

} // namespace lockstep

#include "examples/lockstep/Game.h"

#include <algorithm>

namespace lockstep {

namespace {

Cell moved(Cell at, Move move) {
    if (move == Move::Up && at.y > 0) {
        --at.y;
    } else if (move == Move::Down && at.y + 1 < Game::HEIGHT) {
        ++at.y;
    } else if (move == Move::Left && at.x > 0) {
        --at.x;
    } else if (move == Move::Right && at.x + 1 < Game::WIDTH) {
        ++at.x;
    }
    return at;
}

} // namespace

Game::Game(uint32_t seed) : random_(seed | 1) {
    while (gems_.size() < GEMS) {
        gems_.push_back(freeCell());
    }
}

void Game::step(const std::vector<Input>& inputs) {
    ++tick_;
    for (const Input& input : inputs) {
        Player& player = enter(input.player);
        player.lastInput = tick_;
        player.program = input.program;
        player.at = moved(player.at, input.move);
        const auto gem = std::find(gems_.begin(), gems_.end(), player.at);
        if (gem != gems_.end()) { // who comes earlier in the frame gets it
            ++player.gems;
            *gem = freeCell();
        }
    }
}

const Player* Game::find(uint32_t player) const {
    const auto found = std::find_if(players_.begin(), players_.end(),
                                    [player](const Player& known) { return known.id == player; });
    return found == players_.end() ? nullptr : &*found;
}

uint64_t Game::hash() const {
    uint64_t hash = 0xcbf29ce484222325; // FNV-1a, 32 bits at a time
    const auto add = [&hash](uint32_t value) { hash = (hash ^ value) * 0x100000001b3; };
    add(tick_);
    add(random_);
    for (const Player& player : players_) {
        add(player.id);
        add(player.at.x);
        add(player.at.y);
        add(player.gems);
    }
    for (const Cell gem : gems_) {
        add(gem.x);
        add(gem.y);
    }
    return hash;
}

/// Xorshift: the standard library's distributions may differ from one implementation to the next.
uint32_t Game::random() {
    random_ ^= random_ << 13;
    random_ ^= random_ >> 17;
    random_ ^= random_ << 5;
    return random_;
}

Cell Game::freeCell() {
    Cell cell{};
    do {
        cell = {static_cast<uint8_t>(random() % WIDTH), static_cast<uint8_t>(random() % HEIGHT)};
    } while (std::find(gems_.begin(), gems_.end(), cell) != gems_.end());
    return cell;
}

Player& Game::enter(uint32_t player) {
    for (Player& known : players_) {
        if (known.id == player) {
            return known;
        }
    }
    players_.push_back({player, freeCell(), 0, 0, 0});
    return players_.back();
}

} // namespace lockstep

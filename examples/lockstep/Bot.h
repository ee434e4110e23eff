/// Plays: chooses a player's next move. Need not be deterministic, since its choice travels as an input.
#pragma once

#include "examples/lockstep/Game.h"

namespace lockstep {

struct Choice {
    Move move;
    bool sprint; ///< two steps at once
};

Choice choose(const Game& game, uint32_t player);

} // namespace lockstep

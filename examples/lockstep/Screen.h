/// Draws the game as text.
#pragma once

#include "examples/lockstep/Game.h"

#include <string>

namespace lockstep {

struct Numbers; // Client.h

/// The whole screen, with the terminal's codes that put it over the one before.
std::string draw(const Game& game, uint32_t self, uint32_t lastTick, const Numbers& numbers);

} // namespace lockstep

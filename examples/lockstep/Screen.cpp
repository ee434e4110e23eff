#include "examples/lockstep/Screen.h"

#include "examples/lockstep/Client.h"

#include <cstdio>

namespace lockstep {

namespace {

constexpr const char* HOME = "\x1b[H";           // to the top left corner
constexpr const char* REST_OF_LINE = "\x1b[K\n"; // cleared
constexpr const char* REST_OF_SCREEN = "\x1b[J";
constexpr const char* PLAIN = "\x1b[0m";
constexpr const char* GEM = "\x1b[33m*\x1b[0m";
constexpr uint32_t AWAY = 15; // ticks without an input

std::string colour(size_t player) {
    return "\x1b[1;" + std::to_string(31 + (player * 5 + 1) % 6) + "m";
}
char letter(size_t player) {
    return static_cast<char>('A' + player % 26);
}

std::string cell(const Game& game, Cell at) {
    for (size_t i = 0; i < game.players().size(); ++i) {
        if (game.players()[i].at == at) {
            return colour(i) + letter(i) + PLAIN;
        }
    }
    for (const Cell gem : game.gems()) {
        if (gem == at) {
            return GEM;
        }
    }
    return " ";
}

std::string score(const Game& game, size_t i, uint32_t self) {
    const Player& player = game.players()[i];
    char text[80];
    std::snprintf(text, sizeof(text), "%c %u  version %u %4u gems %s", letter(i), player.id,
                  unsigned{player.program}, player.gems,
                  player.lastInput + AWAY < game.tick() ? "(away)"
                  : player.id == self                   ? "<- here"
                                                        : "");
    return colour(i) + text + PLAIN;
}

} // namespace

std::string draw(const Game& game, uint32_t self, uint32_t lastTick, const Numbers& numbers) {
    const std::string border = "+" + std::string(Game::WIDTH, '-') + "+";
    std::string text = std::string(HOME) + border + REST_OF_LINE;
    for (uint8_t y = 0; y < Game::HEIGHT; ++y) {
        text += '|';
        for (uint8_t x = 0; x < Game::WIDTH; ++x) {
            text += cell(game, {x, y});
        }
        text += '|';
        if (y > 0 && y <= game.players().size()) {
            text += "  " + score(game, y - 1u, self);
        }
        text += REST_OF_LINE;
    }
    char line[120];
    std::snprintf(line, sizeof(line),
                  "frame %u of %u   lost and synced %u   inputs sent again %u   state %016llx", game.tick(),
                  lastTick, numbers.synced, numbers.resent, static_cast<unsigned long long>(game.hash()));
    return text + border + REST_OF_LINE + line + REST_OF_LINE + REST_OF_SCREEN;
}

} // namespace lockstep

// The parts of the lockstep game, without a network.
#include "examples/lockstep/Bot.h"
#include "examples/lockstep/FrameStore.h"
#include "examples/lockstep/Framer.h"
#include "examples/lockstep/Game.h"
#include "examples/lockstep/Payload.h"
#include "protocol/Stream.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace cs_relay_msg;
using namespace lockstep;

namespace {

std::vector<Input> inputsOf(const Game& game, std::initializer_list<uint32_t> players) {
    std::vector<Input> inputs;
    for (const uint32_t player : players) {
        inputs.push_back({player, choose(game, player).move, 3});
    }
    return inputs;
}

TEST(Game, SameInputsGiveTheSameState) {
    Game a(7);
    Game b(7);
    for (int i = 0; i < 500; ++i) {
        const std::vector<Input> inputs = inputsOf(a, {1001, 1002, 1003});
        a.step(inputs);
        b.step(inputs);
        ASSERT_EQ(a.hash(), b.hash()) << i;
    }
    uint32_t gems = 0;
    for (const Player& player : a.players()) {
        gems += player.gems;
    }
    EXPECT_GT(gems, 10u);
}

// What two machines, or two compilers, can be compared by. The numbers come from a second game, written in
// Python.
TEST(Game, IsTheSameEverywhere) {
    Game game(1);
    for (int i = 0; i < 400; ++i) { // one goes along the rows, the other along the columns
        const Move row = i % 40 == 39 ? Move::Down : i / 40 % 2 == 0 ? Move::Right : Move::Left;
        const Move column = i % 14 == 13 ? Move::Right : i / 14 % 2 == 0 ? Move::Down : Move::Up;
        game.step({{1001, row, 3}, {1002, column, 3}});
    }
    EXPECT_EQ(game.hash(), 0xf62323b2dbd9ede0u);
    EXPECT_EQ(game.players()[0].gems, 7u);
    EXPECT_EQ(game.players()[1].gems, 8u);
}

TEST(Game, WhateverDiffersShowsInTheHash) {
    const Game start(7);
    const auto hashAfter = [&start](const std::vector<Input>& inputs) {
        Game game = start;
        game.step(inputs);
        return game.hash();
    };
    const uint64_t hash = hashAfter({{1, Move::Stay, 3}, {2, Move::Stay, 3}});
    EXPECT_NE(hash, hashAfter({{2, Move::Stay, 3}, {1, Move::Stay, 3}}));
    EXPECT_NE(hash, hashAfter({{1, Move::Stay, 3}}));
    EXPECT_NE(hash, start.hash());
    EXPECT_EQ(hash,
              hashAfter({{1, Move::Stay, 2}, {2, Move::Stay, 1}})); // the program's version is no part of it
    Game spoilt = start;
    spoilt.spoil();
    EXPECT_NE(start.hash(), spoilt.hash());
}

TEST(Game, PlayersStayOnTheGrid) {
    for (const Move move : {Move::Up, Move::Down, Move::Left, Move::Right}) {
        Game game(3);
        for (int i = 0; i < 2 * Game::WIDTH; ++i) {
            game.step({{1, move, 3}});
            ASSERT_LT(game.players()[0].at.x, Game::WIDTH);
            ASSERT_LT(game.players()[0].at.y, Game::HEIGHT);
        }
    }
}

TEST(FrameStore, GivesBackWhatItWasGiven) {
    const auto frame = std::make_unique<CSRelayFrame>();
    const auto back = std::make_unique<CSRelayFrame>();
    frame->construct();
    frame->dwFrameId = 5;
    frame->dwLastHasDataFrameId = 2;
    frame->bCount = 1;
    ASSERT_TRUE(setMove(frame->astRelayData[0], Move::Left));
    FrameStore store;
    ASSERT_TRUE(store.put(*frame));
    ASSERT_TRUE(store.get(5, *back));
    EXPECT_TRUE(equal(*frame, *back));
    EXPECT_TRUE(store.has(5));
    EXPECT_FALSE(store.has(4));
    EXPECT_FALSE(store.get(4, *back));
    EXPECT_EQ(store.firstBehind(4), 5u);
    EXPECT_EQ(store.firstBehind(5), 0u);

    frame->dwFrameId = 6;
    frame->bCount = 101; // more than there is room for: no frame
    EXPECT_FALSE(store.put(*frame));
    EXPECT_FALSE(store.has(6));
}

/// Three messages one behind the other, and where each ends.
std::string threeMessages(std::vector<std::string>& each) {
    const auto message = std::make_unique<CSRelayMsg>();
    std::string wire;
    for (const uint8_t command : {cmd::stRelayStopReq, cmd::stRelayError, cmd::stRelayLoginReq}) {
        EXPECT_TRUE(beginMessage(*message, command));
        char bytes[256];
        size_t size = 0;
        EXPECT_EQ(message->pack(bytes, sizeof(bytes), &size), BIX_OK);
        each.emplace_back(bytes, size);
        wire += each.back();
    }
    return wire;
}

TEST(Framer, FindsTheSameMessagesHoweverTheStreamIsCut) {
    std::vector<std::string> each;
    const std::string wire = threeMessages(each);
    for (size_t piece = 1; piece <= wire.size(); ++piece) {
        Framer framer(CSRelayMsg::maxWireSize);
        std::vector<std::string> found;
        for (size_t at = 0; at < wire.size(); at += piece) {
            ASSERT_TRUE(framer.take(std::string_view(wire).substr(at, piece), [&](std::string_view message) {
                found.emplace_back(message);
                return true;
            }));
        }
        ASSERT_EQ(found, each) << piece;
    }
}

TEST(Framer, StopsWhereItsCallerWantsTo) {
    std::vector<std::string> each;
    const std::string wire = threeMessages(each);
    Framer framer(CSRelayMsg::maxWireSize);
    int calls = 0;
    EXPECT_FALSE(framer.take(wire, [&calls](std::string_view) { return ++calls < 2; }));
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(framer.problem(), "");
}

TEST(Framer, TakesNoMessageAboveItsLimit) {
    std::vector<std::string> each;
    const std::string wire = threeMessages(each); // the second one is the largest
    const auto any = [](std::string_view) { return true; };
    Framer fits(each[1].size());
    EXPECT_TRUE(fits.take(wire, any));
    Framer tooSmall(each[1].size() - 1);
    EXPECT_FALSE(tooSmall.take(wire.substr(0, wire.size() / 2), any));
    EXPECT_NE(tooSmall.problem().find("longer than"), std::string::npos);
}

TEST(Payload, RefusesWhatItDidNotWrite) {
    const auto pack = std::make_unique<CSRelayMsgPack>();
    const auto data = std::make_unique<CSRelayData>();
    Settings settings{};
    ASSERT_TRUE(setSettings(*pack, {11, 22, 33}));
    ASSERT_TRUE(getSettings(*pack, settings));
    EXPECT_EQ(settings.seed, 11u);
    EXPECT_EQ(settings.lastTick, 22u);
    EXPECT_EQ(settings.port, 33u);
    ++pack->wLength;
    EXPECT_FALSE(getSettings(*pack, settings));
    pack->wLength = static_cast<uint16_t>(pack->wLength - 2);
    EXPECT_FALSE(getSettings(*pack, settings));

    Move move{};
    ASSERT_TRUE(setMove(*data, Move::Right));
    ASSERT_TRUE(getMove(*data, move));
    EXPECT_EQ(move, Move::Right);
    ++data->szRelayBuf[0];
    EXPECT_FALSE(getMove(*data, move));
    data->wRelayLen = 0;
    EXPECT_FALSE(getMove(*data, move));

    Check check{};
    ASSERT_TRUE(setCheck(*data, {44, 0x1122334455667788}));
    ASSERT_TRUE(getCheck(*data, check));
    EXPECT_EQ(check.tick, 44u);
    EXPECT_EQ(check.hash, 0x1122334455667788u);
    --data->wRelayLen;
    EXPECT_FALSE(getCheck(*data, check));
}

} // namespace

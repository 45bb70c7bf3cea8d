// An engine's view of a database that is no files but a function, and positions to ask it about.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <random>
#include <string>

#include "core/movegen.h"
#include "egdb/engine_egdb.h"

using Random = std::mt19937_64;

struct AskedDatabase {
    std::function<EgdbValue(const Position&, int side)> answer;
    int questions = 0;
    int conditional_questions = 0;
};

inline EgdbValue answer_question(void* handle, const Position& position, int side, bool conditional) {
    auto& asked = *static_cast<AskedDatabase*>(handle);
    ++asked.questions;
    asked.conditional_questions += conditional;
    EXPECT_EQ(position.side, side);
    EXPECT_FALSE(has_capture(position, side));
    return asked.answer(position, side);
}

// Each test begins without a database.
class EngineEgdbTest : public testing::Test {
  protected:
    void SetUp() override {
        egdb_engine = no_egdb();
        driver.lookup = answer_question;
        driver.handle = &asked;
        asked = AskedDatabase{};
    }
    void TearDown() override { egdb_engine = no_egdb(); }

    void open(int maxpieces, bool no_side_captures) {
        egdb_engine.wld = &driver;
        egdb_engine.maxpieces = maxpieces;
        egdb_engine.maxpieces_1side = 5;
        egdb_engine.maxkings_9pcs = 1;
        egdb_engine.maxkings_1side_8pcs = 5;
        egdb_engine.no_side_captures = no_side_captures;
    }

    AskedDatabase asked;
    EgdbDriver driver{answer_question, nullptr};
};

using Squares = std::initializer_list<int>;

inline Position position_with(int side, Squares black_men, Squares black_kings, Squares white_men,
                              Squares white_kings) {
    Position p{0, 0, 0, side, 0, nullptr};
    const auto add = [](uint64_t& set, Squares squares) {
        for (const int square : squares) set |= set_of_square(square);
    };
    add(p.black, black_men);
    add(p.black, black_kings);
    add(p.white, white_men);
    add(p.white, white_kings);
    add(p.king, black_kings);
    add(p.king, white_kings);
    EXPECT_TRUE(is_legal_setup(p));
    return p;
}

// Both sides have a piece; the side to move may be without a move.
inline Position random_pieces(Random& random, int pieces, int king_percent) {
    for (;;) {
        Position p{0, 0, 0, static_cast<int>(random() % 2), 0, nullptr};
        while (bit_count(p.black | p.white) < pieces) {
            const uint64_t mask = mask_of_square[random() % SQUARES];
            if ((p.black | p.white) & mask) continue;
            const bool white = random() % 2;
            (white ? p.white : p.black) |= mask;
            const uint64_t row = white ? WHITE_PROMOTION_ROW : BLACK_PROMOTION_ROW;
            if ((mask & row) || static_cast<int>(random() % 100) < king_percent) p.king |= mask;
        }
        if (p.black && p.white) return p;
    }
}

inline uint64_t mix_of(const Position& position, int side, uint64_t salt) {
    uint64_t x = salt + static_cast<uint64_t>(side);
    for (const uint64_t set : {position.black, position.white, position.king}) {
        x = (x ^ set) * 0x9e3779b97f4a7c15u;
        x ^= x >> 29;
    }
    return x;
}

inline std::string text_of(const Position& p) {
    return std::to_string(p.black) + "/" + std::to_string(p.white) + "/" + std::to_string(p.king) + "/" +
           std::to_string(p.side);
}

#include "tests/core/test_positions.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "core/notation.h"

namespace {

[[noreturn]] void give_up(std::string_view text) {
    std::fprintf(stderr, "no position: %.*s\n", static_cast<int>(text.size()), text.data());
    std::abort();
}

std::string pieces_text(uint64_t set, uint64_t king) {
    std::string text;
    for (int square = 1; square <= SQUARES; ++square) {
        if (!(set & set_of_square(square))) continue;
        if (!text.empty()) text += ',';
        if (king & set_of_square(square)) text += 'K';
        text += std::to_string(square);
    }
    return text;
}

}  // namespace

Position position_of(std::string_view text) {
    Position position;
    if (text.size() < 2 || (text[0] != 'W' && text[0] != 'B')) give_up(text);
    position.side = text[0] == 'W' ? WHITE : BLACK;
    uint64_t* set = nullptr;
    bool king = false;
    for (size_t i = 1; i < text.size();) {
        const char sign = text[i];
        if (sign == 'W' || sign == 'B') set = sign == 'W' ? &position.white : &position.black;
        if (sign == 'K') king = true;
        if (sign < '0' || sign > '9') {
            ++i;
            continue;
        }
        int square = 0;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9') square = square * 10 + (text[i++] - '0');
        if (!set || square < 1 || square > SQUARES) give_up(text);
        *set |= set_of_square(square);
        if (king) position.king |= set_of_square(square);
        king = false;
    }
    if (position.black & position.white) give_up(text);
    return position;
}

std::string letters_of(const Position& position) {
    return std::string(position.side == WHITE ? "W" : "B") + ":W" +
           pieces_text(position.white, position.king) + ":B" + pieces_text(position.black, position.king);
}

int random_between(std::mt19937_64& random, int least, int most) {
    return least + static_cast<int>(random() % static_cast<uint64_t>(most - least + 1));
}

Position random_position(std::mt19937_64& random, const RandomShape& shape) {
    Position position;
    position.side = random_between(random, 0, 1);
    const auto place = [&](int side, bool inner) {
        for (int tries = 0;; ++tries) {
            const int square = random_between(random, 1, SQUARES);
            const uint64_t mask = set_of_square(square);
            const bool edge = square <= 5 || square > 45 || square % 10 == 5 || square % 10 == 6;
            if ((position.black | position.white) & mask) continue;
            if (inner && edge && tries < 100) continue;  // the inner squares may all be taken
            const bool last_row = (mask & (side == BLACK ? BLACK_PROMOTION_ROW : WHITE_PROMOTION_ROW)) != 0;
            const bool king = random_between(random, 1, 100) <= shape.king_percent;
            if (last_row && !king) continue;
            (side == BLACK ? position.black : position.white) |= mask;
            if (king) position.king |= mask;
            return;
        }
    };
    const int own = random_between(random, shape.least_own, shape.most_own);
    const int enemies = random_between(random, shape.least_enemy, shape.most_enemy);
    // With few kings the last row can only be filled by luck, so the tries above always end: it has five
    // squares.
    for (int i = 0; i < own; ++i) place(position.side, false);
    for (int i = 0; i < enemies; ++i)
        place(position.side ^ 1, random_between(random, 1, 100) <= shape.inner_percent);
    return position;
}

std::vector<Position> random_game(std::mt19937_64& random, int plies) {
    std::vector<Position> game{START_POSITION};
    MoveList list;
    for (int ply = 0; ply < plies; ++ply) {
        Position position = game.back();
        const int captures = generate_captures(position, list, position.side);
        if (!captures && !generate_noncaptures(position, list, position.side)) break;
        Position child;
        make_child(position, child, list[random_between(random, 0, list.count - 1)], captures > 0);
        child.previous = nullptr;
        game.push_back(child);
    }
    return game;
}

std::vector<std::string> texts_of(const Position& position, const MoveList& list) {
    std::vector<std::string> texts;
    for (const Move& move : list) {
        std::array<char, MOVE_TEXT_SIZE> text;
        move_text(text.data(), position, move);
        texts.emplace_back(text.data());
    }
    return texts;
}

// A ballot is found by walking all lines of its length and counting those that are not left out: a few
// hundred positions, so nothing is kept.
#include "core/ballots.h"

#include <algorithm>
#include <cstdio>

#include "core/movegen.h"

namespace {

// A line of moves from the start of the game, and the position behind each.
struct Line {
    std::array<Move, 3> moves;
    std::array<Position, 4> positions{START_POSITION};
};

void make(Line& line, size_t ply, const Move& move) {
    line.moves[ply] = move;
    line.positions[ply + 1] = position_after(move, line.positions[ply].side ^ 1);
}

BallotMove squares_of(const Line& line, size_t ply) {
    const Position& before = line.positions[ply];
    const MoveSquares bits =
        move_squares(pieces_of(before, before.side), pieces_of(line.moves[ply], before.side));
    const auto number = [](int bit) {
        return static_cast<uint8_t>(square_of_bit[static_cast<size_t>(bit)] + 1);
    };
    return {number(bits.from), number(bits.to)};
}

bool is_left_out(const Line& line, int moves) {
    const BallotMove first = squares_of(line, 0), second = squares_of(line, 1);
    if (moves == 2)
        return second == BallotMove{16, 21} && (first == BallotMove{31, 27} || first == BallotMove{32, 27});
    const BallotMove third = squares_of(line, 2);
    return std::any_of(left_out_lines.begin(), left_out_lines.end(), [&](const LeftOutLines& lines) {
        return lines.first == first && lines.second == second &&
               std::find(lines.thirds.begin(), lines.thirds.end(), third) != lines.thirds.end();
    });
}

// Goes on with the line from `ply` to its last move. True when `to_skip` ballots have been passed by; the
// line is then the next one.
bool find_line(Line& line, size_t ply, int moves, int& to_skip) {
    if (ply == static_cast<size_t>(moves)) return !is_left_out(line, moves) && to_skip-- == 0;
    MoveList list;
    generate_moves(line.positions[ply], list, line.positions[ply].side);
    return std::any_of(list.begin(), list.end(), [&](const Move& move) {
        make(line, ply, move);
        return find_line(line, ply + 1, moves, to_skip);
    });
}

void write_two_move_text(const Line& line, Ballot& ballot) {
    const BallotMove first = squares_of(line, 0), second = squares_of(line, 1);
    std::snprintf(ballot.text.data(), ballot.text.size(), "%d-%d %d-%d", first.from, first.to, second.from,
                  second.to);
}

void write_three_move_text(const Line& line, Ballot& ballot) {
    char texts[3][MOVE_TEXT_SIZE];
    for (size_t ply = 0; ply < 3; ++ply) move_text(texts[ply], line.positions[ply], line.moves[ply]);
    std::snprintf(ballot.text.data(), ballot.text.size(), "%s %s %s", texts[0], texts[1], texts[2]);
}

}  // namespace

bool find_ballot(int moves, int index, Ballot& ballot) {
    if (index < 0 || index >= ballot_count(moves)) return false;
    Line line{};
    int to_skip = index;
    if (!find_line(line, 0, moves, to_skip)) return false;
    ballot.position = line.positions[static_cast<size_t>(moves)];
    if (moves == 2)
        write_two_move_text(line, ballot);
    else
        write_three_move_text(line, ballot);
    return true;
}

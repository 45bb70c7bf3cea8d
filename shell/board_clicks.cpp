#include "shell/board_clicks.h"

#include <algorithm>
#include <span>

#include "control/game.h"
#include "control/game_flow.h"
#include "control/ui.h"
#include "core/capture_lines.h"

namespace {

constexpr int MAX_CLICKS_OF_A_SQUARE = 2;

struct LegalMoves {
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    int side = WHITE;
};

// The moves that come first for the clicked squares.
struct BestMoves {
    int count = 0;
    int last = -1;  // index of the last of them
};

bool is_square(int square) { return square >= 1 && square <= SQUARES; }

void find_legal_moves(LegalMoves& moves) {
    moves.side = game.board_side;
    generate_moves_with_lines(game.board, moves.list, moves.side, moves.lines, moves.jumps);
}

void ends_of(const LegalMoves& moves, int index, uint64_t& from, uint64_t& to) {
    move_step_squares(moves.jumps, index, moves.side, game.board, moves.list, moves.lines, from, to);
}

// How many of the squares are the move's start or end; -1 if one of them does not belong to the move. Start
// and end count once each, so that a second click on a king's square asks for the capture that comes back to
// it.
int fit_of(const LegalMoves& moves, int index, std::span<const int32_t> squares) {
    uint64_t from = 0, to = 0;
    ends_of(moves, index, from, to);
    const CaptureLine& line = moves.lines[static_cast<size_t>(index)];
    bool start_clicked = false, end_clicked = false;
    for (const int32_t square : squares) {
        const uint64_t mask = set_of_square(square);
        if (mask == from && !start_clicked) {
            start_clicked = true;
        } else if (mask == to) {
            end_clicked = true;
        } else if (mask != from && !capture_takes(moves.jumps, line, moves.side, mask) &&
                   !square_on_path(moves.jumps, line, moves.side, square)) {
            return -1;
        }
    }
    return int{start_clicked} + int{end_clicked};
}

BestMoves best_moves(const LegalMoves& moves, std::span<const int32_t> squares) {
    BestMoves best;
    int best_fit = 0;
    for (int i = 0; i < moves.list.count; ++i) {
        const int fit = fit_of(moves, i, squares);
        if (fit < best_fit) continue;
        if (fit > best_fit) best.count = 0;
        best_fit = fit;
        ++best.count;
        best.last = i;
    }
    return best;
}

std::span<const int32_t> clicked_squares() {
    return std::span<const int32_t>(game.highlights).first(static_cast<size_t>(game.highlight_count));
}

bool begins_a_move(const LegalMoves& moves, int square) {
    for (int i = 0; i < moves.list.count; ++i) {
        uint64_t from = 0, to = 0;
        ends_of(moves, i, from, to);
        if (from == set_of_square(square)) return true;
    }
    return false;
}

bool comes_back_to(const LegalMoves& moves, int square) {
    for (int i = 0; i < moves.list.count; ++i) {
        uint64_t from = 0, to = 0;
        ends_of(moves, i, from, to);
        if (from == to && from == set_of_square(square)) return true;
    }
    return false;
}

// All are squares, and a move that is to end where it began is there.
bool may_be_a_move(const LegalMoves& moves, std::span<const int32_t> squares) {
    if (squares.empty() || !std::all_of(squares.begin(), squares.end(), is_square)) return false;
    const bool round = squares.size() > 1 && squares.front() == squares.back();
    return !round || comes_back_to(moves, squares.front());
}

// A square counts a second time where a capture may end on the square it began on.
bool click_counts(const LegalMoves& moves, int square) {
    const std::span<const int32_t> squares = clicked_squares();
    const auto clicks = std::count(squares.begin(), squares.end(), square);
    return clicks == 0 || (clicks < MAX_CLICKS_OF_A_SQUARE && begins_a_move(moves, square));
}

// The click is on the list. Plays the move that comes first alone, or shows the marks; false if no move fits.
bool follow_clicks(const LegalMoves& moves) {
    const BestMoves best = best_moves(moves, clicked_squares());
    if (best.count == 0) return false;
    if (best.count == 1)
        make_user_move(best.last);
    else
        ui.redraw_board();
    return true;
}

void select_square(int square) {
    if (is_square(square)) {
        LegalMoves moves;
        find_legal_moves(moves);
        if (!click_counts(moves, square)) return;
        add_highlight(square);
        if (follow_clicks(moves)) return;
        clear_highlights();
        add_highlight(square);
        if (follow_clicks(moves)) return;
    }
    clear_highlights();
    ui.redraw_board();
}

// One square of the board goes on: a man of the side, his king, nothing. A man on his promotion row is a king
// from the start.
void cycle_square(int square, int side) {
    if (!is_square(square)) return;
    const uint64_t mask = set_of_square(square);
    const uint64_t promotion_row = side == BLACK ? BLACK_PROMOTION_ROW : WHITE_PROMOTION_ROW;
    uint64_t& own = side == BLACK ? game.board.black : game.board.white;
    uint64_t& other = side == BLACK ? game.board.white : game.board.black;
    if (!(own & mask)) {
        own |= mask;
        other &= ~mask;
        game.board.king &= ~mask;
        game.board.king |= mask & promotion_row;
    } else if (!(game.board.king & mask)) {
        game.board.king |= mask;
    } else {
        own &= ~mask;
        game.board.king &= ~mask;
    }
    restart_from_board();
    ui.redraw_board();
}

}  // namespace

void board_left_click(int square) {
    if (game.gui_mode == SETUP_MODE)
        cycle_square(square, BLACK);
    else if (user_may_move())
        select_square(square);
}

void board_right_click(int square) {
    if (game.gui_mode == SETUP_MODE) cycle_square(square, WHITE);
}

void type_squares(std::span<const int32_t> squares) {
    if (game.gui_mode == SETUP_MODE || !user_may_move()) return;
    LegalMoves moves;
    find_legal_moves(moves);
    if (may_be_a_move(moves, squares)) {
        std::for_each(squares.begin(), squares.end(), add_highlight);
        if (follow_clicks(moves)) return;
        clear_highlights();
        std::for_each(squares.begin(), squares.end(), add_highlight);
        if (follow_clicks(moves)) return;
    }
    clear_highlights();
    ui.redraw_board();
}

bool square_can_move(int square) {
    if (!is_square(square) || game.gui_mode == SETUP_MODE || !user_may_move()) return false;
    LegalMoves moves;
    find_legal_moves(moves);
    return begins_a_move(moves, square);
}

bool click_fits(int square) {
    if (!is_square(square) || game.gui_mode == SETUP_MODE || !user_may_move()) return false;
    LegalMoves moves;
    find_legal_moves(moves);
    std::array<int32_t, MAX_HIGHLIGHTS + 1> squares{};
    const std::span<const int32_t> clicked = clicked_squares();
    std::copy(clicked.begin(), clicked.end(), squares.begin());
    squares[clicked.size()] = square;
    return best_moves(moves, std::span<const int32_t>(squares).first(clicked.size() + 1)).count > 0;
}

void drop_clicks() {
    if (game.gui_mode == SETUP_MODE || !user_may_move()) return;
    clear_marks();
}

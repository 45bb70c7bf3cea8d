// Clicks on the board: the cases that matter, and random clicks beside a slow account of the same rules.
#include "shell/board_clicks.h"

#include <algorithm>
#include <map>
#include <optional>
#include <random>

#include "core/capture_lines.h"
#include "core/notation.h"
#include "tests/core/slow_generator.h"
#include "tests/core/test_positions.h"
#include "tests/shell/board_screen.h"

namespace {

using Marks = std::vector<int32_t>;

class BoardClicks : public BoardGameTest {};

void click_all(const std::vector<int>& squares) {
    for (const int square : squares) board_left_click(square);
}

TEST_F(BoardClicks, OneClickPlaysTheOnlyMoveOfAMan) {
    set_position("W:W31,36,47:B1");
    board_left_click(36);  // blocked by 31 on one side, on the edge on the other
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{}) << "a man that cannot move";
    set_position("W:W36,47:B1");
    board_left_click(36);
    EXPECT_EQ(fen_now(), "B:W31,47:B1");
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(marks_now(), Marks{});
    EXPECT_EQ(screen.marks, Marks{36}) << "the mark was shown with the move";
}

TEST_F(BoardClicks, OneClickOnATargetThatOnePieceReaches) {
    set_position("W:W36,47:B1");
    board_left_click(41);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(fen_now(), "B:W36,41:B1") << "47 alone reaches 41";
    set_position("W:W32,33:B1");
    board_left_click(28);
    EXPECT_EQ(game.history_count, 1) << "two men reach 28";
    EXPECT_EQ(marks_now(), Marks{28});
    board_left_click(33);
    EXPECT_EQ(fen_now(), "B:W28,32:B1");
}

TEST_F(BoardClicks, TwoClicksPlayOneOfSeveralMoves) {
    board_left_click(32);
    EXPECT_EQ(marks_now(), Marks{32});
    EXPECT_EQ(screen.redraws, 1);
    board_left_click(28);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(game.board_side, BLACK);
    EXPECT_EQ(screen.marks, (Marks{32, 28}));
}

TEST_F(BoardClicks, LightSquareEndsTheSelection) {
    board_left_click(32);
    board_left_click(0);
    EXPECT_EQ(marks_now(), Marks{});
    EXPECT_EQ(screen.redraws, 2);
    board_left_click(-5);
    board_left_click(51);
    EXPECT_EQ(marks_now(), Marks{});
    EXPECT_EQ(game.history_count, 1);
}

TEST_F(BoardClicks, AnotherPieceBeginsAnew) {
    board_left_click(32);
    board_left_click(33);
    EXPECT_EQ(marks_now(), Marks{33});
    EXPECT_EQ(game.history_count, 1);
    board_left_click(35);  // its only move is to 30
    EXPECT_EQ(game.history_count, 2);
}

TEST_F(BoardClicks, SquareOfNoMoveEndsTheSelection) {
    board_left_click(32);
    const int redraws = screen.redraws;
    board_left_click(50);
    EXPECT_EQ(marks_now(), Marks{});
    EXPECT_EQ(screen.redraws, redraws + 1);
    EXPECT_EQ(game.history_count, 1);
}

TEST_F(BoardClicks, SquareThatIsMarkedCountsAgainOnlyAsAStart) {
    set_position("W:W32,33,37:B1");
    board_left_click(28);
    const int redraws = screen.redraws;
    board_left_click(28);
    EXPECT_EQ(marks_now(), Marks{28}) << "an end does not count twice";
    EXPECT_EQ(screen.redraws, redraws);
    set_position("W:W32,33,37:B1");
    board_left_click(32);
    board_left_click(32);
    EXPECT_EQ(marks_now(), (Marks{32, 32}));
    board_left_click(32);
    EXPECT_EQ(marks_now(), (Marks{32, 32})) << "never three times";
    board_left_click(28);
    EXPECT_EQ(game.history_count, 2);
}

void type(const std::vector<int32_t>& squares) { type_squares(squares); }

TEST_F(BoardClicks, TypedSquaresAreOneMove) {
    type({35, 31});
    EXPECT_EQ(game.history_count, 1) << "35-30 is not what was typed";
    EXPECT_EQ(marks_now(), Marks{});
    type({35, 35});
    type({35, 0});
    type({35, 51});
    type({});
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{});
    type({35});
    EXPECT_EQ(game.history_count, 2) << "one square that says enough";
    set_position("W:W28,40:B23");
    type({28, 22});
    EXPECT_EQ(fen_now(), "W:W28,40:B23") << "a capture is not 28-22";
    type({28, 19});
    EXPECT_EQ(fen_now(), "B:W19,40:B");
}

TEST_F(BoardClicks, TypedSquaresGoOnFromTheMarksOrBeginAnew) {
    board_left_click(32);
    type({28});
    EXPECT_EQ(game.history_count, 2);
    new_game();
    board_left_click(32);
    type({32, 28});
    EXPECT_EQ(game.history_count, 2);
    new_game();
    board_left_click(32);
    type({33});
    EXPECT_EQ(marks_now(), Marks{33});
    type({34, 29});
    EXPECT_EQ(game.history_count, 2);
    EXPECT_TRUE(game.board.white & set_of_square(29));
    EXPECT_EQ(marks_now(), Marks{});
    set_gui_mode(SETUP_MODE);
    type({20});
    game.gui_mode = AUTOPLAY_MODE;
    type({20, 24});
    EXPECT_EQ(marks_now(), Marks{});
}

// The king on 47 can end its round on 47 and beyond it.
constexpr const char* ROUND_CAPTURE = "W:WK32,K47:B11,K21,24,K40,K43";

TEST_F(BoardClicks, SecondClickOnTheStartPlaysTheCaptureThatComesBack) {
    set_position(ROUND_CAPTURE);
    MoveList list;
    CaptureLines lines;
    int jumps = 0, rounds = 0, start = 0;
    Move result{};
    generate_moves_with_lines(game.board, list, WHITE, lines, jumps);
    for (int i = 0; i < list.count; ++i) {
        uint64_t from = 0, to = 0;
        move_step_squares(jumps, i, WHITE, game.board, list, lines, from, to);
        if (from != to) continue;
        ++rounds;
        start = square_of_bit[static_cast<size_t>(lowest_bit(from))] + 1;
        result = list[i];
    }
    ASSERT_EQ(rounds, 1);
    ASSERT_GT(list.count, 1);
    type({start, start});
    EXPECT_EQ(move_to(game.board), result);
    set_position(ROUND_CAPTURE);
    board_left_click(start);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{start});
    board_left_click(start);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(move_to(game.board), result);
}

TEST_F(BoardClicks, NothingIsTakenInModesOfTheEngine) {
    for (const int32_t mode : {AUTOPLAY_MODE, DXP_MODE, ANALYZE_GAME_MODE, ANALYZE_PDN_MODE,
                               ANALYZE_GAME_ALLSCORES_MODE, ANALYZE_PDN_ALLSCORES_MODE}) {
        game.gui_mode = mode;
        click_all({32, 28, 35, 0});
        board_right_click(35);
        EXPECT_EQ(game.history_count, 1) << mode;
        EXPECT_EQ(marks_now(), Marks{}) << mode;
    }
    EXPECT_EQ(screen.redraws, 0);
}

TEST_F(BoardClicks, NothingIsTakenWhileTheEngineHasTheMove) {
    game.gui_mode = NORMAL_MODE;
    search_thread.searching = 1;
    click_all({32, 0});
    EXPECT_FALSE(square_can_move(32));
    EXPECT_FALSE(click_fits(32));
    EXPECT_EQ(screen.redraws, 0);
    search_thread.pondering = 1;
    EXPECT_TRUE(square_can_move(32));
    board_left_click(32);
    EXPECT_EQ(marks_now(), Marks{32}) << "a ponder search is in nobody's way";
    for (const int32_t mode : {TWO_PLAYERS_MODE, ANALYSIS_MODE, ANALYSIS_ALLSCORES_MODE}) {
        search_thread.pondering = 0;
        game.gui_mode = mode;
        clear_highlights();
        board_left_click(33);
        EXPECT_EQ(marks_now(), Marks{33}) << mode;
    }
}

TEST_F(BoardClicks, RightButtonMakesNoMove) {
    board_right_click(35);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(screen.redraws, 0);
}

TEST_F(BoardClicks, SideWithoutAMoveMarksNothing) {
    set_position("W:W36:B31,27");
    for (int square = 0; square <= SQUARES; ++square) board_left_click(square);
    EXPECT_EQ(marks_now(), Marks{});
    EXPECT_EQ(game.history_count, 1);
}

TEST_F(BoardClicks, FullListIsNotOverrun) {
    game.highlight_count = MAX_HIGHLIGHTS;
    game.highlights.fill(32);
    board_left_click(28);
    EXPECT_LE(game.highlight_count, MAX_HIGHLIGHTS);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_TRUE(click_fits(28));
}

TEST_F(BoardClicks, TheEndOfSeveralMovesFitsAgain) {
    board_left_click(28);  // from 32 or 33
    EXPECT_EQ(marks_now(), Marks{28});
    EXPECT_TRUE(click_fits(28));
    board_left_click(28);
    EXPECT_EQ(marks_now(), Marks{28}) << "but it counts once";
}

TEST_F(BoardClicks, ClicksAreTakenBack) {
    board_left_click(32);
    EXPECT_TRUE(click_fits(28));
    EXPECT_FALSE(click_fits(29));
    EXPECT_FALSE(click_fits(0));
    drop_clicks();
    EXPECT_EQ(marks_now(), Marks{});
    EXPECT_EQ(screen.redraws, 2);
    drop_clicks();
    EXPECT_EQ(screen.redraws, 2) << "nothing to take back";
    EXPECT_TRUE(square_can_move(32));
    EXPECT_FALSE(square_can_move(37));
    EXPECT_FALSE(square_can_move(20));
    EXPECT_FALSE(square_can_move(0));
}

// ---- setting up ----

class BoardSetup : public BoardGameTest {
  protected:
    void SetUp() override {
        BoardGameTest::SetUp();
        set_position("W:W32:B1");
        set_gui_mode(SETUP_MODE);
        screen.redraws = 0;
    }
};

TEST_F(BoardSetup, LeftButtonGoesThroughBlackPieces) {
    board_left_click(20);
    EXPECT_EQ(fen_now(), "W:W32:B1,20");
    board_left_click(20);
    EXPECT_EQ(fen_now(), "W:W32:B1,K20");
    board_left_click(20);
    EXPECT_EQ(fen_now(), "W:W32:B1");
    EXPECT_EQ(screen.redraws, 3);
    EXPECT_EQ(marks_now(), Marks{});
}

TEST_F(BoardSetup, RightButtonGoesThroughWhitePieces) {
    board_right_click(20);
    EXPECT_EQ(fen_now(), "W:W20,32:B1");
    board_right_click(20);
    EXPECT_EQ(fen_now(), "W:WK20,32:B1");
    board_right_click(20);
    EXPECT_EQ(fen_now(), "W:W32:B1");
}

TEST_F(BoardSetup, OtherColourIsReplacedByAMan) {
    board_right_click(32);
    EXPECT_EQ(fen_now(), "W:WK32:B1");
    board_left_click(32);
    EXPECT_EQ(fen_now(), "W:W:B1,32");
    board_left_click(32);
    board_right_click(32);
    EXPECT_EQ(fen_now(), "W:W32:B1") << "a black king becomes a white man";
}

TEST_F(BoardSetup, NoManOnHisPromotionRow) {
    for (int square = 46; square <= 50; ++square) {
        board_right_click(square);
        EXPECT_FALSE(game.board.king) << square << ": a white man may stand there";
        board_left_click(square);
        EXPECT_EQ(game.board.king, set_of_square(square)) << square;
        board_left_click(square);
        EXPECT_EQ(fen_now(), "W:W32:B1") << square << ": the king is removed at once";
    }
    for (int square = 2; square <= 5; ++square) {
        board_right_click(square);
        EXPECT_EQ(game.board.king, set_of_square(square)) << square;
        board_right_click(square);
        EXPECT_EQ(fen_now(), "W:W32:B1") << square;
    }
}

TEST_F(BoardSetup, WhiteKingOn48BecomesABlackKing) {
    board_right_click(48);
    board_right_click(48);
    EXPECT_EQ(fen_now(), "W:W32,K48:B1");
    board_left_click(48);
    EXPECT_EQ(fen_now(), "W:W32:B1,K48");
}

TEST_F(BoardSetup, TheGameIsWhatIsSetUp) {
    const auto begins_with_board = [] {
        return game.history_last == 1 && same_pieces(game.game_history[0].position, game.board);
    };
    board_left_click(20);
    EXPECT_TRUE(begins_with_board()) << "what is saved and copied";
    board_right_click(46);
    EXPECT_TRUE(begins_with_board());
    EXPECT_EQ(game.game_history[0].setup_flag, 1);
}

TEST_F(BoardSetup, LightSquareDoesNothing) {
    board_left_click(0);
    board_right_click(0);
    board_left_click(51);
    EXPECT_EQ(fen_now(), "W:W32:B1");
    EXPECT_EQ(screen.redraws, 0);
    EXPECT_FALSE(square_can_move(32));
}

TEST_F(BoardSetup, RandomClicksLeaveALegalSetup) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 20000; ++i) {
        const int square = random_between(random, -1, 51);
        if (random() & 1)
            board_left_click(square);
        else
            board_right_click(square);
        ASSERT_TRUE(is_legal_setup(game.board)) << fen_now();
        ASSERT_EQ(game.board.king & ~(game.board.black | game.board.white), 0u);
    }
}

// ---- the slow account ----

// All that a move has to do with squares, as plain lists.
struct SlowClickMove {
    Move result{};
    int from = 0;
    int to = 0;
    std::vector<int> passed;  // taken, or landed on in between
};

bool lists(const std::vector<int>& squares, int square) {
    return std::find(squares.begin(), squares.end(), square) != squares.end();
}

std::vector<SlowClickMove> slow_click_moves(const Position& position, int side) {
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    generate_moves_with_lines(position, list, side, lines, jumps);
    std::vector<SlowClickMove> moves;
    for (int i = 0; i < list.count; ++i) {
        SlowClickMove move;
        move.result = list[i];
        uint64_t from = 0, to = 0;
        move_step_squares(jumps, i, side, position, list, lines, from, to);
        const CaptureLine& line = lines[static_cast<size_t>(i)];
        for (int square = 1; square <= SQUARES; ++square) {
            const uint64_t mask = set_of_square(square);
            if (mask == from) move.from = square;
            if (mask == to) move.to = square;
            if (jumps &&
                (capture_takes(jumps, line, side, mask) || square_on_path(jumps, line, side, square)))
                move.passed.push_back(square);
        }
        moves.push_back(move);
    }
    return moves;
}

int slow_score(const SlowClickMove& move, const Marks& marks) {
    std::map<int, int> clicks;
    for (const int square : marks) ++clicks[square];
    int score = 0;
    for (const auto& [square, count] : clicks) {
        const bool is_end = square == move.from || square == move.to;
        if (!is_end && !lists(move.passed, square)) return -1;
        if (is_end) score += move.from == move.to ? count : 1;
    }
    return score;
}

struct SlowChoice {
    int count = 0;
    Move result{};
};

SlowChoice slow_choice(const std::vector<SlowClickMove>& moves, const Marks& marks) {
    int best = -1;
    for (const SlowClickMove& move : moves) best = std::max(best, slow_score(move, marks));
    SlowChoice choice;
    for (const SlowClickMove& move : moves)
        if (best >= 0 && slow_score(move, marks) == best) {
            ++choice.count;
            choice.result = move.result;
        }
    return choice;
}

// Follows a click; the move that it plays, if any.
std::optional<Move> slow_click(const std::vector<SlowClickMove>& moves, Marks& marks, int square) {
    const auto before = std::count(marks.begin(), marks.end(), square);
    const bool starts =
        std::any_of(moves.begin(), moves.end(), [&](const auto& move) { return move.from == square; });
    if (before >= 2 || (before == 1 && !starts)) return {};
    marks.push_back(square);
    SlowChoice choice = slow_choice(moves, marks);
    if (choice.count == 0) {
        marks = {square};
        choice = slow_choice(moves, marks);
    }
    if (choice.count != 1) {
        if (choice.count == 0) marks.clear();
        return {};
    }
    marks.clear();
    return choice.result;
}

// A square, more often one that belongs to a move than not.
int random_square(std::mt19937_64& random, const std::vector<SlowClickMove>& moves) {
    if (moves.empty() || random() % 4 == 0) return random_between(random, 0, 50);
    const SlowClickMove& move = moves[random() % moves.size()];
    switch (random() % 4) {
        case 0:
            return move.from;
        case 1:
            return move.to;
        default:
            return move.passed.empty() ? move.from : move.passed[random() % move.passed.size()];
    }
}

// Clicks at random; every answer must be that of the slow account.
void compare_clicks(std::mt19937_64& random, int clicks, long& played) {
    const Position position = game.board;
    const std::vector<SlowClickMove> moves = slow_click_moves(position, game.board_side);
    Marks marks;
    for (int i = 0; i < clicks; ++i) {
        const int square = random_square(random, moves);
        const std::optional<Move> expected = slow_click(moves, marks, square);
        board_left_click(square);
        if (expected) {
            ++played;
            ASSERT_EQ(move_to(game.board), *expected) << letters_of(position) << " at " << square;
            ASSERT_EQ(game.history_count, 2);
            return;
        }
        ASSERT_EQ(marks_now(), marks) << letters_of(position) << " at " << square;
        ASSERT_TRUE(same_pieces(game.board, position));
        ASSERT_EQ(game.history_count, 1);
    }
}

std::vector<Position> positions_for_clicks(std::mt19937_64& random) {
    std::vector<Position> positions;
    for (int i = 0; i < 20; ++i)
        for (const Position& position : random_game(random, 120)) positions.push_back(position);
    for (int i = 0; i < 3000; ++i) positions.push_back(random_position(random, {1, 5, 2, 10, 40, 80}));
    // Kings in the open, whose captures share squares in every way.
    for (int i = 0; i < 1500; ++i) positions.push_back(random_position(random, {1, 3, 4, 8, 70, 90}));
    return positions;
}

TEST_F(BoardClicks, RandomClicksDoWhatTheSlowAccountSays) {
    std::mt19937_64 random(1);
    long played = 0;
    const std::vector<Position> positions = positions_for_clicks(random);
    for (const Position& position : positions)
        for (int run = 0; run < 2; ++run) {
            set_position(position, position.side);
            compare_clicks(random, 8, played);
            if (HasFatalFailure()) return;
        }
    EXPECT_GT(played, static_cast<long>(positions.size()) / 2);
}

// The clicks that name a move in full: start, end, then the pieces it takes.
std::vector<int> clicks_of(const SlowClickMove& move, const Position& before, int side) {
    std::vector<int> clicks = {move.from, move.to};
    for (int square = 1; square <= SQUARES; ++square) {
        const uint64_t mask = set_of_square(square);
        if (pieces_of(before, side ^ 1) & ~pieces_of(move.result, side ^ 1) & mask) clicks.push_back(square);
    }
    return clicks;
}

TEST_F(BoardClicks, EveryMoveCanBeClicked) {
    std::mt19937_64 random(2);
    long moves_played = 0, rounds = 0, longest = 0;
    for (const Position& position : positions_for_clicks(random)) {
        for (const SlowClickMove& move : slow_click_moves(position, position.side)) {
            set_position(position, position.side);
            rounds += move.from == move.to;
            long clicks = 0;
            for (const int square : clicks_of(move, position, position.side)) {
                board_left_click(square);
                ++clicks;
                if (game.history_count > 1) break;
            }
            longest = std::max(longest, clicks);
            ++moves_played;
            ASSERT_EQ(move_to(game.board), move.result)
                << letters_of(position) << " " << move.from << " to " << move.to;
        }
    }
    EXPECT_GT(moves_played, 20000);
    EXPECT_GT(rounds, 10);
    EXPECT_GT(longest, 2);
}

TEST_F(BoardClicks, GamesOfRandomClicksAreLegal) {
    std::mt19937_64 random(4);
    for (int run = 0; run < 20; ++run) {
        set_position(START_POSITION, WHITE);
        int plies = 1;
        for (int i = 0; i < 1500; ++i) {
            const Position before = game.board;
            const int side = game.board_side;
            board_left_click(random_between(random, -1, 51));
            if (random() % 50 == 0) board_right_click(random_between(random, 0, 50));
            if (same_pieces(before, game.board)) continue;
            std::vector<SlowMove> moves = slow_captures(before, side);
            if (moves.empty()) moves = slow_quiet_moves(before, side);
            const bool legal = std::any_of(moves.begin(), moves.end(), [](const SlowMove& move) {
                return move.result == move_to(game.board);
            });
            ASSERT_TRUE(legal) << letters_of(before);
            ASSERT_EQ(game.board_side, side ^ 1);
            ASSERT_EQ(game.history_count, std::min(++plies, MAX_HISTORY));
        }
        EXPECT_GT(plies, 20);
    }
}

}  // namespace

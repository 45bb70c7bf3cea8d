#include "records/pdn_replay.h"

#include <gtest/gtest.h>

#include <string>

#include "core/capture_lines.h"
#include "positions.h"

namespace {

// The FEN after the whole game, or as far as its moves can be matched.
std::string final_fen(const std::string& text) {
    const PdnGame game = pdn_parse_game(text.c_str());
    bool broken = false;
    const ReplayState last = replay(game.get(), broken).back();
    char fen[FEN_TEXT_SIZE];
    position_to_fen(last.position, last.side, fen);
    return (broken ? "broken " : "") + std::string(fen);
}

// The status of one move, written as in a file, from a position.
int status_of(const char* fen, const char* move) {
    ReplayState in = state_of(fen, 1);
    const PdnGame node = pdn_parse_game(move);
    ReplayState out;
    return pdn_apply_move(*node, in, out);
}

TEST(PdnReplay, StartOfAGame) {
    PdnGame game = pdn_parse_game("[Event \"a\"] 1. 32-28 19-23 *");
    ReplayState state = state_of("B:W1:B2", 1);
    PdnNode* const first = pdn_start_position(game.get(), state);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->token.from, 32);
    EXPECT_EQ(first->token.side, WHITE);
    EXPECT_EQ(state.setup_flag, 0);
    EXPECT_EQ(state.side, WHITE);
    EXPECT_TRUE(same_pieces(state.position, START_POSITION));
}

TEST(PdnReplay, NoListAndNoMoves) {
    ReplayState state = state_of("B:W1:B2", 1);
    EXPECT_EQ(pdn_start_position(nullptr, state), nullptr);
    expect_same_state(state_of("B:W1:B2", 1), state);
    PdnGame game = pdn_parse_game("[FEN \"B:W31:B1\"]");
    EXPECT_EQ(pdn_start_position(game.get(), state), nullptr);
    expect_same_state(state_of("B:W31:B1", 1), state);
    game = pdn_parse_game("[Event \"a\"]");
    EXPECT_EQ(pdn_start_position(game.get(), state), nullptr);
    expect_same_state(ReplayState{}, state);
    EXPECT_EQ(pdn_next_move(nullptr, state), nullptr);
}

TEST(PdnReplay, AFenTagSetsTheStartAndTheSide) {
    PdnGame game = pdn_parse_game("[fEn \"B:W31:B1\"] 1. ... 1-6 2. 31-27");
    ReplayState state;
    PdnNode* node = pdn_start_position(game.get(), state);
    ASSERT_TRUE(node);
    EXPECT_EQ(node->token.side, BLACK);
    expect_same_state(state_of("B:W31:B1", 1), state);
    node = pdn_next_move(node, state);
    ASSERT_TRUE(node);
    EXPECT_EQ(node->token.side, WHITE);
    expect_same_state(state_of("W:W31:B6", 0), state);
    EXPECT_EQ(pdn_next_move(node, state), nullptr);
    expect_same_state(state_of("B:W27:B6", 0), state);
}

TEST(PdnReplay, SetupFlagTellsOfAnythingButTheInitialPosition) {
    for (const auto& [fen, flag] : {std::pair{"W:W31-50:B1-20", 0},
                                    {"B:W31-50:B1-20", 1},
                                    {"W:W31-50:B1-19", 1},
                                    {"W:WK31,32-50:B1-20", 1},
                                    {"nothing", 0}}) {
        const PdnGame game = pdn_parse_game(("[FEN \"" + std::string(fen) + "\"] *").c_str());
        ReplayState state;
        pdn_start_position(game.get(), state);
        EXPECT_EQ(state.setup_flag, flag) << fen;
    }
}

TEST(PdnReplay, AnEmbeddedFenBeforeTheFirstMoveIsTheStart) {
    PdnGame game = pdn_parse_game("/FEN \"B:W31:B1\"/ 1-6");
    EXPECT_TRUE(game->next && !game->next->next);
    ReplayState state;
    PdnNode* const node = pdn_start_position(game.get(), state);
    EXPECT_EQ(node, game->next);
    expect_same_state(state_of("B:W31:B1", 1), state);
    EXPECT_EQ(node->token.side, BLACK);
}

TEST(PdnReplay, AnEmbeddedFenIsAStepOfItsOwn) {
    PdnGame game = pdn_parse_game("32-28 /FEN \"B:W31:B1\"/ {c} 1-6 *");
    ReplayState state;
    PdnNode* node = pdn_next_move(pdn_start_position(game.get(), state), state);
    ASSERT_TRUE(node);
    EXPECT_EQ(node->kind, PDN_EMBEDDED_FEN);
    EXPECT_EQ(state.setup_flag, 0);
    node = pdn_next_move(node, state);
    ASSERT_TRUE(node);
    EXPECT_EQ(node->token.side, BLACK);
    expect_same_state(state_of("B:W31:B1", 1), state);
    EXPECT_EQ(pdn_next_move(node, state), nullptr);
    expect_same_state(state_of("W:W31:B6", 0), state);
}

TEST(PdnReplay, AMoveLearnsItsSide) {
    const PdnGame node = pdn_parse_game("32-28");
    EXPECT_EQ(node->token.side, 0);
    ReplayState state;
    EXPECT_EQ(pdn_next_move(node.get(), state), nullptr);
    EXPECT_EQ(node->token.side, WHITE);
    EXPECT_EQ(state.side, BLACK);
}

TEST(PdnReplay, CommentsAreSkipped) {
    PdnTable table;
    ASSERT_EQ(pdn_parse_games("{a} 1. 32-28 {b} {c} 19-23 ! 2. 28x19 word 14x23 *", table), 0);
    bool broken = false;
    EXPECT_EQ(replay(table[0].get(), broken).size(), 5u);
    EXPECT_FALSE(broken);
}

TEST(PdnReplay, ANodeThatIsNoStepEndsTheReplay) {
    PdnGame game = pdn_parse_game("[a \"b\"] 32-28 *");
    ReplayState state = state_of("W:W31:B1", 1);
    EXPECT_EQ(pdn_next_move(game.get(), state), nullptr);
    expect_same_state(state_of("W:W31:B1", 0), state);
    ReplayState out = state_of("B:W1:B2", 1);
    EXPECT_EQ(pdn_apply_move(*game, state, out), 1);
    expect_same_state(state_of("B:W1:B2", 1), out);
}

TEST(PdnReplay, AMoveThatCannotBeMatchedKeepsTheState) {
    PdnGame game = pdn_parse_game("[FEN \"W:W31:B1\"] 31-28 1-6");
    ReplayState state;
    PdnNode* const node = pdn_start_position(game.get(), state);
    EXPECT_EQ(state.setup_flag, 1);
    EXPECT_EQ(pdn_next_move(node, state), nullptr);
    expect_same_state(state_of("W:W31:B1", 0), state);
}

TEST(PdnReplay, ABrokenEmbeddedFenKeepsTheState) {
    PdnToken token;
    token.text = copy_text("nothing", 7);
    PdnGame node = pdn_make_node(PDN_EMBEDDED_FEN, std::move(token));
    ReplayState state;
    EXPECT_EQ(pdn_next_move(node.get(), state), nullptr);
    expect_same_state(ReplayState{}, state);
}

TEST(PdnReplay, TheSeparatorPlaysNoPart) {
    EXPECT_EQ(final_fen("1. 32x28"), final_fen("1. 32-28"));
    EXPECT_EQ(final_fen("[FEN \"W:W32:B28\"] 32-23"), "B:W23:B");
    EXPECT_EQ(final_fen("[FEN \"W:W32:B28\"] 32x23"), "B:W23:B");
}

TEST(PdnReplay, TheNodeLearnsTheNumberOfPiecesTaken) {
    const ReplayState in = state_of("W:W47:B41,31,21", 1);
    ReplayState out;
    PdnGame node = pdn_parse_game("47-16");
    EXPECT_EQ(node->token.is_capture, 0);
    ASSERT_EQ(pdn_apply_move(*node, in, out), 0);
    EXPECT_EQ(node->token.is_capture, 3);
    expect_same_state(state_of("B:W16:B", 0), out);
    node = pdn_parse_game("47-36-27-16");
    ASSERT_EQ(pdn_apply_move(*node, in, out), 0);
    EXPECT_EQ(node->token.is_capture, 1);
    node = pdn_parse_game("32x28");
    ASSERT_EQ(pdn_apply_move(*node, ReplayState{}, out), 0);
    EXPECT_EQ(node->token.is_capture, 0);
}

TEST(PdnReplay, OneOneBreaksTheReplay) {
    const PdnGame game = pdn_parse_game("1. 32-28 19-23 1-1");
    bool broken = false;
    EXPECT_EQ(replay(game.get(), broken).size(), 3u);
    EXPECT_TRUE(broken);
}

TEST(PdnReplay, APathMustHaveTheRightLength) {
    const char* const fen = "W:W47:B41,31,21";
    EXPECT_EQ(status_of(fen, "47x16"), 0);
    EXPECT_EQ(status_of(fen, "47x36x27x16"), 0);
    EXPECT_EQ(status_of(fen, "47x36x16"), 1);
    EXPECT_EQ(status_of(fen, "47x27x16"), 1);
    EXPECT_EQ(status_of(fen, "47x36x27x27x16"), 1);
    EXPECT_EQ(status_of(fen, "47x36x28x16"), 1);
    EXPECT_EQ(status_of(fen, "47x36x27x17"), 1);
    EXPECT_EQ(status_of(fen, "46x36x27x16"), 1);
    EXPECT_EQ(status_of(fen, ("47x36x27x16" + std::string(300, 'x')).c_str()), 0);
    std::string long_path = "47";
    for (int i = 0; i < 500; ++i) long_path += "x16";
    EXPECT_EQ(status_of(fen, long_path.c_str()), 1);
}

TEST(PdnReplay, AQuietMoveHasNoPath) {
    EXPECT_EQ(status_of("W:W32:B1", "32-28"), 0);
    EXPECT_EQ(status_of("W:W32:B1", "32-30-28"), 1);
    EXPECT_EQ(status_of("W:W32:B1", "32-28-28"), 1);
}

TEST(PdnReplay, SquaresThatAreNone) {
    for (const char* move : {"0-28", "32-0", "51-28", "255-28", "32-51", "0-0"})
        EXPECT_EQ(status_of("W:W32:B1", move), 1) << move;
    EXPECT_EQ(status_of("W:W47:B41,31,21", "47x0x255x16"), 1);
}

// Two captures from 3 to 16 that take other pieces.
constexpr const char* TWO_WAYS = "W:WK3,26:B9,K19,21,24";

TEST(PdnReplay, WithoutAPathTheFirstOfTwoCapturesIsTaken) {
    const Position position = position_of(TWO_WAYS);
    MoveList list;
    ASSERT_EQ(generate_captures(position, list, WHITE), 2);
    EXPECT_NE(list[0], list[1]);
    ReplayState out;
    PdnGame node = pdn_parse_game("3x16");
    ASSERT_EQ(pdn_apply_move(*node, state_of(TWO_WAYS, 1), out), 0);
    EXPECT_EQ(move_to(out.position), list[0]);
}

TEST(PdnReplay, ThePathTellsTwoCapturesApart) {
    ReplayState by_14, by_20;
    PdnGame node = pdn_parse_game("3x14x32x16");
    ASSERT_EQ(pdn_apply_move(*node, state_of(TWO_WAYS, 1), by_14), 0);
    node = pdn_parse_game("3x20x38x16");
    ASSERT_EQ(pdn_apply_move(*node, state_of(TWO_WAYS, 1), by_20), 0);
    expect_same_state(state_of("B:W26,K16:B24", 0), by_14);
    expect_same_state(state_of("B:W26,K16:BK19", 0), by_20);
    EXPECT_EQ(status_of(TWO_WAYS, "3x14x38x16"), 1);
}

TEST(PdnReplay, AnySquareOnTheLineOfAKingsFirstJumpWillDo) {
    const char* const fen = "W:WK46:B37,23";
    for (const char* move : {"46x32x19", "46x28x19", "46x32x5", "46x28x5", "46x5"})
        EXPECT_EQ(status_of(fen, move), 0) << move;
    for (const char* move : {"46x41x19", "46x37x19", "46x23x19", "46x19x19", "46x27x19"})
        EXPECT_EQ(status_of(fen, move), 1) << move;
}

TEST(PdnReplay, ASquareOfBothColoursHasNoMoves) {
    EXPECT_EQ(status_of("W:W32,40:B1,40", "32-28"), 1);
    EXPECT_EQ(status_of("W:W32,40:B1", "32-28"), 0);
}

TEST(PdnReplay, AnEmptyBoard) {
    EXPECT_EQ(status_of("W:W:B", "32-28"), 1);
    EXPECT_EQ(final_fen("[FEN \"W\"] 32-28"), "broken W:W:B");
}

}  // namespace

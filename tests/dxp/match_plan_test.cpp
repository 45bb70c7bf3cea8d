// The plan of a match: which start position comes when, when it is over, how it is begun and resumed.
#include <regex>

#include "control/program_flags.h"
#include "control/time_control.h"
#include "dxp/statistics.h"
#include "tests/dxp/match_fixture.h"

namespace {

class MatchPlanTest : public MatchTest {
  protected:
    void TearDown() override {
        program_flags = ProgramFlags{};
        MatchTest::TearDown();
    }
    void write_stats(int wins, int losses, int draws, int unknowns) const {
        write_content(stats_file(), "A vs B:  " + std::to_string(wins) + " wins, " + std::to_string(losses) +
                                        " losses, " + std::to_string(draws) + " draws, " +
                                        std::to_string(unknowns) + " unknowns\n");
    }
    std::string write_ballots(const std::string& text) const {
        write_content(folder.file("ballots.pdn"), text);
        return folder.file("ballots.pdn");
    }
    // Fields as a dialog gives them that was not changed.
    static MatchFields fields_for(MatchOpenings openings) {
        MatchFields fields = match_fields();
        fields.openings = openings;
        return fields;
    }
};

constexpr const char* THREE_STARTS =
    "[Event \"one\"]\n1. 32-28 19-23 *\n\n"
    "[Event \"two\"]\n[FEN \"B:W31,K5:B1,2,K50\"]\n*\n\n"
    "[Event \"three\"]\n1. 33-29 20-24 2. 29x20 *\n\n";

// The positions after a white and a black move, one after the other, without the two lines left out.
std::vector<Position> two_move_positions() {
    std::vector<Position> positions;
    MoveList whites, blacks;
    generate_moves(START_POSITION, whites, WHITE);
    for (const Move& white : whites) {
        const Position after = position_after(white, BLACK);
        generate_moves(after, blacks, BLACK);
        for (const Move& black : blacks) {
            char first[MOVE_TEXT_SIZE], second[MOVE_TEXT_SIZE];
            full_move_text(START_POSITION, white, WHITE, first);
            full_move_text(after, black, BLACK, second);
            const std::string line = std::string(first) + " " + second;
            if (line != "31-27 16-21" && line != "32-27 16-21")
                positions.push_back(position_after(black, WHITE));
        }
    }
    return positions;
}

std::string opening_of_pair(int pair) {
    EXPECT_EQ(set_next_start_position(pair), 0) << pair;
    return match_plan.opening_text;
}

}  // namespace

TEST_F(MatchPlanTest, CountsPositionsAndGames) {
    settings2.match_repeats = 1;
    EXPECT_EQ(start_position_count(TWO_MOVE_OPENINGS), 79);
    EXPECT_EQ(start_position_count(THREE_MOVE_OPENINGS), 494);
    EXPECT_EQ(start_position_count(FILE_OPENINGS), 0);
    EXPECT_EQ(match_total_games(TWO_MOVE_OPENINGS), 158);
    EXPECT_EQ(match_total_games(THREE_MOVE_OPENINGS), 988);
    settings2.match_repeats = 3;
    EXPECT_EQ(match_total_games(TWO_MOVE_OPENINGS), 474);
    settings2.match_repeats = INT32_MAX;
    EXPECT_EQ(match_total_games(THREE_MOVE_OPENINGS), 988 * int64_t{INT32_MAX});
    settings2.match_repeats = -4;
    EXPECT_EQ(match_total_games(TWO_MOVE_OPENINGS), 158);
    settings.match_opening_kind = THREE_MOVE_OPENINGS;
    EXPECT_EQ(start_position_count(), 494);
    settings.match_opening_kind = 77;
    EXPECT_EQ(start_position_count(), 79) << "a kind that there is not";
}

TEST_F(MatchPlanTest, TwoMoveBallotsComeInTheirOrder) {
    settings.match_opening_kind = TWO_MOVE_OPENINGS;
    const std::vector<Position> positions = two_move_positions();
    ASSERT_EQ(positions.size(), 79u);
    for (int pair = 0; pair < 79; ++pair) {
        dxp_state.match_games = 2 * pair;
        ASSERT_EQ(set_next_start_position(pair), 0);
        EXPECT_TRUE(same_pieces(game.board, positions[static_cast<size_t>(pair)])) << pair;
        EXPECT_EQ(game.board_side, WHITE);
        EXPECT_EQ(game.history_count, 1);
        EXPECT_EQ(game.history_last, 1);
        EXPECT_NE(game.game_history[0].setup_flag, 0);
        EXPECT_TRUE(same_pieces(game.game_history[0].position, game.board));
        EXPECT_TRUE(std::regex_match(match_plan.opening_text, std::regex("\\d+-\\d+ \\d+-\\d+")))
            << match_plan.opening_text;
    }
}

TEST_F(MatchPlanTest, ThreeMoveBallotsHaveBlackToMove) {
    settings.match_opening_kind = THREE_MOVE_OPENINGS;
    const std::regex shape("\\d+[-x]\\d+ \\d+[-x]\\d+ \\d+[-x]\\d+");
    std::vector<std::string> seen;
    for (const int pair : {0, 1, 2, 100, 300, 492, 493}) {
        seen.push_back(opening_of_pair(pair));
        EXPECT_EQ(game.board_side, BLACK);
        EXPECT_TRUE(std::regex_match(seen.back(), shape)) << seen.back();
    }
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(std::unique(seen.begin(), seen.end()), seen.end());
}

// The second game of a pair has the same position again, whatever has become of the board.
TEST_F(MatchPlanTest, EachPairHasOnePosition) {
    for (const MatchOpenings openings : {TWO_MOVE_OPENINGS, THREE_MOVE_OPENINGS}) {
        settings.match_opening_kind = openings;
        ASSERT_EQ(set_next_start_position(4), 0);
        const std::string fen = fen_now(), name = match_plan.opening_text;
        ASSERT_EQ(make_user_move(0), 0);
        settle();
        dxp_state.match_games = 9;
        ASSERT_EQ(set_next_start_position(9 / 2), 0);
        EXPECT_EQ(fen_now(), fen);
        EXPECT_EQ(match_plan.opening_text, name);
        EXPECT_EQ(game.history_count, 1);
    }
}

TEST_F(MatchPlanTest, IsOverAfterTheLastRepeat) {
    settings.match_opening_kind = TWO_MOVE_OPENINGS;
    for (const int repeats : {1, 2, 5}) {
        settings2.match_repeats = repeats;
        const std::string first = (dxp_state.match_games = 0, opening_of_pair(0));
        for (int games = 1; games < 158 * repeats; games += games % 158 < 150 ? 37 : 1) {
            dxp_state.match_games = games;
            EXPECT_EQ(set_next_start_position(games / 2), 0) << games;
        }
        dxp_state.match_games = 157;
        const std::string last = opening_of_pair(78);
        EXPECT_NE(last, first);
        if (repeats > 1) {
            dxp_state.match_games = 158;
            EXPECT_EQ(opening_of_pair(79), first) << "the list starts over";
        }
        dxp_state.match_games = 158 * repeats;
        const std::string board = fen_now();
        EXPECT_EQ(set_next_start_position(79 * repeats), 1) << "no game follows the last";
        EXPECT_EQ(fen_now(), board) << "and the board stays as it is";
    }
}

TEST_F(MatchPlanTest, FilesGiveTheLastPositionsOfTheirGames) {
    settings.match_opening_kind = FILE_OPENINGS;
    store_setting_text(settings2.match_ballot_file, write_ballots(THREE_STARTS));
    ASSERT_EQ(read_ballots_file(), 0);
    EXPECT_EQ(match_total_games(), 6);
    const char* const fens[] = {
        "W:W28,31,33,34,35,36,37,38,39,40,41,42,43,44,45,46,47,48,49,50:"
        "B1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,20,23",
        "B:WK5,31:B1,2,K50", nullptr};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(opening_of_pair(i), "start position " + std::to_string(i + 1));
        if (!fens[i]) continue;
        int side = -1;
        const Position wanted = position_from(fens[i], side);
        EXPECT_TRUE(same_pieces(game.board, wanted)) << fen_now();
        EXPECT_EQ(game.board_side, side);
    }
    EXPECT_EQ(game.board_side, BLACK);
    EXPECT_EQ(bit_count(game.board.black), 19) << "behind the capture";
    EXPECT_EQ(opening_of_pair(3), "start position 1") << "over again";
    EXPECT_EQ(count_events("box"), 0);
}

TEST_F(MatchPlanTest, ABrokenGameGivesThePositionBeforeItBreaks) {
    settings.match_opening_kind = FILE_OPENINGS;
    store_setting_text(settings2.match_ballot_file,
                       write_ballots("[Event \"broken\"]\n1. 32-28 19-23 2. 1-6 20-24 *\n\n"
                                     "[Event \"whole\"]\n1. 32-28 19-23 *\n"));
    ASSERT_EQ(read_ballots_file(), 0);
    ASSERT_EQ(match_plan.start_positions.size(), 2u);
    const ReplayState &broken = match_plan.start_positions[0], &whole = match_plan.start_positions[1];
    EXPECT_TRUE(same_pieces(broken.position, whole.position));
    EXPECT_EQ(broken.side, WHITE);
}

TEST_F(MatchPlanTest, AFileWithoutGamesIsTold) {
    store_setting_text(settings2.match_ballot_file, write_ballots(THREE_STARTS));
    ASSERT_EQ(read_ballots_file(), 0);
    for (const std::string& path : {folder.file("missing.pdn"), folder.path, write_ballots(""),
                                    write_ballots("\n \n"), std::string()}) {
        store_setting_text(settings2.match_ballot_file, path);
        clear_events();
        EXPECT_NE(read_ballots_file(), 0) << path;
        EXPECT_EQ(events_of("box"), Events{"box Error: Error reading ballots file"});
        EXPECT_TRUE(match_plan.start_positions.empty());
        settings.match_opening_kind = FILE_OPENINGS;
        EXPECT_EQ(set_next_start_position(0), 1) << "nothing to play";
    }
}

TEST_F(MatchPlanTest, OffersToResumeWhatCanBeResumed) {
    settings2.match_repeats = 1;
    EXPECT_FALSE(match_can_resume(TWO_MOVE_OPENINGS)) << "there is no file";
    EXPECT_TRUE(match_can_resume(FILE_OPENINGS));
    struct Row {
        int games;
        bool two, three;
    };
    for (const Row& row : {Row{0, false, false}, Row{1, true, true}, Row{157, true, true},
                           Row{158, false, true}, Row{987, false, true}, Row{988, false, false}}) {
        write_stats(row.games / 2, 0, row.games - row.games / 2, 0);
        EXPECT_EQ(match_can_resume(TWO_MOVE_OPENINGS), row.two) << row.games;
        EXPECT_EQ(match_can_resume(THREE_MOVE_OPENINGS), row.three) << row.games;
        EXPECT_TRUE(match_can_resume(FILE_OPENINGS));
    }
    settings2.match_repeats = 2;
    write_stats(158, 0, 0, 0);
    EXPECT_TRUE(match_can_resume(TWO_MOVE_OPENINGS));
}

TEST_F(MatchPlanTest, BeginningStoresTheChoices) {
    settings.operator_time = 7;
    settings2.increment_mode = 1;
    settings2.match_incremental = 1;  // as the other side's last request had it
    EXPECT_FALSE(match_fields().incremental);
    MatchFields fields = fields_for(THREE_MOVE_OPENINGS);
    fields.minutes = 2.5;
    fields.moves = 33;
    fields.repeats = 4;
    fields.ballot_file = "some file";
    fields.incremental = true;
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    EXPECT_EQ(settings.match_opening_kind, THREE_MOVE_OPENINGS);
    EXPECT_EQ(setting_text(settings2.match_ballot_file), "some file");
    EXPECT_EQ(settings.clock_minutes, 2.5);
    EXPECT_EQ(settings.clock_moves_limit, 33);
    EXPECT_EQ(settings.operator_time, 0);
    EXPECT_EQ(settings.time_menu_id, TIME_GAME_CLOCK);
    EXPECT_EQ(settings2.match_repeats, 4);
    EXPECT_EQ(settings2.match_incremental, 0) << "only with the file that allows it";
    EXPECT_EQ(settings2.increment_mode, 0) << "the engine plays by what it tells";
    EXPECT_EQ(dxp_state.dxp_follower, 0);
    EXPECT_EQ(dxp_state.match_games, 0);
}

TEST_F(MatchPlanTest, IncrementalTimeIsForThoseWhoMay) {
    program_flags.autoconnect_enabled = true;
    settings.clock_minutes = 9;
    settings.clock_moves_limit = 8;
    MatchFields fields = fields_for(TWO_MOVE_OPENINGS);
    fields.incremental = true;
    fields.minutes = 1;
    fields.moves = 2;
    fields.initial_seconds = 12.5;
    fields.increment_seconds = 0.25;
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(settings2.match_incremental, 1);
    EXPECT_EQ(settings2.increment_mode, 1);
    EXPECT_EQ(settings2.initial_seconds, 12.5);
    EXPECT_EQ(settings2.increment_seconds, 0.25);
    EXPECT_EQ(settings.clock_minutes, 9) << "the edits held the other time";
    EXPECT_EQ(settings.clock_moves_limit, 8);
    settings.clock_moves_limit = 0;
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(settings.clock_moves_limit, 0) << "of no concern to such a match";
    fields.incremental = false;
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(settings2.match_incremental, 0);
    EXPECT_EQ(settings.clock_minutes, 1);
}

TEST_F(MatchPlanTest, LessThanTwoRepeatsAreOne) {
    for (const int repeats : {1, 0, -1, INT32_MIN}) {
        MatchFields fields = fields_for(TWO_MOVE_OPENINGS);
        fields.repeats = repeats;
        ASSERT_EQ(begin_match(fields), 0);
        EXPECT_EQ(settings2.match_repeats, 1) << repeats;
    }
}

TEST_F(MatchPlanTest, AFileThatCannotBeReadStartsNoMatch) {
    dxp_state.match_games = 5;
    dxp_state.match_wins = 3;
    MatchFields fields = fields_for(FILE_OPENINGS);
    fields.ballot_file = folder.file("missing.pdn");
    EXPECT_NE(begin_match(fields), 0);
    EXPECT_EQ(events_of("box"), Events{"box Error: Error reading ballots file"});
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(dxp_state.match_games, 5);
    EXPECT_EQ(dxp_state.match_wins, 3);
    EXPECT_EQ(setting_text(settings2.match_ballot_file), folder.file("missing.pdn")) << "stored all the same";
}

TEST_F(MatchPlanTest, ResumesBehindTheGamesOfTheFile) {
    write_stats(3, 2, 1, 1);
    MatchFields fields = fields_for(TWO_MOVE_OPENINGS);
    fields.resume = true;
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(dxp_state.match_games, 7);
    EXPECT_EQ(dxp_state.match_wins, 3);
    EXPECT_EQ(dxp_state.match_losses, 2);
    EXPECT_EQ(dxp_state.match_draws, 1);
    EXPECT_EQ(dxp_state.match_unknowns, 1);
    EXPECT_TRUE(same_pieces(game.board, two_move_positions()[3]));
    EXPECT_EQ(dxp_state.engine_colour, BLACK) << "the eighth game is the second of its pair";
    fields.resume = false;
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(dxp_state.match_games, 0);
    EXPECT_EQ(dxp_state.match_wins, 0);
    EXPECT_EQ(dxp_state.engine_colour, WHITE);
}

TEST_F(MatchPlanTest, AWholeMatchIsNotResumed) {
    for (const int games : {158, 159, 5000}) {
        write_stats(games, 0, 0, 0);
        MatchFields fields = fields_for(TWO_MOVE_OPENINGS);
        fields.repeats = 1;
        fields.resume = true;
        ASSERT_EQ(begin_match(fields), 0);
        EXPECT_EQ(dxp_state.match_games, 0) << games;
        EXPECT_EQ(dxp_state.match_wins, 0);
    }
}

// The number of repeats is that of the fields, not the one that was stored before.
TEST_F(MatchPlanTest, ResumesByTheNewNumberOfRepeats) {
    settings2.match_repeats = 1;
    write_stats(200, 0, 0, 0);
    MatchFields fields = fields_for(TWO_MOVE_OPENINGS);
    fields.repeats = 2;
    fields.resume = true;
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(dxp_state.match_games, 200);
    EXPECT_TRUE(same_pieces(game.board, two_move_positions()[100 - 79]));
}

TEST_F(MatchPlanTest, AFileOfPositionsResumesAtFaceValue) {
    MatchFields fields = fields_for(FILE_OPENINGS);
    fields.ballot_file = write_ballots(THREE_STARTS);
    fields.resume = true;
    write_stats(0, 0, 3, 0);
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(dxp_state.match_games, 3);
    EXPECT_EQ(match_plan.opening_text, "start position 2");
    write_stats(0, 0, 6, 0);
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(dxp_state.match_games, 0) << "there are no more than six games";
    EXPECT_EQ(match_plan.opening_text, "start position 1");
}

TEST_F(MatchPlanTest, ASearchThatRunsIsGivenUp) {
    script.hold = true;
    start_search();
    wait_until_held();
    ASSERT_EQ(begin_match(fields_for(TWO_MOVE_OPENINGS)), 0);
    EXPECT_FALSE(search_thread.searching);
    script.hold = false;
    settle();
    EXPECT_EQ(game.history_count, 1) << "its move is not played in the match";
}

TEST_F(MatchPlanTest, MinutesAreShownWholeWhereNothingIsLost) {
    const std::pair<double, const char*> rows[] = {
        {7, "7"},        {7.05, "7"},  {7.1, "7.1"},  {0.5, "0.5"},  {0.05, "0"},
        {12.25, "12.2"}, {120, "120"}, {6.97, "7.0"}, {0.25, "0.2"}, {1e9, "1000000000"}};
    for (const auto& [minutes, wanted] : rows) {
        char text[40];
        match_minutes_text(minutes, text, sizeof text);
        EXPECT_STREQ(text, wanted) << minutes;
    }
    char cut[3];
    match_minutes_text(1234, cut, sizeof cut);
    EXPECT_STREQ(cut, "12");
}

#include "dxp/match.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "control/game.h"
#include "control/game_commands.h"
#include "control/program_flags.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "core/ballots.h"
#include "dxp/game_files.h"
#include "dxp/game_flow.h"
#include "dxp/statistics.h"
#include "records/pdn_game.h"

MatchPlan match_plan;

namespace {

constexpr double WHOLE_MINUTES = 0.1 - 1e-9;  // a tenth that was entered is shown
constexpr int TWO_MOVES = 2;
constexpr int THREE_MOVES = 3;

MatchOpenings openings_of_settings() {
    return settings.match_opening_kind > FILE_OPENINGS
               ? TWO_MOVE_OPENINGS
               : static_cast<MatchOpenings>(settings.match_opening_kind);
}

int32_t repeats_of_settings() { return setting_number(settings2.match_repeats, 1, INT32_MAX); }

int ballot_moves(MatchOpenings openings) { return openings == THREE_MOVE_OPENINGS ? THREE_MOVES : TWO_MOVES; }

// The last position of a game, or where it breaks.
ReplayState final_state(PdnNode* list) {
    ReplayState state;
    for (PdnNode* node = pdn_start_position(list, state); node;) node = pdn_next_move(node, state);
    return state;
}

void begin_at(const Position& position, int side, const char* name) {
    set_board(position, side);
    restart_history(position, side);
    game_text_update();
    match_plan.opening_text = name;
}

int begin_at_ballot(int moves, int index) {
    Ballot ballot;
    if (!find_ballot(moves, index, ballot)) return 1;
    new_game();
    begin_at(ballot.position, ballot.position.side, ballot.text.data());
    return 0;
}

int begin_at_file_position(int index) {
    const ReplayState& state = match_plan.start_positions[static_cast<size_t>(index)];
    char name[40];
    std::snprintf(name, sizeof name, "start position %d", index + 1);
    begin_at(state.position, state.side, name);
    return 0;
}

// The number of moves that the settings tell, 0 for no limit: for that the last game's clock may still reckon
// with as many as it does then.
int32_t moves_of_settings() {
    const bool unlimited =
        !dxp_state.moves_limited && settings.clock_moves_limit == DXP_UNLIMITED_CLOCK_MOVES;
    return unlimited ? 0 : settings.clock_moves_limit;
}

// What every match begins with: this side is the initiator of a game by the clock, and nothing is counted.
void prepare_match() {
    dxp_drop_search();
    set_gui_mode(DXP_MODE);
    settings.operator_time = 0;
    // The engine plays by the same time that the other side is told.
    settings2.increment_mode = settings2.match_incremental;
    set_time_control(TIME_GAME_CLOCK);
    dxp_state.match_games = 0;
    dxp_state.dxp_follower = 0;
    dxp_state.moves_limited = moves_of_settings() > 0;
    clear_match_counters();
}

void take_over_times(const MatchFields& fields) {
    if (settings2.match_incremental) {
        settings2.initial_seconds = fields.initial_seconds;
        settings2.increment_seconds = fields.increment_seconds;
    } else {
        settings.clock_minutes = fields.minutes;
        settings.clock_moves_limit = fields.moves;
        dxp_state.moves_limited = fields.moves > 0;
    }
}

bool can_resume_behind(int32_t games, MatchOpenings openings) {
    return games > 0 && games < match_total_games(openings);
}

void take_over_results() {
    MatchCounters results;
    const int32_t games = read_match_stats(results);
    if (!can_resume_behind(games, openings_of_settings())) return;
    dxp_state.match_games = games;
    dxp_state.match_wins = results.wins;
    dxp_state.match_draws = results.draws;
    dxp_state.match_losses = results.losses;
    dxp_state.match_unknowns = results.unknowns;
    trim_match_games(games);
}

void start_match() {
    reset_game_clock();
    update_menu();
    update_title();
    if (set_next_start_position(dxp_state.match_games / 2) != 0) return;
    ui.redraw_board();
    dxp_send_game_request();
}

}  // namespace

void start_matches() {
    match_hooks.set_next_start_position = set_next_start_position;
    match_hooks.append_match_game = append_match_game;
    match_hooks.write_match_stats = write_match_stats;
    match_hooks.read_match_stats = read_match_stats;
}

MatchFields match_fields() {
    MatchFields fields;
    fields.openings = openings_of_settings();
    fields.ballot_file = setting_text(settings2.match_ballot_file);
    fields.incremental = program_flags.autoconnect_enabled && settings2.match_incremental != 0;
    fields.minutes = settings.clock_minutes;
    fields.moves = moves_of_settings();
    fields.initial_seconds = settings2.initial_seconds;
    fields.increment_seconds = settings2.increment_seconds;
    fields.repeats = repeats_of_settings();
    return fields;
}

int start_position_count(MatchOpenings openings) {
    if (openings == FILE_OPENINGS) return static_cast<int>(match_plan.start_positions.size());
    return ballot_count(ballot_moves(openings));
}

int start_position_count() { return start_position_count(openings_of_settings()); }

int64_t match_total_games(MatchOpenings openings) {
    return int64_t{2} * start_position_count(openings) * repeats_of_settings();
}

int64_t match_total_games() { return match_total_games(openings_of_settings()); }

bool match_can_resume(MatchOpenings openings) {
    MatchCounters results;
    return openings == FILE_OPENINGS || can_resume_behind(read_match_stats(results), openings);
}

int set_next_start_position(int32_t pair) {
    const MatchOpenings openings = openings_of_settings();
    const int count = start_position_count(openings);
    if (count == 0) return 1;
    const int index = pair % count;
    if (index == 0 && dxp_state.match_games >= match_total_games(openings)) return 1;
    return openings == FILE_OPENINGS ? begin_at_file_position(index)
                                     : begin_at_ballot(ballot_moves(openings), index);
}

int read_ballots_file() {
    match_plan.start_positions.clear();
    PdnTable table;
    if (pdn_read_file(std::string(setting_text(settings2.match_ballot_file)), table) == 0)
        for (const PdnGame& list : table)
            if (list) match_plan.start_positions.push_back(final_state(list.get()));
    if (!match_plan.start_positions.empty()) return 0;
    ui.message_box("Error reading ballots file", DEFAULT_BOX_TITLE, ICON_ERROR);
    return 1;
}

int begin_match(const MatchFields& fields) {
    store_setting_text(settings2.match_ballot_file, fields.ballot_file);
    settings.match_opening_kind = fields.openings;
    if (fields.openings == FILE_OPENINGS && read_ballots_file() != 0) return 1;
    settings2.match_incremental = program_flags.autoconnect_enabled && fields.incremental;
    prepare_match();
    take_over_times(fields);
    settings2.match_repeats = std::max(fields.repeats, 1);
    if (fields.resume) take_over_results();
    start_match();
    return 0;
}

int begin_match_autoconnect() {
    if (connect_to_host() != 0) return 1;
    if (openings_of_settings() == FILE_OPENINGS && read_ballots_file() != 0) return 1;
    prepare_match();
    start_match();
    return 0;
}

void match_minutes_text(double minutes, char* buffer, size_t size) {
    const bool whole = minutes - std::floor(minutes) < WHOLE_MINUTES;
    std::snprintf(buffer, size, whole ? "%.0f" : "%.1f", whole ? std::floor(minutes) : minutes);
}

#include "cli/dxp_console.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <thread>

#include "base/clock.h"
#include "cli/console.h"
#include "cli/game_console.h"
#include "cli/message_loop.h"
#include "cli/play_commands.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/program_flags.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/ui.h"
#include "dxp/game_files.h"
#include "dxp/game_flow.h"
#include "dxp/statistics.h"
#include "search/engine_settings.h"

DxpConsole dxp_console;

namespace {

__attribute__((format(printf, 1, 2))) void tell(const char* format, ...) {
    show_progress("");
    va_list arguments;
    va_start(arguments, format);
    print_line(format, arguments);
    va_end(arguments);
}

__attribute__((format(printf, 1, 2))) void tell_problem(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print_error(format, arguments);
    va_end(arguments);
}

void show_protocol(const char* text, bool received) {
    if (!dxp_console.options.verbose) return;
    std::string line(text);
    if (line.ends_with('\n')) line.pop_back();
    tell("%s %s", received ? "<" : ">", line.c_str());
}

Ui make_dxp_screen() {
    Ui screen = no_ui();
    screen.append_dxp_text = show_protocol;
    screen.message_box = [](const char* text, const char* title, MessageIcon) {
        if (dxp_console.boxes_told) tell_problem("%s: %s", title, text);
    };
    screen.pause = [](int milliseconds) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    };
    screen.post_search_picture = [](SearchPicture) { wake_console_loop(); };
    screen.post = post_console_work;
    return screen;
}

const char* name_of(int side) {
    return side == dxp_state.engine_colour ? dxp_state.engine_name : dxp_state.opponent_name;
}

std::string counters_text() {
    char text[120];
    std::snprintf(text, sizeof text, "%d wins %d losses %d draws %d unknowns", dxp_state.match_wins,
                  dxp_state.match_losses, dxp_state.match_draws, dxp_state.match_unknowns);
    return text;
}

std::string number_text() {
    std::string text = std::to_string(dxp_state.match_games + 1);
    if (dxp_console.match) text += " of " + std::to_string(dxp_console.total_games);
    return text;
}

void tell_game(int32_t result) {
    DxpConsole& c = dxp_console;
    ++c.games;
    c.last_end_ms = clock_ms();
    c.thought += clock_used(dxp_state.engine_colour);
    // A match that begins anew begins a score of its own.
    if (dxp_state.match_games == 0) c.score = MatchScore{};
    add_game(c.score, dxp_state.match_games, half_points(result, dxp_state.engine_colour));
    if (c.options.quiet) return;
    tell("game %s: %s - %s %s in %d moves; %s, %s", number_text().c_str(), name_of(WHITE), name_of(BLACK),
         result_string(result), game.history_count / 2, counters_text().c_str(), score_text(c.score).c_str());
}

void watch_first_game() {
    if (dxp_console.first_game_ms < 0 && dxp_state.phase != DXP_NO_GAME)
        dxp_console.first_game_ms = clock_ms();
}

void watch_connection() {
    const int32_t state = dxp_connection.connection_state.load(std::memory_order_acquire);
    if (state == dxp_console.seen_state) return;
    const bool was_connected = dxp_console.seen_state == DXP_CONNECTED;
    dxp_console.seen_state = state;
    if (was_connected) tell("connection ended");
    if (state == DXP_LISTENING) tell("listening on port %s", dxp_connection.port_text);
    if (state == DXP_CONNECTED) tell("connected");
}

// Told once a wait, though it is tried again and again.
void watch_port() {
    bool& told = dxp_console.taken_port_told;
    const bool listening = dxp_console.seen_state == DXP_LISTENING;
    const bool taken = listening && dxp_connection.port_taken.load(std::memory_order_relaxed);
    if (taken && !told) tell_problem("cannot listen on port %s", dxp_connection.port_text);
    told = listening && (told || taken);
}

// A peer that asks for a game in mid-match asks for all games from then on.
void watch_role() {
    if (dxp_console.seen_state == DXP_CONNECTED && dxp_state.dxp_follower) dxp_console.match = false;
}

// The other side has answered a request with a refusal: while games follow each other there is always one.
bool match_refused() {
    return dxp_console.match && dxp_console.seen_state == DXP_CONNECTED && dxp_state.phase == DXP_NO_GAME;
}

bool nothing_follows() {
    if (match_refused()) fail("%s does not accept the game", dxp_state.opponent_name);
    return dxp_console.over || match_refused() ||
           (!dxp_console.options.server && dxp_console.seen_state == DXP_UNCONNECTED);
}

void print_json() {
    const DxpConsole& c = dxp_console;
    nlohmann::json line;
    line["games"] = counted_games();
    line["wins"] = dxp_state.match_wins;
    line["losses"] = dxp_state.match_losses;
    line["draws"] = dxp_state.match_draws;
    line["unknowns"] = dxp_state.match_unknowns;
    line["opponent"] = dxp_state.opponent_name;
    line["score"] = score_text(c.score);
    line["whole"] = c.over;
    line["played"] = c.games;
    line["seconds"] = c.games > 0 ? static_cast<double>(c.last_end_ms - c.first_game_ms) / 1000 : 0.0;
    line["thought_seconds"] = c.thought;
    line["games_file"] = match_games_path();
    line["statistics_file"] = match_stats_path();
    std::printf("%s\n", line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

}  // namespace

int32_t counted_games() {
    return dxp_state.match_wins + dxp_state.match_losses + dxp_state.match_draws + dxp_state.match_unknowns;
}

bool start_dxp_console(const DxpConsoleOptions& options) {
    dxp_console = DxpConsole{};
    dxp_console.options = options;
    if (!check_egdb_choice(dxp_console.options.egdb)) return false;
    engine_settings.hash_size_mb = options.hash_mb;
    set_search_threads(options.threads);
    if (!start_game_console(make_dxp_screen())) return false;
    if (!use_egdb_in_game(dxp_console.options.egdb, true)) return false;
    settings.pondering_on = options.ponder;
    settings.sound_on = 0;
    set_book_by_name(options.book);
    program_flags.server_mode = options.server;
    if (options.port > 0) setenv(DXP_PORT_VARIABLE, std::to_string(options.port).c_str(), 1);
    start_matches();
    match_hooks.game_ended = tell_game;
    match_hooks.match_over = [] { dxp_console.over = true; };
    start_dxp();
    return true;
}

void run_dxp_console() {
    watch_connection();
    while (!interrupted && !nothing_follows()) {
        turn_console_loop();
        watch_first_game();
        watch_connection();
        watch_port();
        watch_role();
    }
    terminate_connection_command();
    discard_search();
    watch_connection();
    show_progress("");
}

void print_dxp_summary() {
    const DxpConsole& c = dxp_console;
    if (c.options.json) return print_json();
    if (c.games == 0) return tell("no games");
    tell("%d games: %s, %s", counted_games(), counters_text().c_str(), score_text(c.score).c_str());
    const double seconds = static_cast<double>(c.last_end_ms - c.first_game_ms) / 1000;
    tell("%d games in %.1f seconds, of which this side thought %.1f", c.games, seconds, c.thought);
    tell("games in %s", match_games_path().c_str());
    tell("statistics in %s", match_stats_path().c_str());
}

// A game against the engine on a terminal. The loop stands for the windows' loop of messages: it ticks every
// 50 milliseconds and reads what the user types in between. Of a script, each line waits until the engine has
// made its move, so that a file of lines is played as it would be typed.
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "base/clock.h"
#include "base/line_input.h"
#include "base/paths.h"
#include "book/opening_book.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/egdb_options.h"
#include "cli/game_console.h"
#include "cli/options.h"
#include "cli/play_commands.h"
#include "cli/play_screen.h"
#include "control/game.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "search/engine_settings.h"

namespace {

struct PlayOptions {
    double time = 3.0;
    int threads = 1;
    int hash_mb = 64;
    std::string fen;
    std::string mode = "normal";
    std::string book = "best";
    std::string book_file;  // empty: the program's own
    bool ponder = false;
    bool quiet = false;
    EgdbChoice egdb;
};

// A search runs or waits for the one before it, or has ended without its result having been seen; a ponder
// search is none.
bool search_is_open() {
    if (search_thread.start_waits) return true;
    if (search_thread.pondering.load(std::memory_order_relaxed)) return false;
    return search_thread.searching.load(std::memory_order_acquire) ||
           search_thread.search_finished.load(std::memory_order_acquire);
}

// The engine has the move, or analyses games. An analysis of the position on the board is open until the user
// ends it.
bool engine_is_busy() { return search_is_open() && !is_analysis_mode(game.gui_mode); }

// Says what the engine did since the last look.
struct Watch {
    int history_count = 0;
    bool open = false;

    void look() {
        const bool now_open = search_is_open();
        if (!is_analyze_mode(game.gui_mode)) {
            const bool moved = history_count > 0 && game.history_count > history_count;
            if (moved) print_engine_moves(history_count);
            if (moved || (open && !now_open)) say("%s", search_text());
            if (!play_screen.end.empty()) say("%s", std::exchange(play_screen.end, "").c_str());
        }
        take_over();
    }
    // What is there now is not the engine's doing.
    void take_over() {
        open = search_is_open();
        history_count = game.history_count;
    }
};

// Ticks, and waits for the next line that can be run now. False if there is none yet.
bool next_line(LineInput& input, std::string& line, bool& held) {
    const int wait = tick_if_due();
    const bool asleep = clock_ms() < play_commands.sleep_until;
    if (play_commands.waiting && !search_is_open()) play_commands.waiting = false;
    if (asleep || play_commands.waiting || (held && engine_is_busy())) {
        tick_when_due();
        return false;
    }
    if (held) {
        held = false;
        return true;
    }
    if (play_screen.terminal && !play_screen.prompt_shown) {
        std::fputs("> ", stdout);
        std::fflush(stdout);
        play_screen.prompt_shown = true;
    }
    if (read_input_line(input, wait, line) != LINE_READ) return false;
    play_screen.prompt_shown = false;
    held = !play_screen.terminal && engine_is_busy() && !runs_at_once(line);
    return !held;
}

// Behind the last line the engine may finish what it is doing, unless that has no end.
void finish_play(Watch& watch) {
    const bool endless = settings.time_menu_id == TIME_INFINITE;
    if (endless && real_search_runs()) stop_search();
    while (search_is_open() && !interrupted) {
        tick_when_due();
        watch.look();
        print_changed_board();
        if (endless && real_search_runs()) stop_search();
    }
}

void run_loop() {
    LineInput input;
    Watch watch;
    std::string line;
    bool held = false;
    watch.take_over();
    while (!play_commands.quit && !interrupted) {
        print_changed_board();
        const bool ready = next_line(input, line, held);
        watch.look();
        if (ready) {
            run_play_line(line);
            watch.take_over();
            if (play_commands.engine_moves_behind > 0) {
                watch.history_count = play_commands.engine_moves_behind;
                watch.look();
            }
        } else if (input.ended && !held && input.unread.empty()) {
            finish_play(watch);
            break;
        }
    }
    print_changed_board();
}

void run_play(PlayOptions& options) {
    catch_interrupt();
    play_screen = PlayScreen{};
    play_commands = PlayCommands{};
    play_screen.start_folder = absolute_path(".");
    if (!options.book_file.empty()) options.book_file = absolute_path(options.book_file);
    play_screen.terminal = input_is_terminal();
    play_screen.quiet = options.quiet;
    engine_settings.hash_size_mb = options.hash_mb;
    if (!check_egdb_choice(options.egdb)) return;
    Position position = START_POSITION;
    if (!options.fen.empty() && !read_position(options.fen, position)) return;
    if (!is_legal_setup(position)) return fail("Illegal position");
    set_search_threads(options.threads);
    if (!start_game_console(make_play_screen())) return;
    if (!use_egdb_in_game(options.egdb, true)) return;
    if (!options.book_file.empty() && load_book_from(options.book_file) != 0)
        return fail("cannot read the book %s", options.book_file.c_str());
    set_time_per_move(options.time);
    settings.pondering_on = options.ponder;
    set_book_by_name(options.book);
    if (!options.fen.empty()) run_play_line("setup " + options.fen);
    if (options.mode != "normal") set_mode_by_name(options.mode);
    run_loop();
    discard_search();
    show_progress("");
    if (interrupted) set_exit_status(EXIT_BAD_INPUT);
}

}  // namespace

void add_play_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "play",
        "Play against the engine on the terminal. Type moves such as 32-28, and help for all commands; lines "
        "may also come from a file or a pipe");
    const auto options = std::make_shared<PlayOptions>();
    add_seconds_option(*command, options->time, "Seconds for each move of the engine")->capture_default_str();
    command->add_option("--fen", options->fen, "Position to start from");
    command->add_option("--mode", options->mode, "What the engine does at first")
        ->check(CLI::IsMember({"normal", "twoplayers", "analysis", "allscores", "autoplay"}))
        ->capture_default_str();
    command->add_option("--book", options->book, "Moves taken from the opening book")
        ->check(CLI::IsMember({"off", "all", "good", "best"}))
        ->capture_default_str();
    command->add_option("--book-file", options->book_file, "Another opening book than the program's own");
    add_hash_option(*command, options->hash_mb)->capture_default_str();
    add_threads_option(*command, options->threads);
    command->add_flag("--ponder", options->ponder, "Have the engine think in your time");
    command->add_flag("--quiet", options->quiet, "Print no boards");
    add_egdb_options(*command, options->egdb, true);
    command->callback([options] { run_play(*options); });
}

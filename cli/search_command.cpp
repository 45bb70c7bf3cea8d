#include <cinttypes>
#include <cstdio>
#include <memory>

#include "base/log.h"
#include "base/paths.h"
#include "book/book_move.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/egdb_options.h"
#include "cli/options.h"
#include "core/notation.h"
#include "egdb/egdb_state.h"
#include "egdb/engine_egdb.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/search_state.h"

namespace {

struct SearchOptions {
    std::string fen;
    double time = 3.0;
    int depth = 0;
    int threads = 1;
    bool all_scores = false;
    std::string book;
    EgdbChoice egdb;
};

void print_log(const char* text) {
    std::fputs(text, stdout);
    std::fflush(stdout);
}

// Before the search, which would do it too: what cannot be opened is no reason to search first.
bool open_databases(const EgdbChoice& choice, char* text) {
    const DatabaseOptions& wanted = engine_settings.database;
    if (!wanted.wld_enable) return true;
    egdb_engine.egdb_prepare(text);
    const bool values = egdb_state == EGDB_IN_USE, numbers = !wanted.mtc_enable || egdb_engine.mtc;
    if (!values || !numbers)
        fail("the database in %s cannot be opened", (values ? choice.mtc_folder : choice.folder).c_str());
    return values && numbers;
}

void run_search(SearchOptions& options) {
    catch_interrupt();
    Position position;
    if (!read_position(options.fen, position)) return;
    if (!is_legal_setup(position)) return fail("Illegal position");
    if (!check_egdb_choice(options.egdb)) return;
    const std::string book = options.book.empty() ? "" : absolute_path(options.book);
    set_search_threads(options.threads);
    if (!start_console_engine()) return;
    if (!book.empty() && load_book_from(book) != 0) return fail("cannot read the book %s", book.c_str());
    if (!book.empty()) engine_settings.book_mode = BOOK_BEST_MOVES;
    set_fixed_time(options.depth > 0 ? NO_TIME_LIMIT : options.time);
    if (options.depth > 0) search_state.depth_limit = options.depth;
    use_egdb_in_engine(options.egdb, false);
    log_listener = print_log;
    char text[SEARCH_TEXT_SIZE];
    if (!open_databases(options.egdb, text)) return;
    Move best{};
    int32_t searched = 0;
    const uint32_t flags = SEARCH_FULL_DEPTH | (options.all_scores ? SEARCH_ALL_SCORES : 0u);
    const int32_t value = getmove(position, position.side, text, stop_flag, flags, best, searched);
    log_egdb_statistics();
    char move[MOVE_TEXT_SIZE];
    const bool has_move = full_move_text(position, best, position.side, move) > 0;
    std::printf("best %s value %d depth %d nodes %" PRIu64 "\n", has_move ? move : "none", value,
                search_state.completed_depth, searched_nodes());
}

}  // namespace

void add_search_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "search",
        "Search a position and print the best move; the value is positive when good for black, and where --mtc\n"
        "answers it is the number of single moves to the next conversion");
    const auto options = std::make_shared<SearchOptions>();
    command->add_option("FEN", options->fen, "Position")->required();
    CLI::Option* const time =
        add_seconds_option(*command, options->time,
                           "Seconds for the move; the search may take up to four times as long")
            ->capture_default_str();
    add_depth_option(*command, options->depth, "Search to this depth, whatever the time")->excludes(time);
    add_threads_option(*command, options->threads);
    command->add_flag("--all-scores", options->all_scores, "Give every move its value");
    command->add_option("--book", options->book, "Opening book to answer from where it knows a move");
    add_egdb_options(*command, options->egdb, false);
    command->callback([options] { run_search(*options); });
}

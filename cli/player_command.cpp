// The player of a match: a process that is told positions on standard input and answers with moves, as
// tools/match_protocol.h has it.
#include <chrono>
#include <csignal>
#include <iostream>
#include <memory>

#include "book/book_move.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/options.h"
#include "eval/weights.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tools/egdb_whole.h"
#include "tools/match_protocol.h"

namespace {

struct PlayerOptions {
    std::string weights;
    std::string book;
    std::string egdb;
    int hash_mb = 8;
    uint64_t nodes = 0;
    double time = 0;
    int depth = 0;
};

void set_limits(const PlayerOptions& options) {
    set_fixed_time(options.time > 0 ? options.time : NO_TIME_LIMIT);
    if (options.depth > 0) search_state.depth_limit = options.depth;
    if (options.nodes == 0) return;
    search_state.node_limit = options.nodes;
    search_state.step_time = 0;  // no iteration is left out, as none is paid for in time
}

PlayerAnswer search_position(const Position& position) {
    char text[SEARCH_TEXT_SIZE];
    std::atomic<int32_t> never_stopped = 0;
    int32_t searched = 0;
    PlayerAnswer answer{};
    search_state.game_line = &position;
    const auto start = std::chrono::steady_clock::now();
    answer.score = getmove(position, position.side, text, never_stopped, SEARCH_QUIET, answer.move, searched);
    answer.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    search_state.game_line = nullptr;
    answer.depth = search_state.completed_depth;
    answer.nodes = searched_nodes();
    return answer;
}

// Read wholly into memory: what a match compares is values, not disks.
struct PlayerDatabase {
    std::unique_ptr<EgdbDatabase> database;
    EgdbDriver driver{};
};

bool open_database(const std::string& folder, PlayerDatabase& opened) {
    if (folder.empty()) return true;
    opened.database = open_whole_database(folder, EGDB_MAX_PIECES, nullptr);
    if (!opened.database) return false;
    use_in_engine(*opened.database, opened.driver);
    return true;
}

void run_player(const PlayerOptions& options) {
    std::signal(SIGINT, SIG_IGN);  // the match ends its players itself
    engine_settings.hash_size_mb = options.hash_mb;
    if (load_weights_from(options.weights) != 0)
        return fail("cannot open %s for reading", options.weights.c_str());
    PlayerDatabase database;
    if (!open_database(options.egdb, database))
        return fail("no database can be read in %s", options.egdb.c_str());
    if (tt_allocate() != 0) return fail("Cannot allocate hashtable");
    if (!options.book.empty() && load_book_from(options.book) != 0)
        return fail("cannot read the book %s", options.book.c_str());
    engine_settings.book_mode = BOOK_BEST_MOVES;
    set_limits(options);
    std::string line;
    std::vector<Position> positions;
    while (std::getline(std::cin, line)) {
        if (line == PLAYER_NEW_GAME) {
            tt_clear();
            std::cout << PLAYER_READY << std::endl;
        } else if (read_go_line(line, positions)) {
            std::cout << move_line(search_position(positions.back())) << std::endl;
        } else {
            return fail("not a question to a player: %.200s", line.c_str());
        }
    }
}

}  // namespace

void add_player_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("player", "One side of a match, started by it");
    command->group("");  // not for users, so not in the help
    const auto options = std::make_shared<PlayerOptions>();
    command->add_option("--weights", options->weights)->required();
    command->add_option("--egdb", options->egdb);
    add_hash_option(*command, options->hash_mb);
    command->add_option("--book", options->book);
    command->add_option("--nodes", options->nodes);
    add_seconds_option(*command, options->time, "Seconds for each move");
    add_depth_option(*command, options->depth);
    command->callback([options] { run_player(*options); });
}

// DamExchange on the console: waiting for a program that asks for games, or having a match with one.
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

#include "base/files.h"
#include "base/paths.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/dxp_console.h"
#include "cli/options.h"
#include "control/program_flags.h"
#include "control/settings.h"
#include "dxp/connection_thread.h"
#include "dxp/dxp_state.h"
#include "dxp/game_files.h"
#include "dxp/statistics.h"

namespace {

constexpr double MAX_MINUTES = 999;  // as many as a request can tell
constexpr int MAX_MOVES = 999;
constexpr double MAX_SECONDS = 99999;
constexpr int CONNECT_ATTEMPTS = 5;
constexpr int CONNECT_AGAIN_MS = 150;
constexpr int MAX_PORT = 65535;
constexpr int MAX_REPEATS = 1000000;

struct MatchOptions {
    DxpConsoleOptions console;
    std::string host;
    std::string ballots = "2";
    double minutes = 5;
    int moves = 75;
    double initial = -1;
    double increment = 0;
    int repeats = 1;
    bool resume = false;
};

using Options = std::shared_ptr<MatchOptions>;

// Programs that wait do not do so without a gap, so one attempt is not enough. The last failure is told.
bool connect_to(const std::string& host) {
    if (host.size() >= sizeof settings.dxp_host) {
        fail("the name of the machine is too long: %s", host.c_str());
        return false;
    }
    store_setting_text(settings.dxp_host, host);
    for (int attempt = 1; attempt <= CONNECT_ATTEMPTS && !interrupted; ++attempt) {
        dxp_console.boxes_told = attempt == CONNECT_ATTEMPTS;
        if (connect_to_host() == 0) return dxp_console.boxes_told = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(CONNECT_AGAIN_MS));
    }
    set_exit_status(EXIT_BAD_INPUT);
    return false;
}

// The settings have no room for more, and a shorter name would be another file.
bool has_room_for(const std::string& ballots) {
    if (ballots.size() < sizeof settings2.match_ballot_file) return true;
    fail("the name of the file %s is too long", ballots.c_str());
    return false;
}

MatchFields fields_of(const MatchOptions& options) {
    MatchFields fields = match_fields();
    fields.openings = options.ballots == "2"   ? TWO_MOVE_OPENINGS
                      : options.ballots == "3" ? THREE_MOVE_OPENINGS
                                               : FILE_OPENINGS;
    if (fields.openings == FILE_OPENINGS) fields.ballot_file = options.ballots;
    fields.incremental = options.initial >= 0;
    fields.minutes = options.minutes;
    fields.moves = options.moves;
    fields.initial_seconds = options.initial;
    fields.increment_seconds = options.increment;
    fields.repeats = options.repeats;
    fields.resume = options.resume;
    return fields;
}

// What is left of the match of the files. A match that cannot go on would begin anew and overwrite the games
// that there are.
enum class Rest { SOME, NONE, UNKNOWN };

Rest rest_of_match(const MatchFields& fields) {
    if (fields.openings == FILE_OPENINGS) {
        store_setting_text(settings2.match_ballot_file, fields.ballot_file);
        if (read_ballots_file() != 0) return Rest::UNKNOWN;
    }
    MatchCounters results;
    const int32_t played = read_match_stats(results);
    const int64_t all = match_total_games(fields.openings);
    if (played == 0 && file_size(match_games_path()) > 0) {
        fail("cannot go on: %s tells of no games, but %s has some", match_stats_path().c_str(),
             match_games_path().c_str());
        return Rest::UNKNOWN;
    }
    if (played < all) return Rest::SOME;
    if (played == all) return Rest::NONE;
    fail("cannot go on: %d games are played by %s, and this match has %lld", played,
         match_stats_path().c_str(), static_cast<long long>(all));
    return Rest::UNKNOWN;
}

// Whether there is a match to go on with; if not, that is told.
bool can_resume(const MatchFields& fields) {
    const Rest rest = rest_of_match(fields);
    if (rest == Rest::NONE)
        std::printf("all games of the match are played: %s\n", match_stats_path().c_str());
    if (rest == Rest::UNKNOWN) set_exit_status(EXIT_BAD_INPUT);
    return rest == Rest::SOME;
}

void run_listen(const MatchOptions& options) {
    catch_interrupt();
    if (!start_dxp_console(options.console)) return;
    wait_for_connection_command();
    run_dxp_console();
    print_dxp_summary();
}

void run_connect(const MatchOptions& options) {
    catch_interrupt();
    if (!start_dxp_console(options.console) || !connect_to(options.host)) return;
    run_dxp_console();
    print_dxp_summary();
}

void run_match(MatchOptions options) {
    catch_interrupt();
    if (options.ballots != "2" && options.ballots != "3") options.ballots = absolute_path(options.ballots);
    if (!has_room_for(options.ballots) || !start_dxp_console(options.console)) return;
    program_flags.autoconnect_enabled = true;  // an increment needs no leave here
    settings2.match_repeats = options.repeats;
    const MatchFields fields = fields_of(options);
    if (fields.resume && !can_resume(fields)) return;
    if (!connect_to(options.host)) return;
    if (begin_match(fields) != 0) return set_exit_status(EXIT_BAD_INPUT);
    dxp_console.match = true;
    dxp_console.total_games = match_total_games();
    dxp_console.score = score_in_file(match_games_path(), dxp_state.match_games);
    run_dxp_console();
    // The other side may go without a word behind the last game.
    const bool all = dxp_console.match && counted_games() >= dxp_console.total_games;
    dxp_console.over = dxp_console.over || all;
    print_dxp_summary();
    if (!dxp_console.over) fail("the match was broken off; --resume goes on with it");
}

void add_console_options(CLI::App& command, const Options& options) {
    DxpConsoleOptions& console = options->console;
    command.add_option("--port", console.port, "Port instead of the usual one, 27531")
        ->check(CLI::Range(1, MAX_PORT));
    command.add_option("--book", console.book, "Moves taken from the opening book")
        ->check(CLI::IsMember({"off", "all", "good", "best"}))
        ->capture_default_str();
    add_hash_option(command, console.hash_mb)->capture_default_str();
    add_threads_option(command, console.threads);
    add_egdb_options(command, console.egdb, true);
    command.add_flag("--ponder", console.ponder, "Have the engine think in the other's time");
    command.add_flag("--verbose", console.verbose, "Print all messages");
    command.add_flag("--quiet", console.quiet, "Print no line for each game");
    command.add_flag("--json", console.json, "Print the summary as one line of JSON");
}

void add_listen(CLI::App& dxp) {
    CLI::App* const command =
        dxp.add_subcommand("listen", "Wait for another program and play the games that it asks for");
    const Options options = std::make_shared<MatchOptions>();
    add_console_options(*command, options);
    command->add_flag("-s", options->console.server,
                      "Server: wait for the next program when one has gone, and tell the other side what\n"
                      "the engine thinks");
    command->callback([options] { run_listen(*options); });
}

void add_connect(CLI::App& dxp) {
    CLI::App* const command =
        dxp.add_subcommand("connect", "Connect to another program and play the games that it asks for");
    const Options options = std::make_shared<MatchOptions>();
    command->add_option("HOST", options->host, "Name or address of its machine")->required();
    add_console_options(*command, options);
    command->callback([options] { run_connect(*options); });
}

void add_times(CLI::App& command, const Options& options) {
    CLI::Option* const minutes =
        command.add_option("--minutes", options->minutes, "Minutes for a number of moves")
            ->check(number_within(0, MAX_MINUTES))
            ->capture_default_str();
    CLI::Option* const moves =
        command
            .add_option("--moves", options->moves,
                        "The number of moves, after which a game ends without a result; 0 for no limit")
            ->check(CLI::Range(0, MAX_MOVES))
            ->capture_default_str();
    CLI::Option* const initial =
        command
            .add_option("--initial", options->initial,
                        "Instead of it, seconds for the whole game; between two copies of this program only")
            ->check(number_within(0, MAX_SECONDS))
            ->excludes(minutes)
            ->excludes(moves);
    command.add_option("--increment", options->increment, "Seconds added with each move")
        ->check(number_within(0, MAX_SECONDS))
        ->needs(initial);
}

void add_match(CLI::App& dxp) {
    CLI::App* const command = dxp.add_subcommand(
        "match",
        "Connect to another program and play a match: each start position twice, with colours changed.\n"
        "Games and statistics are kept in the data folder");
    const Options options = std::make_shared<MatchOptions>();
    command->add_option("HOST", options->host, "Name or address of its machine")->required();
    command
        ->add_option("--ballots", options->ballots,
                     "Start positions: ballots of 2 moves (79) or 3 (494), or the last positions of the\n"
                     "games of a PDN file")
        ->type_name("2|3|FILE")
        ->capture_default_str();
    add_times(*command, options);
    command->add_option("--repeat", options->repeats, "How often all start positions are played")
        ->check(CLI::Range(1, MAX_REPEATS))
        ->capture_default_str();
    command->add_flag(
        "--resume", options->resume,
        "Go on with the match of the statistics file; the other options are to be those of that match");
    add_console_options(*command, options);
    command->callback([options] { run_match(*options); });
}

}  // namespace

void add_dxp_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "dxp", "Play games and matches against other programs over the network, by DamExchange");
    command->require_subcommand(1);
    add_listen(*command);
    add_connect(*command);
    add_match(*command);
}

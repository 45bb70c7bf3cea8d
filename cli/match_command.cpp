// Matches between two weights files. Each job has two players of its own, which are processes, and plays pair
// after pair with them; the results of all jobs run together here.
#include "tools/match.h"

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>

#include "base/child_process.h"
#include "base/files.h"
#include "base/paths.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/options.h"
#include "eval/weights.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tools/match_protocol.h"
#include "tools/match_statistics.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int MAX_JOBS = 64;
constexpr int64_t MAX_GAMES = 10000000;
constexpr int VERBOSE_GAMES = 100;
constexpr const char* END_NAMES[GAME_ENDS] = {
    "", "no_moves", "third_occurrence", "king_moves", "small_ending", "too_long", "adjudicated"};

struct MatchOptions {
    std::array<std::string, 2> weights;  // of A and of B
    std::array<std::string, 2> books;    // empty for none
    std::array<std::string, 2> egdb;     // folders of databases; empty for none
    int64_t games = 988;
    std::string nodes, time, depth;  // as given, for the players
    int openings = 3;
    int endings = 0;  // pieces of the endings to start from; 0 for openings
    uint64_t seed = 1;
    std::array<int64_t, 2> share = {1, 1};
    std::vector<double> sprt;
    int hash_mb = 8;
    int jobs = 1;
    bool adjudicate = true;
    bool json = false;
    bool verbose = false;
};

// What the jobs share, all of it under the lock but the options and the start positions.
struct Match {
    const MatchOptions& options;
    std::vector<Position> starts;  // of all pairs, played here or not
    Clock::time_point start = Clock::now();

    explicit Match(const MatchOptions& o)
        : options(o),
          starts(o.endings > 0 ? ending_starts(o.endings, o.seed, (o.games + 1) / 2)
                               : match_starts(o.openings, o.seed, (o.games + 1) / 2)) {}

    std::mutex lock;
    int64_t next_pair = 0;
    bool ended = false;
    std::string failure;
    MatchResults results{};
    std::array<PlayerWork, 2> work{};
    std::array<int64_t, GAME_ENDS> ends{};
    int64_t plies = 0;
};

struct Job {
    std::array<ChildProcess, 2> children;
};

ChildProcess& child_of(void* job, int player) {
    return static_cast<Job*>(job)->children[static_cast<size_t>(player)];
}

bool begin_player(void* job, int player) {
    ChildProcess& child = child_of(job, player);
    std::string line;
    return write_line(child, PLAYER_NEW_GAME) == 0 && read_line(child, line) == 0 && line == PLAYER_READY;
}

bool ask_player(void* job, int player, const Position& position, PlayerAnswer& answer) {
    ChildProcess& child = child_of(job, player);
    std::string line;
    return !interrupted && write_line(child, go_line(position)) == 0 && read_line(child, line) == 0 &&
           read_move_line(line, answer);
}

bool start_players(const MatchOptions& options, Job& job) {
    for (size_t player = 0; player < 2; ++player) {
        std::vector<std::string> arguments = {"tessarin-cli", "player",
                                              "--weights",    options.weights[player],
                                              "--hash",       std::to_string(options.hash_mb)};
        const auto add = [&](const char* name, const std::string& value) {
            if (!value.empty()) arguments.insert(arguments.end(), {name, value});
        };
        add("--nodes", options.nodes);
        add("--time", options.time);
        add("--depth", options.depth);
        add("--book", options.books[player]);
        add("--egdb", options.egdb[player]);
        if (start_child(job.children[player], THIS_PROGRAM, arguments) != 0) return false;
    }
    return true;
}

std::string summary(const MatchResults& r) {
    char text[200];
    std::snprintf(text, sizeof text,
                  "games %" PRId64 ", wins %" PRId64 ", draws %" PRId64 ", losses %" PRId64
                  ", score %.2f%%, Elo %+.1f +- %.1f, LOS %.1f%%",
                  match_games(r), r.wins, r.draws, r.losses, 100 * match_score(r),
                  elo_of_score(match_score(r)), elo_error(r), 100 * likelihood_of_superiority(r));
    return text;
}

std::string sprt_text(const MatchOptions& options, const MatchResults& results) {
    if (options.sprt.empty()) return "";
    constexpr const char* VERDICTS[] = {"open", "elo0", "elo1"};
    const SprtTest test{options.sprt[0], options.sprt[1]};
    char text[100];
    std::snprintf(text, sizeof text, "SPRT %g,%g: LLR %.2f of -%.2f to %.2f, %s", test.elo0, test.elo1,
                  sprt_log_likelihood(results, test), SPRT_BOUND, SPRT_BOUND,
                  VERDICTS[sprt_verdict(results, test)]);
    return text;
}

int64_t pair_count(const Match& match) { return static_cast<int64_t>(match.starts.size()); }

// The pairs that are this share's.
int64_t pairs_to_play(const Match& match) {
    const auto [part, parts] = match.options.share;
    return (pair_count(match) + parts - part) / parts;
}

// Under the lock: the number of the next pair, or -1 if there is none.
int64_t take_pair(Match& match) {
    const std::lock_guard guard(match.lock);
    const int64_t pair = match.next_pair * match.options.share[1] + match.options.share[0] - 1;
    if (match.ended || interrupted || pair >= pair_count(match)) return -1;
    ++match.next_pair;
    return pair;
}

void show_state(const Match& match) {
    const int64_t done = match_pairs(match.results);
    const double elapsed = std::chrono::duration<double>(Clock::now() - match.start).count();
    const double left =
        elapsed / static_cast<double>(done) * static_cast<double>(pairs_to_play(match) - done);
    show_progress(summary(match.results) + "  " + sprt_text(match.options, match.results) + "  time left " +
                  duration_text(left));
    if (match.options.verbose && match_games(match.results) % VERBOSE_GAMES == 0)
        std::fprintf(stderr, "%s  %s\n", summary(match.results).c_str(),
                     sprt_text(match.options, match.results).c_str());
}

void add_report(Match& match, const PairReport& report) {
    const std::lock_guard guard(match.lock);
    if (match.ended) return;  // decided while this pair was played
    add_pair(match.results, report.points[0], report.points[1]);
    for (const GameEnd end : report.ends) ++match.ends[end];
    match.plies += report.plies;
    for (size_t player = 0; player < 2; ++player) add_work(match.work[player], report.work[player]);
    const std::vector<double>& sprt = match.options.sprt;
    if (!sprt.empty() && sprt_verdict(match.results, {sprt[0], sprt[1]}) != SPRT_OPEN) match.ended = true;
    show_state(match);
}

void end_with(Match& match, const std::string& failure) {
    const std::lock_guard guard(match.lock);
    match.ended = true;
    if (match.failure.empty()) match.failure = failure;
}

std::string failure_text(const MatchOptions& options, Job& job, PairStatus status, int culprit) {
    const std::string player =
        std::string("player ") + "AB"[culprit] + " (" + options.weights[static_cast<size_t>(culprit)] + ")";
    if (status == PAIR_ILLEGAL_MOVE) return player + " made an illegal move";
    return player + " ended with status " +
           std::to_string(wait_for_child(job.children[static_cast<size_t>(culprit)]));
}

void run_job(Match& match) {
    Job job;
    if (!start_players(match.options, job)) return end_with(match, "cannot start the players");
    const MatchPlayers players{&job, begin_player, ask_player};
    for (int64_t pair = take_pair(match); pair >= 0; pair = take_pair(match)) {
        PairReport report;
        int culprit = PLAYER_A;
        const PairStatus status = play_pair(match.starts[static_cast<size_t>(pair)], players,
                                            match.options.adjudicate, report, culprit);
        if (interrupted) return;  // the pair was given up
        if (status != PAIR_PLAYED) return end_with(match, failure_text(match.options, job, status, culprit));
        add_report(match, report);
    }
    for (ChildProcess& child : job.children) wait_for_child(child);
}

double average(double sum, int64_t count) { return count > 0 ? sum / static_cast<double>(count) : 0; }

double kilonodes(const PlayerWork& work) {
    return work.seconds > 0 ? static_cast<double>(work.nodes) / 1000.0 / work.seconds : 0;
}

void print_text(const Match& match) {
    std::printf("%s\n", summary(match.results).c_str());
    if (!match.options.sprt.empty()) std::printf("%s\n", sprt_text(match.options, match.results).c_str());
    for (size_t player = 0; player < 2; ++player) {
        const PlayerWork& work = match.work[player];
        std::printf("%c %s: %.0f nodes a move, depth %.2f, %.0f kN/s\n", "AB"[player],
                    match.options.weights[player].c_str(),
                    average(static_cast<double>(work.nodes), work.moves),
                    average(static_cast<double>(work.depth), work.moves), kilonodes(work));
    }
}

void print_json(const Match& match) {
    const MatchResults& r = match.results;
    nlohmann::ordered_json line = {{"games", match_games(r)},   {"wins", r.wins},
                                   {"draws", r.draws},          {"losses", r.losses},
                                   {"score", match_score(r)},   {"elo", elo_of_score(match_score(r))},
                                   {"elo_error", elo_error(r)}, {"los", likelihood_of_superiority(r)},
                                   {"pairs", r.pairs},          {"plies", match.plies}};
    for (size_t end = GAME_NO_MOVES; end < GAME_ENDS; ++end) line["ends"][END_NAMES[end]] = match.ends[end];
    if (!match.options.sprt.empty()) {
        const SprtTest test{match.options.sprt[0], match.options.sprt[1]};
        constexpr const char* VERDICTS[] = {"open", "elo0", "elo1"};
        line["sprt"] = {{"elo0", test.elo0},
                        {"elo1", test.elo1},
                        {"llr", sprt_log_likelihood(r, test)},
                        {"verdict", VERDICTS[sprt_verdict(r, test)]}};
    }
    for (size_t player = 0; player < 2; ++player) {
        const PlayerWork& work = match.work[player];
        line["players"].push_back({{"weights", match.options.weights[player]},
                                   {"moves", work.moves},
                                   {"nodes", average(static_cast<double>(work.nodes), work.moves)},
                                   {"depth", average(static_cast<double>(work.depth), work.moves)},
                                   {"kilonodes_per_second", kilonodes(work)}});
    }
    std::printf("%s\n", line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

void run_match(MatchOptions options) {
    for (std::string& path : options.weights) {
        path = absolute_path(path);
        if (!check_weights(path)) return;
    }
    for (std::string& path : options.egdb) {
        if (path.empty()) continue;
        path = absolute_path(path);
        if (!folder_exists(path)) return fail("no folder: %s", path.c_str());
    }
    for (std::string& path : options.books) {
        if (path.empty()) continue;
        path = absolute_path(path);
        if (!can_read_file(path)) return fail("cannot open %s for reading", path.c_str());
    }
    if (options.nodes.empty() && options.time.empty() && options.depth.empty()) options.nodes = "20000";
    Match match(options);
    catch_interrupt();  // until here there is nothing to keep
    std::vector<std::jthread> jobs;
    jobs.reserve(static_cast<size_t>(options.jobs));
    for (int i = 0; i < options.jobs; ++i) jobs.emplace_back([&match] { run_job(match); });
    jobs.clear();
    show_progress("");
    // What was played until then stands.
    if (match.failure.empty() || match_games(match.results) > 0) {
        if (options.json)
            print_json(match);
        else
            print_text(match);
    }
    if (!match.failure.empty()) fail("%s", match.failure.c_str());
}

// Reads "2/5". An empty text if it is a share, otherwise what is wrong.
std::string read_share(const std::string& text, std::array<int64_t, 2>& share) {
    int64_t part = 0, parts = 0;
    char behind = 0;
    if (std::sscanf(text.c_str(), "%" SCNd64 "/%" SCNd64 "%c", &part, &parts, &behind) != 2 || part < 1 ||
        parts < part)
        return "a share is written I/N, with I from 1 to N";
    share = {part, parts};
    return "";
}

void add_limits(CLI::App& command, MatchOptions& options) {
    CLI::Option* const nodes =
        command
            .add_option("--nodes", options.nodes,
                        "Nodes for each move, counted in steps of 2000; 20000 if no limit is given")
            ->check(CLI::Range(uint64_t{1}, uint64_t{1} << 40));
    CLI::Option* const time = command.add_option("--time", options.time, "Seconds for each move")
                                  ->check(number_within(0.001, 1e6))
                                  ->excludes(nodes);
    command.add_option("--depth", options.depth, "Depth of each search")
        ->check(CLI::Range(1, MAX_DEPTH))
        ->excludes(nodes)
        ->excludes(time);
}

void add_starts(CLI::App& command, MatchOptions& options) {
    CLI::Option* const openings =
        command
            .add_option(
                "--openings", options.openings,
                "Moves of the ballots to start from; 0 for the start position every time, for players\n"
                "that do not play the same game again: with limits of time or a book")
            ->check(CLI::IsMember({0, 2, 3}))
            ->capture_default_str();
    command
        .add_option("--endings", options.endings,
                    "Start from random endings with so many pieces, as many of each side, instead")
        ->check(CLI::IsMember({4, 6, 8, 10, 12}))
        ->excludes(openings);
}

}  // namespace

void add_match_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "match",
        "Play a match between two weights files, or with databases and without, and tell which is better.\n"
        "Each start position is played twice, with colours changed. When more games are asked for than\n"
        "there are start positions, they are used again, with two random plies behind.");
    const auto options = std::make_shared<MatchOptions>();
    command->add_option("A", options->weights[0], "Weights file; results are told from its point of view")
        ->required();
    command->add_option("B", options->weights[1], "Weights file")->required();
    command->add_option("--games", options->games, "Games to play, rounded up to pairs")
        ->check(CLI::Range(int64_t{1}, MAX_GAMES))
        ->capture_default_str();
    add_limits(*command, *options);
    add_starts(*command, *options);
    command->add_option("--book-a", options->books[0], "Opening book for A; none if not given");
    command->add_option("--book-b", options->books[1], "The same for B");
    command->add_option("--egdb-a", options->egdb[0], "Folder of endgame databases for A; none if not given");
    command->add_option("--egdb-b", options->egdb[1], "The same for B");
    command
        ->add_option("--sprt", options->sprt,
                     "End as soon as it is clear, with errors of 5 %, which of two Elo differences holds")
        ->delimiter(',')
        ->expected(2)
        ->type_name("ELO0,ELO1");
    command
        ->add_option_function<std::string>(
            "--share",
            [options](const std::string& text) {
                const std::string problem = read_share(text, options->share);
                if (!problem.empty()) throw CLI::ValidationError("--share", problem);
            },
            "Play every N-th pair only, from the I-th on, to share a match among machines")
        ->type_name("I/N");
    add_hash_option(*command, options->hash_mb, "Megabytes of each player's transposition table")
        ->capture_default_str();
    command->add_option("--seed", options->seed, "Decides the order of the start positions")
        ->capture_default_str();
    command->add_option("--jobs", options->jobs, "Games played at a time")
        ->check(CLI::Range(1, MAX_JOBS))
        ->capture_default_str();
    command->add_flag("--adjudicate,!--no-adjudicate", options->adjudicate,
                      "End a game as won when both players have seen ten men or more for 6 plies (default)");
    command->add_flag("--json", options->json, "Print the result as one line of JSON");
    command->add_flag("--verbose", options->verbose, "Tell the state every 100 games on standard error");
    command->callback([options] {
        if (!options->sprt.empty() && !(options->sprt[0] < options->sprt[1]))
            throw CLI::ValidationError("--sprt", "the first Elo difference is the smaller one");
        run_match(*options);
    });
}

#include "tools/selfplay.h"

#include <chrono>
#include <memory>

#include "base/paths.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/options.h"
#include "search/engine_settings.h"
#include "search/search_state.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int SMALL_TABLE_MB = 1;  // fast searches pay for each megabyte that is cleared

// What the progress line is about; the callback of the games has no other way to it.
struct SelfplayRun {
    int64_t games = 0;
    int64_t first = -1;
    Clock::time_point start;
    Clock::time_point shown;
};
SelfplayRun run;

bool report_games(int64_t games, int64_t records) {
    const Clock::time_point now = Clock::now();
    if (run.first < 0) run.first = games - 1;
    if (now - run.shown > std::chrono::milliseconds(500) || games == run.games) {
        run.shown = now;
        const double elapsed = std::chrono::duration<double>(now - run.start).count();
        const double rate = static_cast<double>(games - run.first) / elapsed;
        show_progress("game " + std::to_string(games) + " of " + std::to_string(run.games) + ", " +
                      std::to_string(records) + " positions, " + std::to_string(static_cast<int>(rate * 60)) +
                      " games a minute, time left " +
                      duration_text(static_cast<double>(run.games - games) / rate));
    }
    return !interrupted;
}

void run_selfplay(SelfplayOptions options) {
    catch_interrupt();
    options.out = absolute_path(options.out);
    engine_settings.hash_size_mb = SMALL_TABLE_MB;
    if (!start_console_engine()) return;
    run = SelfplayRun{options.games, -1, Clock::now(), {}};
    const int status = selfplay(options, report_games);
    show_progress("");
    if (status == 3) fail("another run writes %s", options.out.c_str());
    if (status == 2) fail("%s holds no games of selfplay", options.out.c_str());
    if (status == 1) fail("cannot write %s", options.out.c_str());
}

}  // namespace

void add_selfplay_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "selfplay",
        "Play fast games of the engine against itself, to learn weights from; goes on where it stopped");
    const auto options = std::make_shared<SelfplayOptions>();
    command->add_option("--out", options->out, "File of games; a run that was stopped is continued")
        ->required();
    command->add_option("--games", options->games, "Games in the file at the end")
        ->check(CLI::Range(int64_t{1}, int64_t{1} << 31))
        ->capture_default_str();
    command->add_option("--seed", options->seed, "Each run of several needs its own")->capture_default_str();
    add_depth_option(*command, options->depth)->capture_default_str();
    const auto opening = std::make_shared<std::string>("3");
    command
        ->add_option(
            "--openings", *opening,
            "Where games begin: 2 or 3 for a ballot of so many moves and up to 6 random plies behind,\n"
            "random for 4 to 11 random plies from the start of the game")
        ->check(CLI::IsMember({"random", "2", "3"}))
        ->capture_default_str();
    command->add_option("--keep", options->keep, "Keep one quiet position in N, on average")
        ->check(CLI::Range(1, 1000))
        ->type_name("N")
        ->capture_default_str();
    command
        ->add_option(
            "--stray", options->stray,
            "Play a random move once in N, so that the weights also learn what the search alone sees;\n"
            "0 for never")
        ->check(CLI::Range(0, 1000))
        ->type_name("N")
        ->capture_default_str();
    command->callback([options, opening] {
        options->opening = *opening == "random" ? OPENING_RANDOM
                           : *opening == "2"    ? OPENING_TWO_MOVES
                                                : OPENING_THREE_MOVES;
        run_selfplay(*options);
    });
}

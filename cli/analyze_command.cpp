// The analysis commands of game control on the games of a file: each finished game is printed, and the line
// of progress follows the board.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "base/clock.h"
#include "base/files.h"
#include "base/paths.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/egdb_options.h"
#include "cli/game_console.h"
#include "cli/game_replay.h"
#include "cli/options.h"
#include "control/analyze_games.h"
#include "control/game.h"
#include "control/game_commands.h"
#include "records/pdn_write.h"

namespace {

struct AnalyzeOptions {
    std::string file;
    std::string output;
    double time = 1.0;
    int threads = 1;
    bool all_scores = false;
    EgdbChoice egdb;
};

struct AnalyzeRun {
    std::string file;
    std::string output_path;  // empty for standard output
    std::FILE* output = nullptr;
    // Positions in the games before each one, and at the end those of all.
    std::vector<int> positions_before;
    int64_t start_ms = 0;
    int positions_shown = -1;
    bool failed = false;
};
AnalyzeRun run;

void fail_run(const std::string& text) {
    run.failed = true;
    fail("%s", text.c_str());
}

// One for each move or set position, and one for the start.
int count_positions(const PdnNode* node) {
    int count = 1;
    for (; node; node = node->next) count += node->kind == PDN_MOVE || node->kind == PDN_EMBEDDED_FEN;
    return count;
}

void begin_output() {
    const int count = pdn_game_count(analysis.analysis_games);
    int broken = 0;
    std::vector<ReplayState> history;
    run.positions_before.assign(1, 0);
    for (int i = 0; i < count; ++i) {
        PdnNode* const game = analysis.analysis_games[static_cast<size_t>(i)].get();
        run.positions_before.push_back(run.positions_before.back() + count_positions(game));
        broken += !replay_game(game, history);
    }
    tell_broken_games(run.file.c_str(), broken, count);
    run.start_ms = clock_ms();
    run.output = run.output_path.empty() ? stdout : std::fopen(run.output_path.c_str(), "a");
    if (!run.output) fail_run("Cannot open " + run.output_path + " for writing");
}

// What an earlier run wrote gives way once there is something to take its place.
void print_finished_game(const PdnTable& games, uint32_t flags, int index) {
    show_progress("");
    std::error_code not_a_file;
    if (index == 0 && !run.output_path.empty()) std::filesystem::resize_file(run.output_path, 0, not_a_file);
    pdn_print_game(run.output, games[static_cast<size_t>(index)].get(), flags);
    if (std::fflush(run.output) != 0)
        fail_run("Cannot write the analysis" + (run.output_path.empty() ? "" : " to " + run.output_path));
}

void show_analysis_progress() {
    const int game_index = analysis.analysis_game_index;
    const size_t at = static_cast<size_t>(game_index);
    const int total = run.positions_before.back();
    const int done = std::min(run.positions_before[at] + game.history_count - 1, total - 1);
    if (done == run.positions_shown) return;
    run.positions_shown = done;
    show_progress("games done " + std::to_string(game_index) + " of " +
                  std::to_string(run.positions_before.size() - 1) + ", position " + std::to_string(done + 1) +
                  " of " + std::to_string(total) + time_left_text(run.start_ms, done, total - done));
}

Ui analyze_screen() {
    Ui screen = no_ui();
    screen.choose_load_file = [](const char*, std::string& path) {
        path = run.file;
        return true;
    };
    screen.message_box = [](const char* text, const char*, MessageIcon) { fail_run(text); };
    return screen;
}

void run_analyze(AnalyzeOptions& options) {
    catch_interrupt();
    run = AnalyzeRun{};
    run.file = absolute_path(options.file);
    if (!options.output.empty()) run.output_path = absolute_path(options.output);
    if (same_file(run.file, run.output_path)) {
        fail("the analysis of %s cannot take its place", options.file.c_str());
        return;
    }
    if (!check_egdb_choice(options.egdb)) return;
    set_search_threads(options.threads);
    if (!start_game_console(analyze_screen())) return;
    if (!use_egdb_in_game(options.egdb, false)) return;
    set_time_per_move(options.time);
    analysis_output = {begin_output, print_finished_game, [] {}};
    analyze_pdn_command(options.all_scores);
    if (!run.failed && !is_analyze_mode(game.gui_mode)) fail("no games in %s", run.file.c_str());
    while (is_analyze_mode(game.gui_mode)) {
        if (run.failed || interrupted) {
            cancel_analyze_command();
            break;
        }
        show_analysis_progress();
        tick_when_due();
    }
    show_progress("");
    if (run.output && run.output != stdout && std::fclose(run.output) != 0)
        fail_run("Cannot write the analysis to " + run.output_path);
    if (interrupted) set_exit_status(EXIT_BAD_INPUT);
}

}  // namespace

void add_analyze_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "analyze",
        "Analyse every game of a PDN file, with a comment behind every move on the position before it");
    const auto options = std::make_shared<AnalyzeOptions>();
    command->add_option("FILE", options->file, "PDN file")->required();
    add_seconds_option(*command, options->time, "Seconds for each position")->capture_default_str();
    command->add_option("--output", options->output, "Write here instead of to standard output");
    add_threads_option(*command, options->threads);
    command->add_flag("--all-scores", options->all_scores, "Give every move its value");
    add_egdb_options(*command, options->egdb, false);
    command->callback([options] { run_analyze(*options); });
}

// Replays every game of a file, searches each position for the time given, and keeps the text of each search
// as a comment behind the move that was played from the position. Games are printed as they are finished.
#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include "base/paths.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "control/game_line.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"
#include "records/pdn_write.h"
#include "search/getmove.h"
#include "search/search_state.h"

namespace {

using Clock = std::chrono::steady_clock;

struct AnalyzeOptions {
    std::string file;
    std::string output;
    double time = 1.0;
    int threads = 1;
    bool all_scores = false;
};

// Counts of the whole run, for the progress line.
struct Progress {
    int games = 0;
    int games_done = 0;
    int positions = 0;
    int positions_done = 0;
    Clock::time_point start = Clock::now();
};

void show_analysis_progress(const Progress& p) {
    const double elapsed = std::chrono::duration<double>(Clock::now() - p.start).count();
    std::string left = "-";
    if (p.positions_done > 0)
        left = duration_text(elapsed / p.positions_done * (p.positions - p.positions_done));
    show_progress("game " + std::to_string(p.games_done + 1) + " of " + std::to_string(p.games) +
                  ", position " + std::to_string(p.positions_done + 1) + " of " +
                  std::to_string(p.positions) + ", time left " + left);
}

int count_positions(PdnNode* game) {
    ReplayState state;
    int count = 1;
    for (PdnNode* node = pdn_start_position(game, state); node; ++count) node = pdn_next_move(node, state);
    return count;
}

PdnNode* last_node(PdnNode* node) {
    while (node->next) node = node->next;
    return node;
}

PdnNode* node_before(PdnNode* list, const PdnNode* node) {
    while (list && list->next != node) list = list->next;
    return list;
}

// The text of the search of the history's last position, in braces.
std::string analysis_comment(const std::vector<ReplayState>& history, uint32_t flags) {
    std::vector<Position> line;
    build_game_line(history, line);
    search_state.game_line = &line.front();
    char text[SEARCH_TEXT_SIZE];
    Move best{};
    int32_t searched = 0;
    getmove(history.back().position, history.back().side, text, stop_flag, flags, best, searched);
    search_state.game_line = nullptr;
    return "{" + std::string(text) + "}";
}

// Puts the comment where it belongs: behind the move played next, or, where a position is set up next,
// directly before it, so that it stays with the move that led here; at the end of the list after the last
// move.
void place_comment(PdnNode* game, const PdnNode* previous, PdnNode* next, const std::string& comment) {
    PdnNode* behind = next;
    if (!next)
        behind = last_node(game);
    else if (next->kind == PDN_EMBEDDED_FEN && previous && previous->kind == PDN_MOVE)
        behind = node_before(game, next);
    pdn_insert_after(behind, pdn_make_comment(comment.c_str()));
}

// False if the user interrupted it.
bool analyze_game(PdnNode* game, uint32_t flags, Progress& progress) {
    std::vector<ReplayState> history(1);
    PdnNode* next = pdn_start_position(game, history.front());
    const PdnNode* previous = nullptr;
    for (;;) {
        show_analysis_progress(progress);
        const std::string comment = analysis_comment(history, flags);
        if (interrupted) return false;
        ++progress.positions_done;
        PdnNode* const played = next;
        if (played) {
            ReplayState state = history.back();
            next = pdn_next_move(played, state);
            history.push_back(state);
        }
        place_comment(game, previous, played, comment);
        if (!played) return true;
        previous = played;
    }
}

bool read_games(const std::string& file, PdnTable& games) {
    switch (pdn_read_file(file, games)) {
        case 0:
            break;
        case 1:
            fail("Cannot open PDN file. (%s)", file.c_str());
            return false;
        case 2:
            fail("Cannot open PDN file. (%s: no such file, or empty)", file.c_str());
            return false;
        default:
            fail("Error parsing PDN file. (%s: not enough memory)", file.c_str());
            return false;
    }
    if (pdn_game_count(games) > 0) return true;
    fail("no games in %s", file.c_str());
    return false;
}

void run_analyze(AnalyzeOptions options) {
    options.file = absolute_path(options.file);
    PdnTable games;
    if (!read_games(options.file, games)) return;
    std::FILE* output = stdout;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> owned(nullptr, std::fclose);
    if (!options.output.empty()) {
        owned.reset(std::fopen(options.output.c_str(), "w"));
        if (!owned) return fail("Cannot open %s for writing", options.output.c_str());
        output = owned.get();
    }
    set_search_threads(options.threads);
    if (!start_console_engine()) return;
    catch_interrupt();
    set_fixed_time(options.time);

    Progress progress;
    progress.games = pdn_game_count(games);
    for (int i = 0; i < progress.games; ++i)
        progress.positions += count_positions(games[static_cast<size_t>(i)].get());
    for (; progress.games_done < progress.games; ++progress.games_done) {
        PdnNode* const game = games[static_cast<size_t>(progress.games_done)].get();
        if (!analyze_game(game, options.all_scores ? SEARCH_ALL_SCORES : 0u, progress)) break;
        show_progress("");
        pdn_print_game(output, game, PDN_COMMENT_LINES);
        if (std::fflush(output) != 0) return fail("Cannot write the analysis");
    }
    show_progress("");
    if (interrupted) set_exit_status(EXIT_BAD_INPUT);
}

}  // namespace

void add_analyze_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "analyze",
        "Analyse every game of a PDN file, with a comment behind every move on the position before it");
    const auto options = std::make_shared<AnalyzeOptions>();
    command->add_option("FILE", options->file, "PDN file")->required();
    command->add_option("--time", options->time, "Seconds for each position")
        ->check(CLI::Range(0.001, 1e6))
        ->capture_default_str();
    command->add_option("--output", options->output, "Write here instead of to standard output");
    command->add_option("--threads", options->threads, "Search threads")->check(CLI::Range(1, 8));
    command->add_flag("--all-scores", options->all_scores, "Give every move its value");
    command->callback([options] { run_analyze(*options); });
}

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/game_replay.h"
#include "records/game_headers.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"
#include "records/pdn_write.h"

namespace {

struct PdnOptions {
    std::vector<std::string> files;
    bool print = false;
};

void print_line_form(PdnNode* game, const std::vector<ReplayState>& history) {
    GameHeaders headers;
    pdn_game_headers(game, headers);
    std::vector<char> text(game_text_room(history.size()));
    game_to_pdn_text(text.data(), text.size(), history, headers, "\n");
    std::fputs(text.data(), stdout);
}

void run_file(const std::string& file, bool print) {
    PdnTable games;
    const int status = pdn_read_file(file, games);
    if (status == 3) return fail("not enough memory for %s", file.c_str());
    if (status != 0)
        return fail("cannot read %s%s", file.c_str(), status == 2 ? ": no such file, or empty" : "");
    int broken = 0;
    size_t moves = 0;
    std::vector<ReplayState> history;
    for (const PdnGame& game : games) {
        if (!game) break;
        if (!replay_game(game.get(), history)) ++broken;
        moves += history.size() - 1;
        if (print) print_line_form(game.get(), history);
    }
    if (!print)
        std::printf("%s: games %d, moves %zu, broken %d\n", file.c_str(), pdn_game_count(games), moves,
                    broken);
    else
        tell_broken_games(file.c_str(), broken, pdn_game_count(games));
}

}  // namespace

void add_pdn_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "pdn",
        "Read PDN files, replay their games and count them; broken games stop at a move that is not legal");
    const auto options = std::make_shared<PdnOptions>();
    command->add_option("FILE", options->files, "PDN files")->required();
    command->add_flag("--print", options->print, "Write the games with all moves on one line instead");
    command->callback([options] {
        for (const std::string& file : options->files) run_file(file, options->print);
    });
}

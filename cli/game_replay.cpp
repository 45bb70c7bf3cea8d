#include "cli/game_replay.h"

#include <cstdio>

namespace {

// The reader of moves takes the result for one.
bool is_draw_at_end(const PdnNode& node) {
    if (node.token.from != 1 || node.token.to != 1 || node.token.path) return false;
    const PdnNode* behind = node.next;
    while (behind && !pdn_is_step(*behind)) behind = behind->next;
    return !behind;
}

}  // namespace

bool replay_game(PdnNode* game, std::vector<ReplayState>& history) {
    history.assign(1, ReplayState{});
    PdnNode* node = pdn_start_position(game, history.front());
    while (node) {
        ReplayState state = history.back();
        ReplayState after;
        if (pdn_apply_move(*node, state, after) != 0) return is_draw_at_end(*node);
        node = pdn_next_move(node, state);
        history.push_back(state);
    }
    return true;
}

void tell_broken_games(const char* file, int broken, int games) {
    if (broken == 0) return;
    std::fprintf(stderr,
                 "tessarin-cli: %s: %d of %d games are broken and end before a move that is not legal\n",
                 file, broken, games);
}

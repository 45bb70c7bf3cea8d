#include "tests/search/forced_end.h"

#include <algorithm>
#include <array>

int forced_end(const Position& p, int plies) {
    MoveList list;
    if (generate_moves(p, list, p.side) == 0) return -1;
    if (plies == 0) return 0;
    int fastest_win = 0, slowest_loss = 0;
    for (const Move& move : list) {
        const int end = forced_end(position_after(move, p.side ^ 1), plies - 1);
        if (end < 0 && (fastest_win == 0 || 1 - end < fastest_win)) fastest_win = 1 - end;
        if (end == 0) slowest_loss = 1;
        if (end > 0 && slowest_loss <= 0) slowest_loss = std::min(slowest_loss, -1 - end);
    }
    if (fastest_win > 0) return fastest_win;
    return slowest_loss > 0 ? 0 : slowest_loss;
}

std::vector<std::pair<Position, int>> decided_positions(uint64_t seed, int count) {
    Random random(seed);
    std::vector<std::pair<Position, int>> found;
    std::array<int, 13> by_length{};
    while (static_cast<int>(found.size()) < count) {
        const Position p = random_setup(random, 4, 10 * below(random, 6));
        const int end = forced_end(p, 5);
        if (end == 0) continue;
        int& same = by_length[static_cast<size_t>(end + 6)];
        if (++same > count / 4) continue;  // there are five lengths
        found.push_back({p, end});
    }
    return found;
}

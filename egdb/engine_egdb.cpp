#include "egdb/engine_egdb.h"

#include <algorithm>
#include <array>

#include "base/log.h"
#include "egdb/mtc_choice.h"
#include "egdb/resolver.h"
#include "eval/evaluation.h"

namespace {

void prepare_nothing(char*) {}

// Scores of draws by material difference + 20.
constexpr int DRAW_SCORE_LIMIT = 20;
constexpr std::array<int8_t, 41> DRAW_SCORES = {-5, -5, -5, -5, -5, -5, -5, -5, -5, -5, -5, -5, -5, -5,
                                                -5, -5, -5, -3, -3, -3, 0,  3,  3,  3,  5,  5,  5,  5,
                                                5,  5,  5,  5,  5,  5,  5,  5,  5,  5,  5,  5,  5};

// Twice the rows that the men of `side` have advanced, summed.
int32_t advancement(uint64_t men, int side) {
    int32_t sum = 0;
    for (int row = 0; row < 10; ++row) {
        const uint64_t squares = uint64_t{0x1f} << bit_of_square[static_cast<size_t>(row * 5)];
        sum += 2 * (side == BLACK ? row : 9 - row) * bit_count(men & squares);
    }
    return sum;
}

// A won position scores higher with fewer pieces and with men further on, so that the win makes progress.
int32_t win_score(const NodeSummary& s, int winner) {
    const int32_t material = s.black_kings + s.white_kings + 2 * (s.black_men + s.white_men);
    const bool level = s.black_total == s.white_total;
    const int32_t black = advancement(s.black_men_set, BLACK);
    const int32_t white = advancement(s.white_men_set, WHITE);
    const int32_t own = winner == BLACK ? black : white;
    const int32_t other = winner == BLACK ? white : black;  // 0 without men
    return 2900 - 30 * material + own + (level ? other : 0);
}

int32_t static_evaluation(const Position& position, int side, NodeSummary& summary) {
    return summary.evaluation != NOT_EVALUATED ? summary.evaluation : evaluate(position, side, summary);
}

}  // namespace

EgdbEngine no_egdb() {
    return {nullptr, nullptr, 0, 0, 0, 0, false, -5, prepare_nothing, mtc_choose_move, egdb_move_check};
}

EgdbEngine egdb_engine = no_egdb();

int32_t egdb_draw_score(const NodeSummary& s) {
    const int32_t difference = 3 * (s.black_kings - s.white_kings) + s.black_men - s.white_men;
    const int32_t slot = std::clamp(difference, -DRAW_SCORE_LIMIT, DRAW_SCORE_LIMIT) + DRAW_SCORE_LIMIT;
    return DRAW_SCORES[static_cast<size_t>(slot)];
}

int32_t egdb_score(const Position& position, int side, EgdbValue value, NodeSummary& summary) {
    switch (value) {
        case EGDB_WIN:
            return win_score(summary, side);
        case EGDB_LOSS:
            return -win_score(summary, side ^ 1);
        case EGDB_DRAW: {
            const int32_t score = egdb_draw_score(summary);
            return score == 0 ? 1 : score;
        }
        case EGDB_DRAW_OR_LOSS:
            return std::min(static_evaluation(position, side, summary), 0);
        case EGDB_WIN_OR_DRAW:
            return std::max(static_evaluation(position, side, summary), 0);
        default:
            return static_evaluation(position, side, summary);
    }
}

void log_egdb_statistics() {
    const EgdbDriver* const wld = egdb_engine.wld;
    if (!wld) return;
    const EgdbStatistics& s = *wld->get_stats(wld->handle);
    const auto count = [](const std::atomic<uint32_t>& counter) {
        return counter.load(std::memory_order_relaxed);
    };
    const double requests = count(s.db_requests);
    log_printf(
        "lru cache hits %u, lru cache loads %u, autoload hits %u, valid returns %.1f%%, avg ht len %.2f\n",
        count(s.lru_cache_hits), count(s.lru_cache_loads), count(s.autoload_hits),
        requests > 0 ? 100 * count(s.db_returns) / requests : 0.0,
        static_cast<double>(s.avg_ht_list_length.load(std::memory_order_relaxed)));
}

void set_egdb_lookup_depth(int pieces) {
    int32_t& depth = egdb_engine.lookup_depth;
    switch (egdb_engine.maxpieces) {
        case 6:
            depth = pieces <= 12 ? 2 : 14 - pieces;
            break;
        case 7:
            depth = pieces <= 17 ? 4 : 21 - pieces;
            break;
        case 8:
        case 9:
            depth = pieces <= 18 ? 5 : 14 - pieces / 2;
            break;
        default:
            depth = -5;
            break;
    }
}

#include "tests/search/fixtures.h"

#include "base/log.h"
#include "book/engine_book.h"
#include "core/notation.h"
#include "eval/evaluation.h"
#include "eval/weights.h"
#include "records/fen.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/thread_record.h"

std::string logged;
std::function<EgdbValue(const Position&, int side, bool conditional)> database_answer;

namespace {

void keep_log(const char* text) { logged += text; }

EgdbValue answer_lookup(void*, const Position& position, int side, bool conditional) {
    return database_answer(position, side, conditional);
}

const EgdbDriver test_driver{answer_lookup, nullptr};

std::atomic<int32_t> never_stopped{0};

}  // namespace

void SearchTest::SetUp() {
    logged.clear();
    log_path.clear();
    log_listener = keep_log;
    engine_settings = EngineSettings{};
    engine_settings.hash_size_mb = 1;
    egdb_engine = no_egdb();
    engine_book = no_book();
    database_answer = nullptr;
    search_state.game_line = nullptr;
    search_state.depth_limit = MAX_DEPTH;
    search_state.active_threads = 1;
    search_state.stop_flag = &never_stopped;
    never_stopped = 0;
    randomize_weights(1);
    ASSERT_EQ(tt_allocate(), 0);
    reset_search_state();
    for (ThreadRecord& thread : thread_records) thread.nodes = thread.leaf_count = thread.leaf_ply_sum = 0;
    search_state.highest_ply = 0;
}

void SearchTest::TearDown() {
    log_listener = nullptr;
    egdb_engine = no_egdb();
    engine_book = no_book();
    search_state.game_line = nullptr;
    search_state.depth_limit = MAX_DEPTH;
}

std::vector<uint64_t> table_words() {
    const TranspositionTable& table = transposition_table;
    return {table.slots_start, table.slots_start + table.slots};
}

void randomize_weights(uint64_t seed) {
    Random random(seed);
    init_eval_tables();
    const auto small = [&](int limit) { return static_cast<int16_t>(below(random, 2 * limit + 1) - limit); };
    for (PatternTable& table : weights.patterns)
        for (PatternEntry& entry : table) entry = {small(1200), small(1200)};
    // A man counts about a hundred points, a king three men.
    weights.params = {10, 5, 20, 40, 5000, 6000, 14000, 15000, 14000, 15000};
}

Position position_of(const std::string& fen) {
    Position position;
    int side = WHITE;
    EXPECT_EQ(fen_to_position(fen.c_str(), position, side), 0) << fen;
    EXPECT_TRUE(is_legal_setup(position)) << fen;
    position.side = side;
    return position;
}

std::string fen_of(const Position& position) {
    char text[FEN_TEXT_SIZE];
    position_to_fen(position, position.side, text);
    return text;
}

int below(Random& random, int limit) { return static_cast<int>(random() % static_cast<uint64_t>(limit)); }

Position random_setup(Random& random, int most, int king_percent) {
    for (;;) {
        Position p{0, 0, 0, below(random, 2), 0, nullptr};
        for (const int colour : {BLACK, WHITE}) {
            for (int n = 1 + below(random, most); n > 0; --n) {
                const uint64_t mask = mask_of_square[static_cast<size_t>(below(random, SQUARES))];
                if ((p.black | p.white) & mask) continue;
                (colour == WHITE ? p.white : p.black) |= mask;
                const uint64_t row = colour == WHITE ? WHITE_PROMOTION_ROW : BLACK_PROMOTION_ROW;
                if ((mask & row) || below(random, 100) < king_percent) p.king |= mask;
            }
        }
        MoveList list;
        if (p.black && p.white && generate_moves(p, list, p.side) > 0) return p;
    }
}

Position random_play(Random& random, int plies) {
    Position p = START_POSITION;
    for (int i = 0; i < plies; ++i) {
        MoveList list;
        if (generate_moves(p, list, p.side) == 0) break;
        const Position next = position_after(list[below(random, list.count)], p.side ^ 1);
        MoveList replies;
        if (generate_moves(next, replies, next.side) == 0) break;
        p = next;
    }
    return p;
}

std::vector<Position> real_positions(Random& random, int each) {
    std::vector<Position> positions;
    for (const char* name : {"babasy1.pdn", "loi20.pdn", "opening1.pdn", "sur01.pdn", "toprest1.pdn"}) {
        PdnTable table;
        EXPECT_EQ(pdn_read_file(std::string(TEST_DATA "/games/") + name, table), 0) << name;
        for (int game = 0; game < pdn_game_count(table); ++game) {
            std::vector<Position> line;
            ReplayState state;
            for (PdnNode* node = pdn_start_position(table[static_cast<size_t>(game)].get(), state); node;
                 node = pdn_next_move(node, state)) {
                line.push_back(state.position);
                line.back().side = state.side;
            }
            for (int i = 0; i < each && !line.empty(); ++i)
                positions.push_back(line[static_cast<size_t>(below(random, static_cast<int>(line.size())))]);
        }
    }
    return positions;
}

std::vector<Position> king_line(Random& random, const Position& start, int plies) {
    std::vector<Position> forward{position_after(move_to(start), start.side)};
    for (int i = 0; i < plies; ++i) {
        const Position& p = forward.back();
        MoveList list, kings;
        if (!has_capture(p, p.side)) generate_noncaptures(p, list, p.side);
        for (const Move& move : list)
            if (p.king & ~(move.black | move.white)) kings.moves[static_cast<size_t>(kings.count++)] = move;
        if (kings.count == 0) break;
        forward.push_back(position_after(kings[below(random, kings.count)], p.side ^ 1));
    }
    std::vector<Position> line(forward.rbegin(), forward.rend());
    for (size_t i = 0; i < line.size(); ++i) {
        line[i].reversible_plies = static_cast<int32_t>(line.size() - 1 - i);
        line[i].previous = i + 1 < line.size() ? &line[i + 1] : nullptr;
    }
    return line;
}

uint64_t mix_of(const Position& position, int side, uint64_t salt) {
    uint64_t x = salt + static_cast<uint64_t>(side);
    for (const uint64_t set : {position.black, position.white, position.king}) {
        x = (x ^ set) * 0x9e3779b97f4a7c15u;
        x ^= x >> 29;
    }
    return x;
}

void open_database(int maxpieces, int maxpieces_1side, int maxkings_9pcs, int maxkings_1side_8pcs,
                   bool no_side_captures) {
    egdb_engine.wld = &test_driver;
    egdb_engine.maxpieces = maxpieces;
    egdb_engine.maxpieces_1side = maxpieces_1side;
    egdb_engine.maxkings_9pcs = maxkings_9pcs;
    egdb_engine.maxkings_1side_8pcs = maxkings_1side_8pcs;
    egdb_engine.no_side_captures = no_side_captures;
    // Its values contradict each other, so that they say nothing of the move that was searched.
    egdb_engine.egdb_move_check = [](int, const Position&, const MoveList&, int, int&) { return 0; };
}

Searched search_now(const Position& position, std::atomic<int32_t>& stop_flag, uint32_t flags) {
    Searched result;
    std::string text(SEARCH_TEXT_SIZE, '\0');
    result.value =
        getmove(position, position.side, text.data(), stop_flag, flags, result.move, result.searched);
    result.text = text.c_str();
    return result;
}

Searched search_to(const Position& position, int depth, uint32_t flags, bool by_one) {
    search_state.Mintime = search_state.max_time = LONG_TIME;
    search_state.step_time = by_one ? 0 : LONG_TIME;
    search_state.depth_limit = depth;
    std::atomic<int32_t> stop{0};
    return search_now(position, stop, flags);
}

std::string short_text(const Position& position, const Move& move) {
    char text[MOVE_TEXT_SIZE];
    move_text(text, position, move);
    return text;
}

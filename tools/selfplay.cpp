// Each game has a random generator of its own, seeded by the run and the game's number, and starts from empty
// tables, so a game does not depend on those before it, and a run that was interrupted goes on as if it had
// not been.
#include "tools/selfplay.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <system_error>
#include <vector>

#include "base/files.h"
#include "core/ballots.h"
#include "core/movegen.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "search/table.h"

namespace {

constexpr int MIN_RANDOM_PLIES = 4;
constexpr int MAX_RANDOM_PLIES = 11;
constexpr int MAX_PLIES_BEHIND_BALLOT = 6;
constexpr int32_t DECIDED_OPENING = 70;  // an opening that loses a man is thrown away
constexpr int32_t DECIDED_GAME = 500;    // of this size for so many plies on end the game is decided
constexpr int DECIDED_PLIES = 6;
constexpr int MAX_KING_PLIES = 24;  // kings moving to and fro
constexpr int MAX_PLIES = 260;
constexpr double UNLIMITED = 1e9;

using Random = std::mt19937_64;

// Uniform below `limit`; written out, so that every standard library plays the same games.
int random_below(Random& random, int limit) {
    return static_cast<int>(random() % static_cast<uint64_t>(limit));
}

int32_t search(const Position& position, Move& best) {
    std::atomic<int32_t> never_stopped = 0;
    char text[SEARCH_TEXT_SIZE];
    int32_t searched = 0;
    search_state.game_line = &position;
    const int32_t value = getmove(position, position.side, text, never_stopped, SEARCH_QUIET, best, searched);
    search_state.game_line = nullptr;
    return value;
}

// The line of a game; its positions are linked, so it must not grow beyond what it reserved.
using Line = std::vector<Position>;

void play(Line& line, const Move& move) {
    Position child;
    make_child(line.back(), child, move, has_capture(line.back(), line.back().side));
    line.push_back(child);
}

struct OpeningStart {
    Position position;
    int plies;  // random ones to play from there
};

OpeningStart draw_start(Random& random, SelfplayOpening opening) {
    if (opening == OPENING_RANDOM)
        return {START_POSITION,
                MIN_RANDOM_PLIES + random_below(random, MAX_RANDOM_PLIES - MIN_RANDOM_PLIES + 1)};
    Ballot ballot{};
    find_ballot(opening, random_below(random, ballot_count(opening)), ballot);
    return {ballot.position, random_below(random, MAX_PLIES_BEHIND_BALLOT + 1)};
}

// Random moves from where the game begins, to a position that is not decided.
void random_opening(Random& random, SelfplayOpening opening, Line& line) {
    for (;;) {
        const OpeningStart start = draw_start(random, opening);
        line.assign(1, start.position);
        MoveList list;
        while (static_cast<int>(line.size()) <= start.plies &&
               generate_moves(line.back(), list, line.back().side) > 0)
            play(line, list[random_below(random, list.count)]);
        Move best;
        if (static_cast<int>(line.size()) > start.plies &&
            std::abs(search(line.back(), best)) <= DECIDED_OPENING)
            return;
    }
}

bool is_quiet(const Position& position) {
    return !has_capture(position, BLACK) && !has_capture(position, WHITE);
}

// Plays one game and leaves its records in `records`.
void play_game(const SelfplayOptions& options, uint32_t number, std::vector<GameRecord>& records) {
    Random random(options.seed * 0x9e3779b97f4a7c15 + number);
    Line line;
    line.reserve(MAX_PLIES + MAX_RANDOM_PLIES + 2);
    random_opening(random, options.opening, line);
    records.clear();
    int8_t result = 0;
    int decided = 0;
    for (int ply = 0; ply < MAX_PLIES; ++ply) {
        const Position& position = line.back();
        MoveList list;
        if (generate_moves(position, list, position.side) == 0) {
            result = position.side == WHITE ? 1 : -1;
            break;
        }
        if (position.reversible_plies >= MAX_KING_PLIES) break;
        Move best;
        const int32_t value = search(position, best);
        decided = std::abs(value) >= DECIDED_GAME ? decided + 1 : 0;
        if (decided >= DECIDED_PLIES) {
            result = value > 0 ? 1 : -1;
            break;
        }
        if (is_quiet(position) && (options.keep == 1 || random_below(random, options.keep) == 0))
            records.push_back({position.black, position.white, position.king, number,
                               static_cast<int16_t>(value), 0, static_cast<uint8_t>(position.side)});
        const bool strays = options.stray > 0 && random_below(random, options.stray) == 0;
        play(line, strays ? list[random_below(random, list.count)] : best);
    }
    for (GameRecord& record : records) record.result = result;
}

// Cuts what an interruption left behind the last whole record and the last game, which may be incomplete.
// Returns the number of games left in the file, -1 if it cannot be read or cut, or -2 if it is no file of
// games. A file that has games behind the wanted ones stays as it is.
int64_t prepare_file(const std::string& path, int64_t wanted) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return 0;
    const uint64_t bytes = std::filesystem::file_size(path, error), records = bytes / sizeof(GameRecord);
    if (error) return -1;
    const OpenFile file(std::fopen(path.c_str(), "rb"));
    if (!file) return -1;
    const auto read = [&](uint64_t index, GameRecord& record) {
        return std::fseek(file.get(), static_cast<long>(index * sizeof record), SEEK_SET) == 0 &&
               std::fread(&record, sizeof record, 1, file.get()) == 1;
    };
    GameRecord first{}, last{}, record{};
    if (bytes > 0 && (records == 0 || !read(0, first) || !is_sound_record(first))) return -2;
    uint64_t kept = records;
    if (records > 0 && !read(records - 1, last)) return -1;
    if (records > 0 && last.game >= wanted) return last.game;
    while (kept > 0 && read(kept - 1, record) && record.game == last.game) --kept;
    std::filesystem::resize_file(path, kept * sizeof(GameRecord), error);
    return error ? -1 : int64_t{kept > 0 ? record.game + 1 : 0};
}

}  // namespace

bool is_sound_record(const GameRecord& r) {
    const Position position{r.black, r.white, r.king, r.side, 0, nullptr};
    return r.side <= WHITE && r.result >= -1 && r.result <= 1 && (r.black | r.white) != 0 &&
           (r.king & ~(r.black | r.white)) == 0 && is_legal_setup(position);
}

int selfplay(const SelfplayOptions& options, SelfplayProgress progress) {
    std::error_code error;
    if (std::filesystem::exists(options.out, error) && !std::filesystem::is_regular_file(options.out, error))
        return 1;
    const OpenFile file(std::fopen(options.out.c_str(), "ab"));
    if (!file) return 1;
    if (!lock_file(file.get())) return 3;
    int64_t game = prepare_file(options.out, options.games);
    if (game < 0) return game == -2 ? 2 : 1;
    set_fixed_time(UNLIMITED);
    search_state.depth_limit = options.depth;
    std::vector<GameRecord> records;
    int64_t written = 0;
    for (; game < options.games; ++game) {
        tt_clear();
        play_game(options, static_cast<uint32_t>(game), records);
        if (std::fwrite(records.data(), sizeof(GameRecord), records.size(), file.get()) != records.size() ||
            std::fflush(file.get()) != 0)
            return 1;
        written += static_cast<int64_t>(records.size());
        if (!progress(game + 1, written)) break;
    }
    return 0;
}

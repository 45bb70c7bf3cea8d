// Compares a win/loss/draw database with the values that the solver finds, through the same lookups that the
// search makes. Positions whose side to move can capture are in no file and are passed over.
//
//   egdb_compare DATABASE SOLVED PIECES all|LOOKUPS [BLOCKS]
//
// All positions of the materials of that many pieces, or so many random ones, of both colours, each material
// as often as it has positions. With BLOCKS no file is held whole and the cache has so many blocks. SOLVED is
// a folder that keeps what was solved; what is missing there is solved first.
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "base/clock.h"
#include "bench/egdb_solved.h"
#include "core/movegen.h"
#include "egdb/position_walk.h"
#include "egdb/wld_open.h"

namespace {

constexpr int USAGE_STATUS = 2;
constexpr int32_t CACHE_MB = 4096;
constexpr int64_t TOLD_EVERY = 10'000'000;

struct Comparison {
    SolvedSet set;
    OpenEgdb driver;
    int64_t compared = 0;
    int64_t wrong = 0;
};

void compare(Comparison& c, const Position& position, int side, EgdbValue solved) {
    const EgdbValue value = c.driver->lookup(c.driver->handle, position, side, false);
    ++c.compared;
    if (value == solved) return;
    ++c.wrong;
    std::printf("black %llx white %llx king %llx side %d: file %d, solved %d\n",
                static_cast<unsigned long long>(position.black),
                static_cast<unsigned long long>(position.white),
                static_cast<unsigned long long>(position.king), side, value, solved);
}

void compare_material(Comparison& c, const Material& m) {
    const SolvedMaterial& solved = *find_solved(c.set, m);
    for (PositionWalk walk(m, 0);; walk.advance()) {
        for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side)
            if (!has_capture(walk.position, side))
                compare(c, walk.position, side,
                        packed_value(solved.values[static_cast<size_t>(side)], walk.index));
        if (walk.index + 1 == slice_size(m)) return;
    }
}

void compare_all(Comparison& c, int pieces) {
    for (const Material& m : solving_order(pieces)) {
        compare_material(c, m);
        std::printf("%d%d%d%d: %lld compared, %lld wrong\n", m.bm, m.bk, m.wm, m.wk,
                    static_cast<long long>(c.compared), static_cast<long long>(c.wrong));
        std::fflush(stdout);
    }
}

void compare_random(Comparison& c, int pieces, int64_t lookups) {
    const std::vector<Material> materials = solving_order(pieces);
    std::vector<double> sizes;
    for (const Material& m : materials) sizes.push_back(static_cast<double>(slice_size(m)));
    std::mt19937_64 random(1);
    std::discrete_distribution<size_t> choose_material(sizes.begin(), sizes.end());
    while (c.compared < lookups) {
        const Material& m = materials[choose_material(random)];
        const auto index = static_cast<int64_t>(random() % static_cast<uint64_t>(slice_size(m)));
        const uint64_t bits = random();
        const bool mirror = (bits & 2) != 0;
        const Position canonical = position_from_index(index, m);
        const Position position = mirror ? mirror_position(canonical) : canonical;
        const int side = static_cast<int>(bits & 1);
        if (has_capture(position, side)) continue;
        compare(c, position, side, solved_value(c.set, position, side));
        if (c.compared % TOLD_EVERY != 0) continue;
        std::printf("%lld compared, %lld wrong\n", static_cast<long long>(c.compared),
                    static_cast<long long>(c.wrong));
        std::fflush(stdout);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5 || argc > 6) {
        std::fprintf(stderr, "usage: egdb_compare DATABASE SOLVED PIECES all|LOOKUPS [BLOCKS]\n");
        return USAGE_STATUS;
    }
    const int pieces = std::atoi(argv[3]);
    Comparison c;
    if (pieces < 2 || pieces > 6 || !have_solved(c.set, argv[2], pieces)) return USAGE_STATUS;
    EgdbOpenRequest request;
    request.folder = argv[1];
    request.pieces = pieces;
    request.cache_megabytes = CACHE_MB;
    request.log = [](const char* text) { std::fputs(text, stderr); };
    request.autoload = argc == 5;
    request.cache_blocks = argc == 6 ? std::atoi(argv[5]) : 0;
    c.driver = open_wld(request);
    if (!c.driver) return USAGE_STATUS;
    const int64_t start = clock_ms();
    if (std::string(argv[4]) == "all")
        compare_all(c, pieces);
    else
        compare_random(c, pieces, std::atoll(argv[4]));
    std::printf("%lld compared, %lld wrong, %.0f seconds\n", static_cast<long long>(c.compared),
                static_cast<long long>(c.wrong), static_cast<double>(clock_ms() - start) / 1000);
    return c.wrong == 0 ? 0 : 1;
}

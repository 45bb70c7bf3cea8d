#include "tools/egdb_planes.h"

#include <atomic>

#include "egdb/position_walk.h"
#include "tools/parallel_chunks.h"

namespace {

constexpr int64_t CHUNK = 1 << 14;  // a multiple of 64: no word belongs to two chunks

void fill_chunk(ValuePlanes& planes, const SolvedMaterial& solved, int side, int64_t offset, int64_t first,
                int64_t last, std::array<std::atomic<int64_t>, 5>& totals) {
    std::array<int64_t, 5> counts{};  // by value; the last one is of the free positions
    PositionWalk walk(solved.material, offset + first);
    const PackedValues& values = solved.values[static_cast<size_t>(side)];
    for (int64_t i = first; i < last; ++i) {
        if (is_left_out(walk.position, solved.material, side)) {
            ++counts[4];
        } else {
            const EgdbValue value = packed_value(values, offset + i);
            set_plane_value(planes, i, value);
            ++counts[static_cast<size_t>(value)];
        }
        if (i + 1 < last) walk.advance();
    }
    for (size_t i = 0; i < 5; ++i) totals[i].fetch_add(counts[i], std::memory_order_relaxed);
}

}  // namespace

bool is_left_out(const Position& position, const Material& m, int side) {
    return has_capture(position, side) || (piece_count(m) >= 7 && has_capture(position, side ^ 1));
}

ValuePlanes make_planes(int64_t size) {
    ValuePlanes planes;
    planes.size = size;
    for (auto& plane : planes.unfit) plane.resize(static_cast<size_t>((size + 63) / 64));
    return planes;
}

ValuePlanes planes_of(const SolvedMaterial& solved, int side, int64_t first, int64_t count, int threads) {
    ValuePlanes planes = make_planes(count);
    std::array<std::atomic<int64_t>, 5> totals{};
    for_chunks(count, CHUNK, threads,
               [&](int64_t from, int64_t to) { fill_chunk(planes, solved, side, first, from, to, totals); });
    for (size_t i = 0; i < 4; ++i) planes.counts[i] = totals[i];
    planes.free_positions = totals[4];
    return planes;
}

#include "tools/egdb_mtc_blocks.h"

#include <cstdio>

#include "egdb/egdb_format.h"
#include "egdb/mtc_codes.h"
#include "tools/egdb_mtc_solver.h"

namespace {

static_assert(LONGEST_DISTANCE < MTC_LARGEST);

constexpr int64_t UNIT_BYTES = egdb_format(EGDB_MTC).unit_bytes;

// The bytes of one Subslice, with a line of the index for each unit that begins in it.
struct Writer {
    MtcFilePair& pair;
    int64_t start;         // of the Subslice in the data
    int64_t position = 0;  // that the next byte begins with

    void put(uint8_t byte) {
        const auto offset = static_cast<int64_t>(pair.data.size());
        if (offset > start && offset % UNIT_BYTES == 0) pair.index += std::to_string(position) + "\n";
        pair.data.push_back(byte);
        position += mtc_totals[byte];
    }

    // In the longest runs that fit; the table is not in order throughout.
    void put_run(int64_t count) {
        while (count > 0) {
            size_t best = 0;
            for (size_t i = 0; i < mtc_runs.size(); ++i)
                if (mtc_runs[i] <= count && mtc_runs[i] > mtc_runs[best]) best = i;
            put(static_cast<uint8_t>(best));
            count -= mtc_runs[best];
        }
    }
};

}  // namespace

int32_t stored_mtc(int distance) {
    if (distance == NO_DISTANCE) return NO_MTC;
    const int32_t even = distance + distance % 2;
    return even < MTC_THRESHOLD ? NO_MTC : even;
}

void append_mtc_subslice(MtcFilePair& pair, std::span<const uint8_t> distances, const Material& m,
                         int subslice, int side) {
    Writer writer{pair, static_cast<int64_t>(pair.data.size())};
    char line[64];
    std::snprintf(line, sizeof line, "BASE%d,%d,%d,%d,%d,%c:%lld/%lld\n", m.bm, m.bk, m.wm, m.wk, subslice,
                  side == BLACK ? 'b' : 'w', static_cast<long long>(writer.start / UNIT_BYTES),
                  static_cast<long long>(writer.start % UNIT_BYTES));
    pair.index += line;
    int64_t run = 0;
    for (const uint8_t distance : distances) {
        const int32_t mtc = stored_mtc(distance);
        if (mtc == NO_MTC) {
            ++run;
            continue;
        }
        writer.put_run(run);
        run = 0;
        writer.put(static_cast<uint8_t>(MTC_FIRST_NUMBER + mtc / 2));
        ++pair.told_positions;
    }
    writer.put_run(run);
    pair.positions += static_cast<int64_t>(distances.size());
}

#include "tools/egdb_values.h"

#include <algorithm>
#include <cstring>

#include "base/checksum.h"
#include "base/files.h"

namespace {

Material canonical_material(const Material& m) {
    // In a material that is the same for both sides there is nothing to exchange.
    return needs_mirror(m, BLACK) ? colours_exchanged(m) : m;
}

// What the other side can be left with after `m` moved as black: fewer pieces, at least one.
void add_after_black_move(const Material& m, std::vector<Material>& found) {
    for (int promoted = 0; promoted <= std::min(m.bm, 1); ++promoted) {
        for (int wm = 0; wm <= m.wm; ++wm) {
            for (int wk = 0; wk <= m.wk; ++wk) {
                const Material next{m.bm - promoted, m.bk + promoted, wm, wk};
                if (white_count(next) == 0 || next == m) continue;
                found.push_back(canonical_material(next));
            }
        }
    }
}

size_t packed_size(int64_t positions) { return static_cast<size_t>((positions + 3) / 4); }

}  // namespace

EgdbValue solved_value(const SolvedSet& set, const Position& position, int side) {
    if (pieces_of(position, side) == 0) return EGDB_LOSS;
    if (pieces_of(position, side ^ 1) == 0) return EGDB_WIN;
    const CanonicalPosition canonical = canonical_position(position, side);
    const SolvedMaterial& solved = *set.materials[material_number(canonical.material)];
    return packed_value(solved.values[static_cast<size_t>(canonical.side)],
                        position_to_index(canonical.position, canonical.material));
}

std::vector<Material> solving_order(int pieces) {
    std::vector<Material> order;
    for (int men = 0; men <= pieces; ++men) {
        for (int slot = 0; slot < EGDB_SLOTS; slot += 2) {
            const Material m = material_of_slot(slot);
            if (piece_count(m) != pieces || m.bm + m.wm != men) continue;
            if (black_count(m) > EGDB_MAX_SIDE || white_count(m) < 1 || needs_mirror(m, BLACK)) continue;
            order.push_back(m);
        }
    }
    return order;
}

std::vector<Material> next_materials(const Material& m) {
    std::vector<Material> found;
    add_after_black_move(m, found);
    add_after_black_move(colours_exchanged(m), found);
    const auto before = [](const Material& a, const Material& b) {
        return material_number(a) < material_number(b);
    };
    std::sort(found.begin(), found.end(), before);
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

int64_t packed_bytes(const Material& m) {
    return static_cast<int64_t>(packed_size(slice_size(m))) * (is_symmetric(m) ? 1 : 2);
}

int write_solved(const std::string& path, const SolvedMaterial& solved) {
    std::vector<uint8_t> bytes = solved.values[0];
    bytes.insert(bytes.end(), solved.values[1].begin(), solved.values[1].end());
    const uint32_t sum = crc32(bytes.data(), bytes.size());
    for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<uint8_t>(sum >> 8 * i));
    return replace_file(path, bytes.data(), bytes.size());
}

int read_solved(const std::string& path, const Material& m, SolvedMaterial& solved) {
    std::string bytes;
    if (read_file(path, bytes) != 0) return 1;
    const size_t size = packed_size(slice_size(m));
    const size_t tables = is_symmetric(m) ? 1 : 2;
    if (bytes.size() != size * tables + 4) return 1;
    uint32_t sum = 0;
    for (size_t i = 0; i < 4; ++i)
        sum |= static_cast<uint32_t>(static_cast<uint8_t>(bytes[size * tables + i])) << 8 * i;
    if (crc32(bytes.data(), size * tables) != sum) return 1;
    solved.material = m;
    for (size_t i = 0; i < 2; ++i) {
        PackedValues& values = solved.values[i];
        values.resize(i < tables ? size : 0);
        if (!values.empty()) std::memcpy(values.data(), bytes.data() + i * size, size);
    }
    return 0;
}

// Solved endings in memory: the win/loss/draw value of every position of a material, two bits each, positions
// with captures included. The solver makes them, and reads those of what a material can turn into.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/board.h"
#include "egdb/driver.h"
#include "egdb/numbering.h"

constexpr int EGDB_MATERIALS = EGDB_SLOTS / 2;

// Four positions a byte, the first in the lowest bits, in the order of the numbers.
using PackedValues = std::vector<uint8_t>;

inline EgdbValue packed_value(const PackedValues& values, int64_t index) {
    return static_cast<EgdbValue>(values[static_cast<size_t>(index / 4)] >> (index % 4 * 2) & 3);
}

// One canonical material: the values by side to move. Where both sides are alike the second is empty.
struct SolvedMaterial {
    Material material;
    std::array<PackedValues, 2> values;
};

// All solved materials at hand, by canonical material. Written by one thread while no other reads.
struct SolvedSet {
    std::array<std::unique_ptr<SolvedMaterial>, EGDB_MATERIALS> materials;
};

inline size_t material_number(const Material& m) { return static_cast<size_t>(egdb_slot(m, BLACK)) / 2; }

// The solved material, or null if it is not at hand. It must be canonical.
inline const SolvedMaterial* find_solved(const SolvedSet& set, const Material& m) {
    return set.materials[material_number(m)].get();
}

// The value of any position of the set for the side to move; a side without pieces has lost. The material
// must be at hand.
EgdbValue solved_value(const SolvedSet& set, const Position& position, int side);

// The canonical materials of that many pieces, those with fewer men first, so that each comes after those
// that it can promote into.
std::vector<Material> solving_order(int pieces);

// The canonical materials into which one move leads from here: by promotion, by capture and by both.
std::vector<Material> next_materials(const Material& m);

// What two bits a position take, in bytes, for both sides to move.
int64_t packed_bytes(const Material& m);

// To and from a file of their own, for builds that go on where they stopped. Reading checks the sum at the
// file's end. 0, or 1 on failure; `solved` is then left as it was.
int write_solved(const std::string& path, const SolvedMaterial& solved);
int read_solved(const std::string& path, const Material& m, SolvedMaterial& solved);

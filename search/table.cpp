#include "search/table.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <numeric>

#include "base/log.h"
#include "base/system_info.h"
#include "search/engine_settings.h"

TranspositionTable transposition_table;

namespace {

// A size that is not a power of two is rounded down.
uint64_t entries_of(int32_t megabytes) {
    const int log2 = static_cast<int>(std::bit_width(static_cast<uint32_t>(megabytes))) - 1;
    return (uint64_t{1} << (log2 + 20)) / sizeof(TTSlot);
}

constexpr int MIN_TUNED_MB = 8;
constexpr double PASS_SHARE = 450;  // a pass is to take this fraction of the time of a move

// How many times the nodes of one thread so many threads search.
constexpr std::array<double, 8> THROUGHPUT{1.0, 1.97, 2.88, 3.73, 4.55, 5.26, 5.91, 6.39};

double average_pass_seconds(const TranspositionTable& table) {
    const auto passes = static_cast<std::ptrdiff_t>(std::min<int64_t>(table.age_count, AGE_TIMES));
    if (passes == 0) return 0;
    const double sum = std::accumulate(table.age_ms.begin(), table.age_ms.begin() + passes, 0.0);
    return sum / static_cast<double>(passes) / 1000.0;
}

// The factor from the size in use to the one that `wanted` seconds a pass call for, with passes of `average`
// seconds now; a power of two. The quotients are rounded, halves away from zero, before they are compared.
// A size that is no power of two is halved with its fraction cut and doubled only within the allocation.
double tuned_factor(double wanted, double average, int32_t size, int32_t most) {
    double factor = 1;
    if (std::round(0.96 * wanted / average) > 1) {
        while (size <= most / 2) {
            factor *= 2;
            size *= 2;
            if (std::round(0.96 * wanted / (factor * average)) < 2) break;
        }
    } else if (std::round(1.04 * wanted / average) < 1) {
        double divisor = 1;
        while (size > MIN_TUNED_MB) {
            divisor *= 2;
            size /= 2;
            if (std::round(1.04 * wanted * divisor / average) >= 1) break;
        }
        factor = 1 / divisor;
    }
    return factor;
}

template <typename Condition>
int64_t count_entries(Condition holds) {
    const TranspositionTable& table = transposition_table;
    return std::count_if(table.slots_start, table.slots_start + table.slots, [&](const TTSlot& slot) {
        return holds(TTEntry::from_word(slot.load(std::memory_order_relaxed)));
    });
}

}  // namespace

int tt_allocate() {
    TranspositionTable& table = transposition_table;
    table = TranspositionTable{};  // first, so that two tables never exist at once
    table.size_mb = std::clamp(engine_settings.hash_size_mb, 1, MAX_TABLE_MB);
    table.effective_mb = table.size_mb;
    tt_set_geometry();
    table.memory = allocate_large(static_cast<size_t>(table.slots) * sizeof(TTSlot));
    if (!table.memory) {
        log_text("Cannot allocate hashtable\n");
        log_printf("There are %" PRId64 " kbytes of ram available.\n", available_physical_memory() / 1000);
        table = TranspositionTable{};
        return 1;
    }
    // Zero-filled memory is an array of empty entries.
    table.slots_start = static_cast<TTSlot*>(table.memory.get());
    return 0;
}

void tt_clear() {
    TranspositionTable& table = transposition_table;
    for (TTSlot* slot = table.slots_start; slot != table.slots_start + table.slots; ++slot)
        slot->store(0, std::memory_order_relaxed);
}

void tt_set_geometry() {
    TranspositionTable& table = transposition_table;
    table.entries = entries_of(table.effective_mb);
    table.mask = table.entries - 1;
    table.slots = table.entries + BUCKET_SLOTS;
}

void tt_age() {
    TranspositionTable& table = transposition_table;
    const auto start = std::chrono::steady_clock::now();
    for (TTSlot* slot = table.slots_start; slot != table.slots_start + table.slots; ++slot) {
        const uint64_t word = slot->load(std::memory_order_relaxed);
        const uint64_t cleared = word >> 32 & (TTEntry::DEPTH_MASK | TTEntry::PV_MARK);
        // The same bits leave the check, which keeps the key valid. Entries with and without them lie mixed,
        // so a test would cost far more than the stores that it saves.
        slot->store(word ^ (cleared << 32 | cleared), std::memory_order_relaxed);
    }
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    table.age_ms[static_cast<size_t>(table.age_count++ % AGE_TIMES)] = elapsed.count();
}

void tune_hash_size(double seconds, int search_threads) {
    TranspositionTable& table = transposition_table;
    const double average = average_pass_seconds(table);
    if (!table.slots_start || !(average > 0)) return;
    const int threads = std::clamp(search_threads, 1, static_cast<int>(THROUGHPUT.size()));
    const double wanted = seconds * THROUGHPUT[static_cast<size_t>(threads - 1)] / PASS_SHARE;
    const double factor = tuned_factor(wanted, average, table.effective_mb, table.size_mb);
    if (factor == 1) return;
    for (double& ms : table.age_ms) ms *= factor;
    table.effective_mb = static_cast<int32_t>(table.effective_mb * factor);
    tt_set_geometry();
}

int64_t tt_count_marked() {
    return count_entries([](const TTEntry& entry) { return entry.pv_mark(); });
}

int64_t tt_count_usable() {
    return count_entries([](const TTEntry& entry) { return entry.depth_field() != 0; });
}

void tt_restore(const SavedEntry& saved) {
    TTSlot* const bucket = tt_bucket(saved.hash.hash0);
    TTSlot* victim = bucket;
    int32_t victim_depth = INT32_MAX;
    for (TTSlot* slot = bucket; slot != bucket + BUCKET_SLOTS; ++slot) {
        const TTEntry entry = TTEntry::from_word(slot->load(std::memory_order_relaxed));
        if (entry.free() || entry.belongs_to(saved.hash.hash1)) {
            victim = slot;
            break;
        }
        if (entry.depth_field() < victim_depth) {
            victim = slot;
            victim_depth = entry.depth_field();
        }
    }
    victim->store(saved.entry.word(), std::memory_order_relaxed);
}

#include "tools/training_set.h"

#include <array>
#include <cstdio>
#include <memory>
#include <new>

#include "core/board.h"

namespace {

constexpr size_t READ_RECORDS = 4096;

// The finalizer of SplitMix64 (Steele, Lea, Flood 2014): close inputs give independent outputs.
uint64_t mixed(uint64_t x) {
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9;
    x = (x ^ (x >> 27)) * 0x94d049bb133111eb;
    return x ^ (x >> 31);
}

uint64_t hash_of(const GameRecord& record) {
    return mixed(record.black ^ mixed(record.white ^ mixed(record.king ^ mixed(record.game))));
}

// Follows the games of a file. Which side of the split a game is on hangs on its first position alone, so
// that neither the order of the files nor their names matter.
struct Splitter {
    const TrainingSetOptions& options;
    TrainingSet& set;
    bool in_game = false;
    uint32_t game = 0;
    bool held_out = false;

    void add(const GameRecord& record) {
        if (!is_sound_record(record)) {
            ++set.faulty;
            return;
        }
        const uint64_t hash = hash_of(record);
        if (!in_game || record.game != game) {
            in_game = true;
            game = record.game;
            held_out = hash % static_cast<uint64_t>(options.held_out_share) == 0;
            ++set.games;
        }
        if ((hash >> 32) % static_cast<uint64_t>(options.every) != 0) return;
        (held_out ? set.held_out : set.learned).push_back(record);
    }
};

}  // namespace

int read_games(const std::string& path, const TrainingSetOptions& options, TrainingSet& set) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) return SET_UNREADABLE;
    Splitter splitter{options, set};
    std::array<GameRecord, READ_RECORDS> buffer;
    try {
        for (;;) {
            const size_t count = std::fread(buffer.data(), sizeof(GameRecord), buffer.size(), file.get());
            for (size_t i = 0; i < count; ++i) splitter.add(buffer[i]);
            if (count < buffer.size()) break;
        }
    } catch (const std::bad_alloc&) {
        return SET_NO_MEMORY;
    }
    return std::ferror(file.get()) ? SET_UNREADABLE : SET_READ;
}

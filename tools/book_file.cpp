#include "tools/book_file.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <tuple>
#include <vector>

#include "base/files.h"

namespace {

constexpr int SLOT_TRIES = 64;           // numbers of slots to choose from
constexpr int64_t SLOTS_A_POSITION = 2;  // at least

// A position that goes into the book.
struct Kept {
    uint32_t hash;
    BookSlot slot;
};

// What goes into a book, whatever the number of its slots.
struct Content {
    std::vector<Kept> kept;
    std::vector<uint64_t> king_sets;
};

// The index of the set, which is added if there is room; -1 if there is none.
int32_t king_set_index(Content& content, std::map<uint64_t, int32_t>& indices, uint64_t kings) {
    const auto [place, is_new] = indices.try_emplace(kings, static_cast<int32_t>(content.king_sets.size()));
    if (!is_new) return place->second;
    if (content.king_sets.size() == static_cast<size_t>(MAX_BOOK_KING_SETS)) {
        indices.erase(place);
        return -1;
    }
    content.king_sets.push_back(kings);
    return place->second;
}

Content collect(std::span<const BookPosition> positions, BookFileFigures& figures) {
    Content content;
    std::map<uint64_t, int32_t> king_indices;
    std::set<std::tuple<uint64_t, uint64_t, uint64_t, int32_t>> seen;
    for (const BookPosition& p : positions) {
        const Position& board = p.position;
        const bool is_new = seen.emplace(board.black, board.white, board.king, board.side).second;
        BookEntry entry{board.side, p.best, p.second, p.value, -1};
        if (board.king != 0 && is_new && board.black != 0)
            entry.king_set = king_set_index(content, king_indices, board.king);
        if (!is_new || board.black == 0 || (board.king != 0 && entry.king_set < 0)) {
            ++figures.left_out;
            continue;
        }
        figures.with_kings += board.king != 0;
        content.kept.push_back(
            {book_hash(board, board.side), {pack_book_info(entry), board.black, board.white}});
    }
    figures.positions = static_cast<int64_t>(content.kept.size());
    figures.king_sets = static_cast<int32_t>(content.king_sets.size());
    return content;
}

// Gives each position the first free slot from its own on, and returns the longest way that one had to go.
int32_t lay_out(const Content& content, size_t slots, std::vector<int32_t>& places) {
    places.assign(slots, -1);
    int32_t longest = 0;
    for (size_t i = 0; i < content.kept.size(); ++i) {
        size_t slot = content.kept[i].hash % slots;
        int32_t probes = 1;
        for (; places[slot] >= 0; ++probes) slot = slot + 1 == slots ? 0 : slot + 1;
        places[slot] = static_cast<int32_t>(i);
        longest = std::max(longest, probes);
    }
    return longest;
}

// The number of slots with the shortest longest probe, of some that leave room enough.
int32_t best_slots(const Content& content) {
    const auto least = std::max<int64_t>(1, SLOTS_A_POSITION * static_cast<int64_t>(content.kept.size()));
    int64_t best = least;
    int32_t best_probes = INT32_MAX;
    std::vector<int32_t> places;
    for (int64_t slots = least; slots < least + SLOT_TRIES; ++slots) {
        const int32_t probes = lay_out(content, static_cast<size_t>(slots), places);
        if (probes >= best_probes) continue;
        best = slots;
        best_probes = probes;
    }
    return static_cast<int32_t>(best);
}

std::string image_of(const Content& content, const BookHeader& header, const std::vector<int32_t>& places) {
    const size_t king_bytes = content.king_sets.size() * BOOK_KING_SET_BYTES;
    std::vector<uint8_t> image(BOOK_HEADER_BYTES + king_bytes + places.size() * BOOK_SLOT_BYTES);
    write_book_header(header, std::span<uint8_t, BOOK_HEADER_BYTES>(image.data(), BOOK_HEADER_BYTES));
    uint8_t* at = image.data() + BOOK_HEADER_BYTES;
    for (const uint64_t kings : content.king_sets) {
        write_book_set(kings, at);
        at += BOOK_KING_SET_BYTES;
    }
    for (const int32_t place : places) {
        write_book_slot(place < 0 ? BookSlot{} : content.kept[static_cast<size_t>(place)].slot, at);
        at += BOOK_SLOT_BYTES;
    }
    scramble_book(std::span(image).subspan(BOOK_HEADER_BYTES));
    return {image.begin(), image.end()};
}

}  // namespace

std::string make_book(std::span<const BookPosition> positions, int32_t slots, BookFileFigures& figures) {
    figures = BookFileFigures{};
    const Content content = collect(positions, figures);
    figures.slots = slots > 0 ? slots : best_slots(content);
    std::vector<int32_t> places;
    figures.max_probes = lay_out(content, static_cast<size_t>(figures.slots), places);
    BookHeader header;
    std::memcpy(header.version.data(), BOOK_VERSION, sizeof BOOK_VERSION);
    header.positions = static_cast<int32_t>(figures.positions);
    header.slots = figures.slots;
    header.max_probes = figures.max_probes;
    header.king_sets = figures.king_sets;
    return image_of(content, header, places);
}

int write_book(const std::string& path, std::span<const BookPosition> positions, BookFileFigures& figures) {
    const std::string image = make_book(positions, 0, figures);
    return replace_file(path, image.data(), image.size());
}

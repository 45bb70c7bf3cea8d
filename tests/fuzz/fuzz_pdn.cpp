// Any text as a file of games: the index and the lists agree, every game replays without harm, and what was
// replayed prints in both forms and reads back to the same positions.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "check.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"
#include "records/pdn_write.h"

namespace {

constexpr size_t ROOM = 1 << 20;

std::vector<ReplayState> replay(PdnNode* list) {
    std::vector<ReplayState> history(1);
    PdnNode* node = pdn_start_position(list, history[0]);
    ReplayState state = history[0];
    while (node) {
        ReplayState out;
        if (pdn_apply_move(*node, state, out) != 0) break;
        node = pdn_next_move(node, state);
        FUZZ_CHECK(same_pieces(state.position, out.position) && state.side == out.side);
        FUZZ_CHECK(state.setup_flag == out.setup_flag && state.position.side == state.side);
        history.push_back(state);
    }
    return history;
}

void check_same(const std::vector<ReplayState>& expected, const char* text) {
    const PdnGame game = pdn_parse_game(text);
    const std::vector<ReplayState> read = replay(game.get());
    FUZZ_CHECK(read.size() == expected.size());
    for (size_t i = 0; i < read.size(); ++i) {
        FUZZ_CHECK(same_pieces(read[i].position, expected[i].position));
        FUZZ_CHECK(read[i].side == expected[i].side && read[i].setup_flag == expected[i].setup_flag);
    }
}

// The column form of the list.
std::string column_form(const PdnNode* list, uint32_t flags) {
    char* text = nullptr;
    size_t size = 0;
    std::FILE* const file = open_memstream(&text, &size);
    FUZZ_CHECK(file);
    pdn_print_game(file, list, flags);
    std::fclose(file);
    const std::string result(text, size);
    std::free(text);
    return result;
}

void check_forms(const std::vector<ReplayState>& history, const PdnNode* list) {
    GameHeaders headers;
    pdn_game_headers(list, headers);
    static std::vector<char> text(ROOM);
    const int length =
        game_to_pdn_text(text.data(), text.size(), history, headers.event.data(), headers.date.data(),
                         headers.black.data(), headers.white.data(), result_string(headers.result), "\r\n");
    FUZZ_CHECK(static_cast<size_t>(length) == std::strlen(text.data()) &&
               static_cast<size_t>(length) < ROOM - 1);
    char cut[100];
    FUZZ_CHECK(game_to_pdn_text(cut, sizeof cut, history, "", "", "", "", "", "\n") <
               static_cast<int>(sizeof cut));
    // Two colours on many squares have no FEN that fits.
    for (const ReplayState& state : history)
        if (state.position.black & state.position.white) return;
    check_same(history, text.data());
    const PdnGame made = game_to_pdn_list(history, headers);
    check_same(history, column_form(made.get(), PDN_COMMENT_LINES).c_str());
}

void check_game(const char* text, PdnNode* list) {
    replay(list);
    column_form(list, 0);
    column_form(list, PDN_COMMENT_LINES);
    const PdnGame one = pdn_parse_game(text);
    const std::vector<ReplayState> history = replay(one.get());
    if (one) check_forms(history, one.get());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    PdnOffsets offsets;
    PdnTable table;
    FUZZ_CHECK(pdn_index_games(text.c_str(), offsets) == 0);
    FUZZ_CHECK(pdn_parse_games(text.c_str(), table) == 0);
    const int games = pdn_game_count(offsets);
    FUZZ_CHECK(games == pdn_game_count(table) && offsets.back() == -1 && !table.back());
    for (int i = 0; i < games; ++i) {
        const size_t game = static_cast<size_t>(i);
        FUZZ_CHECK(offsets[game] >= 0 && static_cast<size_t>(offsets[game]) < text.size());
        FUZZ_CHECK(i == 0 || offsets[game] > offsets[game - 1]);
        const char* at = text.c_str() + offsets[game];
        PdnToken token;
        FUZZ_CHECK(pdn_next_token(at, token, true) == table[game]->kind);
        char line[GAME_LINE_SIZE];
        pdn_game_line(text.c_str(), offsets, i, line);
        FUZZ_CHECK(std::strlen(line) < GAME_LINE_SIZE);
        check_game(text.c_str() + offsets[game], table[game].get());
    }
    return 0;
}

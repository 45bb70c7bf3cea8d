#include "records/game_pane.h"

#include "records/step_text.h"

namespace {

// White's move keeps the line open for black's answer, and for whatever comes next in the game.
bool ends_line(std::span<const ReplayState> history, size_t step) {
    if (history[step].side != WHITE) return true;
    const size_t next = step + 2;
    return next < history.size() && history[next].setup_flag;
}

}  // namespace

int game_pane_text(char* out, size_t size, std::span<const ReplayState> history, int current_entry,
                   TextRange& current) {
    current = TextRange{};
    if (size == 0) return 0;
    out[0] = '\0';
    BoundedText text{out, size, 0};
    if (!history.empty() && history[0].setup_flag) print(text, "FEN\n");
    if (current_entry == 1) current = {0, static_cast<int>(text.length)};
    int move_number = 0;
    for (size_t step = 0; step + 1 < history.size(); ++step) {
        const int begin = static_cast<int>(text.length);
        const bool set_up = history[step + 1].setup_flag != 0;
        if (set_up) {
            print(text, "FEN\n");
        } else {
            print_numbered_move(text, history[step], history[step + 1], move_number);
            if (step + 2 < history.size()) print(text, "  ");
        }
        if (static_cast<int>(step) + 2 == current_entry) current = {begin, static_cast<int>(text.length)};
        if (!set_up && ends_line(history, step)) print(text, "\n");
    }
    return static_cast<int>(text.length);
}

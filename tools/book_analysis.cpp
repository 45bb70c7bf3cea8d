#include "tools/book_analysis.h"

#include <algorithm>
#include <atomic>
#include <sstream>

#include "book/book_format.h"
#include "core/movegen.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "search/table.h"

namespace {

constexpr const char* END_MARK = ".";  // what is cut short has none

int32_t in_book_range(int32_t value) { return std::clamp(value, MIN_BOOK_VALUE, MAX_BOOK_VALUE); }

// The value; `best` is the position itself where there is no move.
int32_t search_nodes(const Position& position, uint64_t nodes, Move& best) {
    char text[SEARCH_TEXT_SIZE];
    std::atomic<int32_t> never_stopped = 0;
    int32_t searched = 0;
    search_state.node_limit = nodes;
    search_state.game_line = nullptr;
    const int32_t value = getmove(position, position.side, text, never_stopped,
                                  SEARCH_QUIET | SEARCH_FULL_DEPTH, best, searched);
    return in_book_range(value);
}

bool read_task(std::istream& in, BookTask& task) {
    task = BookTask{};
    Position& position = task.position;
    if (!(in >> std::hex >> position.black >> position.white >> position.king >> position.side >> std::dec >>
          task.nodes))
        return false;
    return (position.side == BLACK || position.side == WHITE) && is_legal_setup(position);
}

bool in_range(int32_t value) { return value == in_book_range(value); }

}  // namespace

BookAnalysis analyse_book_position(const BookTask& task, uint64_t quick_nodes) {
    const Position& position = task.position;
    const uint64_t limit_before = search_state.node_limit;
    set_fixed_time(NO_TIME_LIMIT);
    search_state.step_time = 0;  // no iteration is left out, as none is paid for in time
    tt_clear();
    MoveList list;
    generate_moves(position, list, position.side);
    BookAnalysis analysis;
    Move best{};
    analysis.value = search_nodes(position, task.nodes, best);
    analysis.best = std::max(0, find_move(list, best));
    analysis.nodes = searched_nodes();
    for (const Move& move : list) {
        const int32_t value = search_nodes(position_after(move, position.side ^ 1), quick_nodes, best);
        analysis.quick.push_back(static_cast<int16_t>(value));
    }
    search_state.node_limit = limit_before;
    return analysis;
}

std::string book_task_line(const BookTask& task) {
    const Position& position = task.position;
    std::ostringstream out;
    out << std::hex << position.black << ' ' << position.white << ' ' << position.king << ' ' << position.side
        << std::dec << ' ' << task.nodes;
    return out.str();
}

bool read_book_task_line(const std::string& line, BookTask& task) {
    std::istringstream in(line);
    return read_task(in, task) && (in >> std::ws).eof();
}

std::string book_analysis_line(const BookTask& task, const BookAnalysis& analysis) {
    std::ostringstream out;
    out << book_task_line(task) << ' ' << analysis.value << ' ' << analysis.best << ' ' << analysis.nodes;
    for (const int16_t value : analysis.quick) out << ' ' << value;
    out << ' ' << END_MARK;
    return out.str();
}

bool read_book_analysis_line(const std::string& line, BookTask& task, BookAnalysis& analysis) {
    std::istringstream in(line);
    BookAnalysis read;
    if (!read_task(in, task) || !(in >> read.value >> read.best >> read.nodes)) return false;
    const Position& position = task.position;
    MoveList list;
    const int count = generate_moves(position, list, position.side);
    if (!in_range(read.value) || read.best < 0 || read.best >= count) return false;
    for (int i = 0; i < count; ++i) {
        int32_t value = 0;
        if (!(in >> value) || !in_range(value)) return false;
        read.quick.push_back(static_cast<int16_t>(value));
    }
    std::string mark;
    if (!(in >> mark) || mark != END_MARK || !(in >> std::ws).eof()) return false;
    analysis = std::move(read);
    return true;
}

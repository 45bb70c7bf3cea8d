// Opening books: what is in them.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/log.h"
#include "base/paths.h"
#include "book/book_move.h"
#include "cli/book_commands.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "core/notation.h"
#include "records/fen.h"
#include "search/engine_settings.h"
#include "tools/book_analysis.h"
#include "tools/book_check.h"

namespace {

// The program's own book if none is named.
bool open_book(const std::string& file) {
    const std::string path = file.empty() ? enter_program_folder() + BOOK_FILE : file;
    log_listener = [](const char* text) { std::fputs(text, stderr); };
    const int status = load_book_from(path);
    log_listener = nullptr;
    if (status != 0) fail("cannot read the book %s", path.c_str());
    return status == 0;
}

void print_answer(const std::string& fen, const Position& position, int mode) {
    MoveList list;
    generate_moves(position, list, position.side);
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES);
    BookCandidates candidates;
    const bool found =
        book_candidates(opening_book, memory, mode, position, position.side, list, candidates) &&
        candidates.chosen_from > 0;
    const std::string text = found ? book_text(position, list, candidates, 0) : "not in book";
    std::printf("%s %s\n", fen.c_str(), text.c_str());
}

void run_probe(const std::string& file, const std::string& fen, int mode) {
    if (!open_book(file)) return;
    const auto answer = [mode](const std::string& text) {
        Position position;
        if (!read_position(text, position)) return false;
        if (is_legal_setup(position)) {
            print_answer(text, position, mode);
            return true;
        }
        fail("Illegal position");
        return false;
    };
    if (fen != "-") {
        answer(fen);
        return;
    }
    std::string line;
    while (std::getline(std::cin, line)) {
        const size_t end = line.find_last_not_of(" \t\r");
        if (end == std::string::npos) continue;
        line.resize(end + 1);
        if (!answer(line)) return;
    }
}

std::string move_name(const Position& position, const MoveList& list, int index) {
    if (index >= list.count) return "-";
    char text[MOVE_TEXT_SIZE];
    move_text(text, position, list[index]);
    return text;
}

void print_slot(const BookSlot& slot) {
    const BookEntry entry = unpack_book_info(slot.info);
    Position position{slot.black, slot.white, 0, entry.side, 0, nullptr};
    if (entry.king_set >= 0) {
        if (static_cast<size_t>(entry.king_set) >= opening_book.king_sets.size()) return;
        position.king = opening_book.king_sets[static_cast<size_t>(entry.king_set)];
    }
    if (!is_legal_setup(position)) return;
    MoveList list;
    generate_moves(position, list, position.side);
    char fen[FEN_TEXT_SIZE];
    position_to_fen(position, position.side, fen);
    std::printf("%s %s %s %d\n", fen, move_name(position, list, entry.best).c_str(),
                move_name(position, list, entry.second).c_str(), entry.value);
}

void run_dump(const std::string& file) {
    if (!open_book(file)) return;
    const std::vector<uint8_t>& slots = opening_book.slots;
    for (size_t at = 0; at < slots.size(); at += BOOK_SLOT_BYTES)
        if (const BookSlot slot = read_book_slot(slots.data() + at); slot.black != 0) print_slot(slot);
}

struct CheckOptions {
    std::string file;
    size_t lines = 500;
    uint32_t seed = 1;
    uint64_t nodes = 6000000;
    int margin = 60;
};

// Searches the ends of lines and tells those that the side that played by the book has lost.
void check_lines(const CheckOptions& options) {
    const std::vector<BookLineEnd> ends = book_line_ends(opening_book, options.lines, options.seed);
    int64_t lost = 0, searched = 0, plies = 0;
    double difference = 0;
    const int64_t start = clock_ms();
    for (const BookLineEnd& end : ends) {
        if (interrupted) break;
        MoveList list;
        if (generate_moves(end.position, list, end.position.side) == 0) continue;
        const int32_t value = analyse_book_position({end.position, options.nodes}, 1).value;
        const int32_t for_book = end.book_side == BLACK ? value : -value;
        ++searched;
        plies += end.plies;
        difference += std::abs(value - end.value);
        const auto left = static_cast<int64_t>(ends.size()) - searched;
        show_progress(std::to_string(searched) + " of " + std::to_string(ends.size()) + " lines" +
                      time_left_text(start, static_cast<double>(searched), static_cast<double>(left)));
        if (for_book >= -options.margin) continue;
        ++lost;
        char fen[FEN_TEXT_SIZE];
        position_to_fen(end.position, end.position.side, fen);
        std::printf("lost for %s: %s value %d, in the book %d\n", end.book_side == BLACK ? "black" : "white",
                    fen, value, end.value);
    }
    show_progress("");
    const double lines = static_cast<double>(std::max<int64_t>(1, searched));
    std::printf("lines %" PRId64 " plies %.1f lost by more than %d: %" PRId64 ", value off by %.1f\n",
                searched, static_cast<double>(plies) / lines, options.margin, lost, difference / lines);
    if (lost > 0 || interrupted) set_exit_status(EXIT_BAD_INPUT);
}

void run_check(const CheckOptions& options) {
    catch_interrupt();
    const std::string file = options.file.empty() ? "" : absolute_path(options.file);
    engine_settings.hash_size_mb = 16;  // its passes would take longer than the searches
    if (options.lines > 0 && !start_console_engine()) return;
    if (!open_book(file)) return;
    const BookCounts counts = count_book(opening_book);
    std::printf("positions %" PRId64 " with kings %" PRId64 " with a second-best move %" PRId64
                ", illegal positions %" PRId64 " best moves %" PRId64 " second-best moves %" PRId64
                ", not found %" PRId64 "\n",
                counts.positions, counts.with_kings, counts.second, counts.illegal, counts.illegal_best,
                counts.illegal_second, counts.unreachable);
    std::fflush(stdout);
    if (counts.illegal + counts.illegal_best + counts.illegal_second + counts.unreachable > 0)
        set_exit_status(EXIT_BAD_INPUT);
    if (options.lines > 0) check_lines(options);
}

void add_book_check(CLI::App& book) {
    CLI::App* const command = book.add_subcommand(
        "check",
        "Check that all moves of a book exist, and search the ends of its lines, each played by the book on\n"
        "one side and by any move that stays in it on the other");
    const auto options = std::make_shared<CheckOptions>();
    command->add_option("--book", options->file, "Book; the program's own if none is given");
    command->add_option("--lines", options->lines, "Lines to search the ends of")
        ->check(CLI::Range(size_t{0}, size_t{1000000}))
        ->capture_default_str();
    command->add_option("--nodes", options->nodes, "Nodes of each search")
        ->check(CLI::Range(uint64_t{1}, uint64_t{1} << 40))
        ->capture_default_str();
    command->add_option("--margin", options->margin, "Points by which a line is lost")
        ->check(CLI::Range(0, 4000))
        ->capture_default_str();
    command->add_option("--seed", options->seed, "Decides which lines")->capture_default_str();
    command->callback([options] { run_check(*options); });
}

}  // namespace

void add_book_command(CLI::App& program) {
    CLI::App* const book = program.add_subcommand("book", "Opening books: build them and look into them");
    book->require_subcommand(1);
    add_book_build(*book);
    const auto file = std::make_shared<std::string>();
    const auto words = std::make_shared<std::vector<std::string>>();
    const auto mode = std::make_shared<int>(BOOK_BEST_MOVES);
    CLI::App* const probe = book->add_subcommand(
        "probe",
        "Print what the book says to a position: its moves, each with its value, positive when good for\n"
        "black, and how many book moves follow it; a star marks those that are chosen from");
    probe
        ->add_option("FEN", *words,
                     "Position, or - for one position on each line of standard input; before it a book")
        ->option_text("or FILE FEN")
        ->required();
    probe->add_option("--book", *file, "Book; the program's own if none is given");
    probe->add_option("--mode", *mode, "1 all kinds of moves, 2 good moves, 3 best moves")
        ->check(CLI::Range(1, 3))
        ->capture_default_str();
    probe->callback([file, words, mode] {
        const bool named = words->size() > 1;
        if (words->size() > 2) throw CLI::ExtrasError({words->back()});
        if (named && !file->empty()) throw CLI::ExcludesError("FILE", "--book");
        run_probe(named ? words->front() : *file, words->back(), *mode);
    });
    CLI::App* const dump = book->add_subcommand(
        "dump", "Print all positions of a book, each with its best and second-best move and its value");
    dump->add_option("--book,FILE", *file, "Book; the program's own if none is given");
    dump->callback([file] { run_dump(*file); });
    add_book_check(*book);
}

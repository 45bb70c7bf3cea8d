// Opening books: what is in them.
#include <cstdio>
#include <iostream>
#include <memory>
#include <vector>

#include "base/log.h"
#include "base/paths.h"
#include "book/book_move.h"
#include "cli/book_commands.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "core/notation.h"
#include "records/fen.h"

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
    while (std::getline(std::cin, line) && answer(line)) {
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

}  // namespace

void add_book_command(CLI::App& program) {
    CLI::App* const book = program.add_subcommand("book", "Opening books: build them and look into them");
    book->require_subcommand(1);
    add_book_build(*book);
    const auto file = std::make_shared<std::string>();
    const auto fen = std::make_shared<std::string>();
    const auto mode = std::make_shared<int>(BOOK_BEST_MOVES);
    CLI::App* const probe = book->add_subcommand(
        "probe",
        "Print what the book says to a position: its moves, each with its value, positive when good for\n"
        "black, and how many book moves follow it; a star marks those that are chosen from");
    probe->add_option("FEN", *fen, "Position, or - for one position on each line of standard input")
        ->required();
    probe->add_option("--book", *file, "Book; the program's own if none is given");
    probe->add_option("--mode", *mode, "1 all kinds of moves, 2 good moves, 3 best moves")
        ->check(CLI::Range(1, 3))
        ->capture_default_str();
    probe->callback([file, fen, mode] { run_probe(*file, *fen, *mode); });
    CLI::App* const dump = book->add_subcommand(
        "dump", "Print all positions of a book, each with its best and second-best move and its value");
    dump->add_option("--book", *file, "Book; the program's own if none is given");
    dump->callback([file] { run_dump(*file); });
}

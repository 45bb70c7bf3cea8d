#include <cstdio>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/egdb_options.h"
#include "cli/egdb_text.h"
#include "core/notation.h"
#include "egdb/egdb_log.h"
#include "egdb/egdb_open.h"
#include "eval/evaluation.h"
#include "records/fen.h"
#include "search/forced.h"

namespace {

using Json = nlohmann::ordered_json;

std::string hex(uint64_t value, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "%0*llx", digits, static_cast<unsigned long long>(value));
    return text;
}

Json describe_move(const Position& position, const Move& move) {
    char text[MOVE_TEXT_SIZE], full[MOVE_TEXT_SIZE];
    move_text(text, position, move);
    full_move_text(position, move, position.side, full);
    return {{"text", text},
            {"full", full},
            {"black", hex(move.black, 14)},
            {"white", hex(move.white, 14)},
            {"king", hex(move.king, 14)}};
}

// An illegal position has no evaluation and no moves.
Json describe_position(const Position& position) {
    char fen[FEN_TEXT_SIZE];
    position_to_fen(position, position.side, fen);
    const PositionHash hash = position_hash(position, position.side);
    const bool legal = is_legal_setup(position);
    NodeSummary summary;
    summarize(position, summary);
    Json moves = Json::array();
    Json evaluation;
    if (legal) {
        evaluation = evaluate(position, position.side, summary);
        MoveList list;
        generate_moves(position, list, position.side);
        for (const Move& move : list) moves.push_back(describe_move(position, move));
    }
    return {{"fen", fen},
            {"hash0", hex(hash.hash0, 8)},
            {"hash1", hex(hash.hash1, 8)},
            {"legal", legal},
            {"phase", game_phase(summary)},
            {"eval", evaluation},
            {"forced", legal && is_forced(position, position.side)},
            {"moves", moves}};
}

bool can_be_in_database(const Position& position) {
    const Material m = material_of(position);
    return is_legal_setup(position) && black_count(m) >= 1 && white_count(m) >= 1 &&
           black_count(m) <= EGDB_MAX_SIDE && white_count(m) <= EGDB_MAX_SIDE &&
           piece_count(m) <= EGDB_MAX_PIECES;
}

// What is open; null for none.
struct Databases {
    OpenEgdb wld;
    OpenEgdb mtc;
};

// Where the position stands in the databases, and what the open ones say of it.
void describe_in_database(const Position& position, const Databases& open, Json& description) {
    const CanonicalPosition canonical = canonical_position(position, position.side);
    const int64_t index = position_to_index(canonical.position, canonical.material);
    char fen[FEN_TEXT_SIZE];
    position_to_fen(canonical.position, canonical.side, fen);
    description["canonical_fen"] = fen;
    description["slot"] = egdb_slot(canonical.material, canonical.side);
    description["subslice"] = index / SUBSLICE_POSITIONS;
    description["index"] = index % SUBSLICE_POSITIONS;
    description["file"] = egdb_file_of(canonical.material);
    const auto ask = [&](const OpenEgdb& driver) {
        return driver->lookup(driver->handle, position, position.side, false);
    };
    description["value"] = nullptr;
    description["mtc"] = nullptr;
    if (open.wld)
        description["value"] =
            has_capture(position, position.side) ? "capture" : egdb_value_text(ask(open.wld));
    if (open.mtc) description["mtc"] = static_cast<int32_t>(ask(open.mtc));
}

void inspect_line(const std::string& fen, const Databases& open) {
    Position position;
    if (!read_position(fen, position)) return;
    Json description = describe_position(position);
    if (can_be_in_database(position)) describe_in_database(position, open, description);
    std::printf("%s\n", description.dump().c_str());
}

// Null if there is none; a folder that the user has named must hold one, or the command fails.
OpenEgdb open_folder(const std::string& folder, int cache_mb) {
    if (folder.empty()) return nullptr;
    OpenEgdb driver = egdb_open("", cache_mb, folder, egdb_log_text);
    if (!driver) fail("the database in %s cannot be opened", folder.c_str());
    return driver;
}

void run_inspect(const std::string& fen, EgdbChoice& choice) {
    if (!check_egdb_choice(choice) || !start_console_engine()) return;
    const Databases open{open_folder(chosen_egdb_folder(choice, true), choice.cache_mb),
                         open_folder(chosen_mtc_folder(choice, true), MTC_CACHE_MB)};
    if (fen != "-") return inspect_line(fen, open);
    std::string line;
    while (std::getline(std::cin, line))
        if (line.find_first_not_of(" \t\r") != std::string::npos) inspect_line(line, open);
}

}  // namespace

void add_inspect_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "inspect", "Print what the engine knows of a position, without a search, as one line of JSON");
    const auto fen = std::make_shared<std::string>();
    command->add_option("FEN", *fen, "Position, or - for one position on each line of standard input")
        ->required();
    const auto choice = std::make_shared<EgdbChoice>();
    add_egdb_options(*command, *choice, true);
    command->callback([fen, choice] { run_inspect(*fen, *choice); });
}

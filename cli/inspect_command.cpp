#include <cstdio>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/console.h"
#include "core/notation.h"
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

void inspect_line(const std::string& fen) {
    Position position;
    if (read_position(fen, position)) std::printf("%s\n", describe_position(position).dump().c_str());
}

void run_inspect(const std::string& fen) {
    if (!start_console_engine()) return;
    if (fen != "-") return inspect_line(fen);
    std::string line;
    while (!interrupted && std::getline(std::cin, line))
        if (line.find_first_not_of(" \t\r") != std::string::npos) inspect_line(line);
}

}  // namespace

void add_inspect_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "inspect", "Print what the engine knows of a position, without a search, as one line of JSON");
    const auto fen = std::make_shared<std::string>();
    command->add_option("FEN", *fen, "Position, or - for one position on each line of standard input")
        ->required();
    command->callback([fen] { run_inspect(*fen); });
}

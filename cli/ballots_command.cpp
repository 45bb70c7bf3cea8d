#include "core/ballots.h"

#include <cstdio>
#include <memory>

#include "cli/commands.h"
#include "records/fen.h"

void add_ballots_command(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("ballots", "Print the start positions of matches, one FEN a line");
    const auto moves = std::make_shared<int>(0);
    const auto texts = std::make_shared<bool>(false);
    command->add_option("MOVES", *moves, "Moves from the start of the game")
        ->check(CLI::IsMember({2, 3}))
        ->required();
    command->add_flag("--moves", *texts, "Put the moves that lead there behind each position");
    command->callback([moves, texts] {
        Ballot ballot{};
        for (int i = 0; find_ballot(*moves, i, ballot); ++i) {
            char fen[FEN_TEXT_SIZE];
            position_to_fen(ballot.position, ballot.position.side, fen);
            std::printf(*texts ? "%s  %s\n" : "%s\n", fen, ballot.text.data());
        }
    });
}

// The printed forms of a game, and game lists made from positions.
//
// The line form has all moves of a game on one line and is what saving, the clipboard and match files use.
// The column form prints a game list with one move a line and room for comments behind the moves; analyses
// use it. Quotation marks in headers become apostrophes, as tags cannot hold them. Comments are nodes that
// the caller inserts with `pdn_make_comment` and `pdn_insert_after`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include "records/game_headers.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"

// Room for the line form of the longest game of ordinary moves.
constexpr size_t GAME_TEXT_SIZE = 16000;

// Room for that of any game with so many entries: a position that is set up takes more than any move.
constexpr size_t game_text_room(size_t entries) {
    constexpr size_t HEADERS_ROOM = 1000, ENTRY_ROOM = 250;
    const size_t room = HEADERS_ROOM + entries * ENTRY_ROOM;
    return room > GAME_TEXT_SIZE ? room : GAME_TEXT_SIZE;
}

// Flags of the column form and its files.
constexpr uint32_t PDN_COMMENT_LINES = 1;  // a line ends behind each comment
constexpr uint32_t PDN_ALL_GAMES = 2;      // every game of the table, not just one
constexpr uint32_t PDN_NEW_FILE = 4;       // what stood in the file is dropped, not appended to

// Prints the line form of a game, whose entries are its positions from the start on, into `size` bytes.
// Returns the length without the NUL; what does not fit is cut.
int game_to_pdn_text(char* out, size_t size, std::span<const ReplayState> history, const char* event,
                     const char* date, const char* black, const char* white, const char* result_text,
                     const char* line_end);

// The same with the headers of a game.
int game_to_pdn_text(char* out, size_t size, std::span<const ReplayState> history, const GameHeaders& headers,
                     const char* line_end);

// The list of a game. It ends before the first step that no legal move makes, or where memory runs out.
PdnGame game_to_pdn_list(std::span<const ReplayState> history, const GameHeaders& headers);

// The node of the move that leads from one position to the other; its path is there only where start and end
// square alone could be another capture too. Empty if no legal move of `side` does, or memory runs out.
PdnGame pdn_move_node_from_positions(const Position& before, const Position& after, int side);

// Prints a move as its node has it. Returns the number of characters.
int pdn_print_move(std::FILE* file, const PdnNode& node);

// Prints the column form of a list. Sides of moves are those of the nodes, as replay leaves them.
void pdn_print_game(std::FILE* file, const PdnNode* list, uint32_t flags);

// Prints the game at `index`, or with PDN_ALL_GAMES all of them, into a file. 0; 1 if it cannot be opened,
// and nothing is done; 2 if not all could be written.
int pdn_write_games(const std::string& path, const PdnTable& table, uint32_t flags, int index);

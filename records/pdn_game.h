// Games of a text as lists of nodes, and where in a text they begin.
//
// A game begins with a header, a comment, a move or an embedded FEN; it ends with a result, or where a header
// follows its moves. Move numbers are not kept.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "records/game_headers.h"
#include "records/pdn_token.h"

// One node of a game list. It owns its texts and its path, and it is owned through the head of its list.
struct PdnNode {
    PdnTokenKind kind = PDN_END;
    PdnToken token;
    PdnNode* next = nullptr;
};

// Frees a list of any length; null is no game.
void pdn_free_game(PdnNode* list);

struct PdnGameDeleter {
    void operator()(PdnNode* list) const { pdn_free_game(list); }
};

// The owner of a list, empty for no game.
using PdnGame = std::unique_ptr<PdnNode, PdnGameDeleter>;

// Games in their order; the last entry is an empty one, so that a table can be walked as an array that ends
// in null.
using PdnTable = std::vector<PdnGame>;

// Byte offsets of the games of a text in their order, ended by -1.
using PdnOffsets = std::vector<int32_t>;

// Frees every list of the table and leaves it without games.
void pdn_free_games(PdnTable& table);

// The number of games before the end mark.
int pdn_game_count(const PdnTable& table);
int pdn_game_count(const PdnOffsets& offsets);

// A list of one node. May throw std::bad_alloc.
PdnGame pdn_make_node(PdnTokenKind kind, PdnToken token);

// A node with a comment, as it is to be printed, brackets included.
PdnGame pdn_make_comment(const char* text);

// Puts a list of one node behind `node`, which takes it over, and returns the new node.
PdnNode* pdn_insert_after(PdnNode* node, PdnGame inserted);

// Puts the node at the end of a list that is being built; `tail` is its last node, null while there is none.
void pdn_append(PdnGame& list, PdnNode*& tail, PdnGame node);

// Finds where each game begins. 0; 1 if memory runs out or the text is larger than offsets can tell, and then
// the output is untouched.
int pdn_index_games(const char* text, PdnOffsets& offsets_out);

// Builds the lists of all games, comments and results included. 0; 1 if memory runs out, and then the output
// is untouched.
int pdn_parse_games(const char* text, PdnTable& table_out);

// Builds the list of the one game that begins at `text`, without its comments; its result ends it. Empty if
// there is no header, move or embedded FEN. If memory runs out the list is what was built so far.
PdnGame pdn_parse_game(const char* text);

// Reads a file as text: carriage returns in front of newlines are left out, and the text ends in front of the
// mark (code 26) with which old systems end their texts. 0; 1 if it cannot be opened; 2 if its size is below
// 1; 3 if memory runs out. The output is untouched unless the status is 0.
int pdn_read_text(const std::string& path, std::string& text_out);

// Reads and parses a file. 0; 1 if it cannot be opened or memory for the games runs out; 2 if its size is
// below 1, as it is for a missing file; 3 if memory for the text runs out. The output is untouched unless the
// status is 0.
int pdn_read_file(const std::string& path, PdnTable& table_out);

// Takes the headers of a game over; what the game does not tell becomes empty.
void pdn_game_headers(const PdnNode* list, GameHeaders& headers);

// One line of text that shows a game in a list: what stands between the game's offset and the next one, as
// far as the room goes, without the white space at its start, each newline as a blank and without carriage
// returns.
constexpr size_t GAME_LINE_SIZE = 220;
void pdn_game_line(const char* text, const PdnOffsets& offsets, int index, char* out_line);

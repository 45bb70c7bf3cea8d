// A scripted peer that knows the rules: it plays whole games in either role, with moves that a test chooses,
// and can leave or misbehave at any point of them. It takes the rules from core/; of the wire it knows what
// scripted_peer.h tells.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/board.h"
#include "tests/dxp/scripted_peer.h"

struct PlayedGame {
    Position position = START_POSITION;  // `side` is the one to move
    int own_side = WHITE;
    int plies = 0;
};

// The message of a legal move, by its index in the generator's order, which is made in `game`. The captured
// squares stand in the order of capture.
std::string play_own_move(PlayedGame& game, int index);

// Makes the move of a message: true. False if no legal move fits it, and nothing changes. Start, end and the
// captured squares, in the order of the message, must all agree.
bool play_message(PlayedGame& game, const std::string& text);

// Squares of a position as a request has them.
std::string squares_text(const Position& position);
// False if the text, of fifty characters, holds others than those of pieces and "e".
bool position_of_squares(const std::string& text, Position& position);

// Starts the game that a request tells of, whose first letter is R or F: the peer is the follower. False if
// the text is no request.
bool begin_requested_game(PlayedGame& game, const std::string& request);

struct PlayerOptions {
    std::string name = "Scripted Peer";
    // The peer's own move as an index; by default the first in the generator's order.
    std::function<int(const PlayedGame& game, int moves)> choose;
    int max_plies = 400;  // then the game is ended by the peer, with reason 0
    // The reason with which the peer ends the game, in its turn, once so many plies have been played; a
    // negative number never.
    int claim_at_ply = -1;
    char claim = '0';
    // Called before each message of the peer's, with the ply; may do anything to it. False ends the game
    // there, without a word.
    std::function<bool(Peer& peer, const PlayedGame& game)> before_send;
};

struct PlayerReport {
    int games = 0;
    std::vector<std::string> requests;  // as heard
    std::vector<char> reasons;          // with which the program ended games
    std::vector<char> own_reasons;      // with which the peer did
    std::vector<int> plies;             // of each finished game, as the wire had them
};

// As the follower: answers requests and plays until the connection ends. What goes wrong, other than its end,
// is a complaint of the peer.
void follow_games(Peer& peer, const PlayerOptions& options, PlayerReport& report);

// As the initiator: sends the request, plays one game, and exchanges its end. `game.own_side` is the colour
// that the request leaves to the peer.
void initiate_game(Peer& peer, const std::string& request, const PlayerOptions& options,
                   PlayerReport& report);

#include "tests/dxp/scripted_player.h"

#include <algorithm>
#include <cstdlib>

#include "core/capture_lines.h"
#include "core/movegen.h"

namespace {

constexpr size_t SQUARE_COUNT = 50;
constexpr size_t COLOUR_OFFSET = 35;
constexpr size_t REQUEST_POSITION_OFFSET = 42;
constexpr size_t FISCHER_POSITION_OFFSET = 48;

struct WireMove {
    int from = 0;
    int to = 0;
    std::vector<int> jumped;
};

WireMove wire_move(const PlayedGame& game, const MoveList& list, const CaptureLines& lines, int jumps,
                   int index) {
    const int side = game.position.side;
    WireMove wire;
    const CaptureLine& line = lines[static_cast<size_t>(index)];
    uint64_t from = 0, to = 0;
    if (jumps > 0) {
        move_step_squares(line.length, index, side, game.position, list, lines, from, to);
        for (int jump = 0; jump < line.length; ++jump)
            wire.jumped.push_back(square_number(captured_at(line, jump, side)));
    } else {
        from = pieces_of(game.position, side) & ~pieces_of(list[index], side);
        to = pieces_of(list[index], side) & ~pieces_of(game.position, side);
    }
    wire.from = square_number(from);
    wire.to = square_number(to);
    return wire;
}

void make(PlayedGame& game, const Move& move) {
    game.position = position_after(move, game.position.side ^ 1);
    ++game.plies;
}

void complain(Peer& peer, const std::string& text) {
    if (peer.well()) peer.complaint = text;
}

// Ends the game from this side and waits for the answer, which may cross a move of the program's.
void end_game(Peer& peer, char reason, PlayerReport& report) {
    report.own_reasons.push_back(reason);
    if (!peer_send(peer, std::string("E") + reason + '0')) return;
    std::string text;
    while (peer_receive(peer, text))
        if (text.starts_with('E')) return;
    if (!peer.at_end) complain(peer, "the end of the game was not answered");
}

// The peer's turn. False if the game is over for it.
bool take_turn(Peer& peer, PlayedGame& game, const PlayerOptions& options, PlayerReport& report) {
    if (options.before_send && !options.before_send(peer, game)) return false;
    MoveList list;
    const int moves = generate_moves(game.position, list, game.position.side);
    const bool claims = options.claim_at_ply >= 0 && game.plies >= options.claim_at_ply;
    if (claims || moves == 0 || game.plies >= options.max_plies) {
        end_game(peer, claims ? options.claim : moves == 0 ? '1' : '0', report);
        return false;
    }
    const int index = options.choose ? options.choose(game, moves) : 0;
    return peer_send(peer, play_own_move(game, std::clamp(index, 0, moves - 1)));
}

// Plays from where the game stands to its end.
void play_on(Peer& peer, PlayedGame& game, const PlayerOptions& options, PlayerReport& report) {
    std::string text;
    for (;;) {
        if (game.position.side == game.own_side) {
            if (!take_turn(peer, game, options, report)) break;
            continue;
        }
        if (!peer_receive(peer, text)) {
            if (!peer.at_end) complain(peer, "no move came");
            return;
        }
        if (text.starts_with('C')) continue;
        if (text.starts_with('E') && text.size() == 3) {
            report.reasons.push_back(text[1]);
            peer_send(peer, "E00");
            break;
        }
        if (!play_message(game, text)) return complain(peer, "no legal move: " + text);
    }
    ++report.games;
    report.plies.push_back(game.plies);
}

}  // namespace

std::string play_own_move(PlayedGame& game, int index) {
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    generate_moves_with_lines(game.position, list, game.position.side, lines, jumps);
    const WireMove wire = wire_move(game, list, lines, jumps, index);
    make(game, list[index]);
    return move_message_text(wire.from, wire.to, wire.jumped);
}

bool play_message(PlayedGame& game, const std::string& text) {
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    const int moves = generate_moves_with_lines(game.position, list, game.position.side, lines, jumps);
    for (int i = 0; i < moves; ++i) {
        const WireMove wire = wire_move(game, list, lines, jumps, i);
        if (move_message_text(wire.from, wire.to, wire.jumped) != text) continue;
        make(game, list[i]);
        return true;
    }
    return false;
}

std::string squares_text(const Position& position) {
    std::string text;
    for (const uint64_t mask : mask_of_square) {
        const bool king = (position.king & mask) != 0;
        text += position.white & mask ? (king ? 'W' : 'w') : position.black & mask ? (king ? 'Z' : 'z') : 'e';
    }
    return text;
}

bool position_of_squares(const std::string& text, Position& position) {
    if (text.size() != SQUARE_COUNT || text.find_first_not_of("ewzWZ") != std::string::npos) return false;
    position = Position{};
    for (size_t i = 0; i < SQUARE_COUNT; ++i) {
        const uint64_t mask = mask_of_square[i];
        if (text[i] == 'w' || text[i] == 'W') position.white |= mask;
        if (text[i] == 'z' || text[i] == 'Z') position.black |= mask;
        if (text[i] == 'W' || text[i] == 'Z') position.king |= mask;
    }
    return true;
}

bool begin_requested_game(PlayedGame& game, const std::string& request) {
    const bool plain = request.starts_with('R'), fischer = request.starts_with('F');
    const size_t offset = plain ? REQUEST_POSITION_OFFSET : FISCHER_POSITION_OFFSET;
    if ((!plain && !fischer) || request.size() <= offset) return false;
    game = PlayedGame{};
    game.own_side = request[COLOUR_OFFSET] == 'W' ? WHITE : BLACK;
    if (request[offset] == 'A') return true;
    if (request.size() != offset + 2 + SQUARE_COUNT) return false;
    if (!position_of_squares(request.substr(offset + 2), game.position)) return false;
    game.position.side = request[offset + 1] == 'W' ? WHITE : BLACK;
    return true;
}

void follow_games(Peer& peer, const PlayerOptions& options, PlayerReport& report) {
    std::string text;
    while (peer.well() && peer.socket.open() && peer_receive(peer, text)) {
        PlayedGame game;
        if (!begin_requested_game(game, text)) return complain(peer, "no request: " + text);
        report.requests.push_back(text);
        if (!peer_send(peer, game_acceptance_text(options.name))) return;
        play_on(peer, game, options, report);
    }
    if (peer.well() && peer.socket.open() && !peer.at_end) complain(peer, "no request came");
}

void initiate_game(Peer& peer, const std::string& request, const PlayerOptions& options,
                   PlayerReport& report) {
    PlayedGame game;
    if (!begin_requested_game(game, request)) return complain(peer, "no request: " + request);
    game.own_side ^= 1;
    report.requests.push_back(request);
    std::string text;
    if (!peer_send(peer, request) || !peer_receive(peer, text)) return complain(peer, "no answer");
    if (!text.starts_with('A') || text.size() != 34) return complain(peer, "no acceptance: " + text);
    play_on(peer, game, options, report);
}

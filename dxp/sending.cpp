// What this side has to say of its own accord: requests, moves, the end of a game, what the engine thinks.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "base/clock.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/panes.h"
#include "control/program_flags.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/ui.h"
#include "dxp/game_flow.h"
#include "dxp/game_steps.h"
#include "records/game_headers.h"

namespace {

constexpr int REQUEST_PAUSE_MS = 50;
constexpr int64_t FIRST_CHAT_MS = 300;
constexpr const char* COMPLETED_ITERATION = "value=";

// The largest numbers for which a request has room.
constexpr double MOST_MINUTES = 999;
constexpr int32_t MOST_MOVES = 999;
constexpr double MOST_SECONDS = 999999;

char colour_letter(int side) { return side == WHITE ? 'W' : 'Z'; }

char square_letter(uint64_t mask) {
    const bool king = (game.board.king & mask) != 0;
    if (game.board.black & mask) return king ? 'Z' : 'z';
    if (game.board.white & mask) return king ? 'W' : 'w';
    return 'e';
}

// The engine plays by the clock that the other side is told of.
void take_clock_of_request() {
    settings2.increment_mode = settings2.match_incremental;
    if (settings2.match_incremental) {
        settings2.initial_seconds = std::min(double{settings2.initial_seconds}, MOST_SECONDS);
        settings2.increment_seconds = std::min(double{settings2.increment_seconds}, MOST_SECONDS);
    } else {
        settings.clock_minutes = std::min(double{settings.clock_minutes}, MOST_MINUTES);
        limit_moves(dxp_state.moves_limited ? std::min(int32_t{settings.clock_moves_limit}, MOST_MOVES) : 0);
    }
}

DxpMessage make_request() {
    DxpMessage message;
    const bool fischer = settings2.match_incremental != 0;
    message.type = fischer ? DXP_GAMEREQ_FISCHER : DXP_GAMEREQ;
    DxpGameRequest& request = message.request;
    request.version = 1;
    std::memcpy(request.name, dxp_state.engine_name, sizeof request.name);
    request.follower_colour = colour_letter(dxp_state.engine_colour ^ 1);
    request.time = fischer ? settings2.initial_seconds : settings.clock_minutes;
    request.increment = settings2.increment_seconds;
    if (dxp_state.moves_limited) request.moves = static_cast<int16_t>(settings.clock_moves_limit);
    request.to_move = colour_letter(game.board_side);
    for (size_t i = 0; i < SQUARES; ++i) request.squares[i] = square_letter(mask_of_square[i]);
    return message;
}

DxpMessage make_move(const EngineMove& move) {
    DxpMessage message;
    message.type = DXP_MOVE;
    message.move.from = static_cast<int16_t>(move.from);
    message.move.to = static_cast<int16_t>(move.to);
    if (!move.lines) return message;
    const CaptureLine& line = (*move.lines)[static_cast<size_t>(move.index)];
    message.move.jumped_count = static_cast<int16_t>(move.jumps);
    for (int jump = 0; jump < move.jumps; ++jump)
        message.move.jumped[static_cast<size_t>(jump)] =
            static_cast<int16_t>(square_number(captured_at(line, jump, move.side)));
    return message;
}

bool moves_remain() {
    if (settings2.match_incremental) return clock_state.clock_moves < DXP_INCREMENTAL_MOVES;
    return !dxp_state.moves_limited || clock_state.clock_moves < settings.clock_moves_limit;
}

// What this side says of the end of a game.
struct Claim {
    int16_t reason;
    int32_t DxpState::*counter;
    int32_t result;
    const char* status;
};

Claim claim_of(int32_t game_result_code) {
    const int engine = dxp_state.engine_colour;
    switch (game_result_code) {
        case GAME_DRAW:
            return {DXP_REASON_DRAW, &DxpState::match_draws, RESULT_DRAW, "DXP_GAMEEND sent, DRAW claimed."};
        case GAME_WIN:
            return {DXP_REASON_SENDER_WINS, &DxpState::match_wins, win_of(engine),
                    "DXP_GAMEEND sent, WIN claimed."};
        case GAME_LOSS:
            return {DXP_REASON_SENDER_LOSES, &DxpState::match_losses, win_of(engine ^ 1),
                    "DXP_GAMEEND sent, LOSS claimed."};
        default:
            return {DXP_REASON_UNKNOWN, &DxpState::match_unknowns, RESULT_UNKNOWN,
                    "DXP_GAMEEND sent, unknown result."};
    }
}

}  // namespace

void dxp_log_message(const char* text, bool received) {
    ui.append_dxp_text((std::string(text) + "\n").c_str(), received);
}

void dxp_send_and_log(const DxpMessage& message) {
    char text[DXP_TEXT_SIZE];
    dxp_send_message(message, text);
    dxp_log_message(text, false);
}

DxpMessage make_game_end(int16_t reason) {
    DxpMessage message;
    message.type = DXP_GAMEEND;
    message.game_end.reason = reason;
    return message;
}

int32_t win_of(int side) { return side == WHITE ? RESULT_WHITE_WINS : RESULT_BLACK_WINS; }

void append_finished_game(int32_t result) {
    const DxpState& s = dxp_state;
    const bool white = s.engine_colour == WHITE;
    match_hooks.append_match_game(white ? s.opponent_name : s.engine_name,
                                  white ? s.engine_name : s.opponent_name, result_string(result));
}

void limit_moves(int32_t moves) {
    dxp_state.moves_limited = moves > 0;
    settings.clock_moves_limit = dxp_state.moves_limited ? moves : DXP_UNLIMITED_CLOCK_MOVES;
}

void dxp_send_game_request() {
    ui.pause(REQUEST_PAUSE_MS);
    dxp_drop_search();
    DxpState& s = dxp_state;
    s.engine_colour = s.match_games % 2 == 0 ? WHITE : BLACK;
    s.gameend_sent = false;
    s.phase = DXP_REQUESTED;
    take_clock_of_request();
    clock_state.clock_side.store(s.engine_colour, std::memory_order_relaxed);
    start_user_lap(clock_ms());
    const DxpMessage message = make_request();
    dxp_send_and_log(message);
    show_status(message.type == DXP_GAMEREQ_FISCHER ? "DXP_GAMEREQ_FISCHER sent." : "DXP_GAMEREQ sent.");
}

int dxp_send_move(const EngineMove& move) {
    if (dxp_state.phase != DXP_PLAYING) return 1;
    // Without a move there is only the game's end to tell.
    if (move.from == 0 || game.game_result_code != GAME_GOES_ON || !moves_remain()) {
        dxp_claim_end(game.game_result_code);
        return 1;
    }
    start_user_lap(clock_ms());
    dxp_send_and_log(make_move(move));
    if (game.draw_counter > 0) {
        char text[40];
        std::snprintf(text, sizeof text, "draws: %d\n", game.draw_counter);
        ui.append_dxp_text(text, false);
    }
    return 0;
}

void dxp_claim_end(int32_t game_result_code) {
    const Claim claim = claim_of(game_result_code);
    DxpState& s = dxp_state;
    ++(s.*claim.counter);
    s.gameend_sent = true;
    s.phase = DXP_CLAIMED;
    char text[DXP_TEXT_SIZE];
    dxp_send_message(make_game_end(claim.reason), text);
    show_status(claim.status);
    append_finished_game(claim.result);
    match_hooks.write_match_stats();
    dxp_log_message(text, false);
    update_title();
    match_hooks.game_ended(claim.result);
}

void dxp_show_search_text(int running) {
    const SearchThread& t = search_thread;
    if (!program_flags.server_mode || game.gui_mode != DXP_MODE || dxp_state.phase != DXP_PLAYING) return;
    if (t.pondering.load(std::memory_order_relaxed)) return;
    if (running && clock_ms() - t.search_started_ms.load(std::memory_order_relaxed) < FIRST_CHAT_MS) return;
    const char* const shown = search_text();
    const std::string text(shown, strnlen(shown, DXP_CHAT_LENGTH));
    const bool known = text == dxp_state.last_chat_text;
    if (known && running) return;
    dxp_state.last_chat_text = text;
    if (running && text.find(COMPLETED_ITERATION) == std::string::npos) return;
    DxpMessage message;
    message.type = DXP_CHAT;
    std::snprintf(message.chat.text, sizeof message.chat.text, "%s", text.c_str());
    dxp_send_and_log(message);
}

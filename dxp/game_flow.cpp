// Events are taken one by one, and each message has its function. A message in a role or at a time to which
// it does not belong is told in the protocol and does nothing more.
#include "dxp/game_flow.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/clock.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/game_commands.h"
#include "control/game_flow.h"
#include "control/mode_hooks.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/start_search.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "dxp/game_steps.h"
#include "dxp/received_move.h"
#include "records/game_headers.h"

namespace {

// The protocol of a long match is kept short.
constexpr size_t PROTOCOL_LIMIT = 15000;
constexpr size_t PROTOCOL_KEPT = 1500;
// Two programs that answer each other's claims of no game would never end.
constexpr int32_t MAX_STRAY_ANSWERS = 10;

// Type and number of the connection in one word, as events are posted.
constexpr int TYPE_BITS = 8;
constexpr int32_t TYPE_MASK = (1 << TYPE_BITS) - 1;

struct EventQueue {
    bool handling = false;
    std::vector<int32_t> waiting;
};
EventQueue event_queue;

// Events of connections before this one tell of nothing that is there.
void run_event(int32_t event) {
    if (event >> TYPE_BITS == dxp_connection_number()) dxp_handle_message(event & TYPE_MASK);
}

// A message box within lets events come in while another is handled: they wait.
void take_event(int32_t event) {
    event_queue.waiting.push_back(event);
    if (event_queue.handling) return;
    event_queue.handling = true;
    for (size_t i = 0; i < event_queue.waiting.size(); ++i) run_event(event_queue.waiting[i]);
    event_queue.waiting.clear();
    event_queue.handling = false;
}

void post_event(int32_t type, int32_t number) { ui.post(take_event, number << TYPE_BITS | type); }

bool game_is_played() { return dxp_state.phase == DXP_PLAYING && game.gui_mode == DXP_MODE; }

void copy_name(const char (&name)[DXP_NAME_LENGTH + 1]) {
    std::memcpy(dxp_state.opponent_name, name, sizeof dxp_state.opponent_name);
}

Position position_of(const DxpGameRequest& request) {
    Position position{};
    for (size_t i = 0; i < SQUARES; ++i) {
        const uint64_t mask = mask_of_square[i];
        const char square = request.squares[i];
        if (square == 'w' || square == 'W') position.white |= mask;
        if (square == 'z' || square == 'Z') position.black |= mask;
        if (square == 'W' || square == 'Z') position.king |= mask;
    }
    return position;
}

// Plays by the time that the request tells.
void take_time(const DxpMessage& message) {
    const DxpGameRequest& request = message.request;
    const bool fischer = message.type == DXP_GAMEREQ_FISCHER;
    settings2.increment_mode = fischer;
    settings2.match_incremental = fischer;
    if (fischer) {
        settings2.initial_seconds = request.time;
        settings2.increment_seconds = request.increment;
    } else {
        settings.clock_minutes = request.time;
        limit_moves(request.moves);
    }
    settings.operator_time = 0;
    set_time_control(TIME_GAME_CLOCK);
}

void take_position(const DxpGameRequest& request) {
    if (request.to_move == 'A')
        new_game();
    else
        set_board(position_of(request), request.to_move == 'W' ? WHITE : BLACK);
    restart_history(game.board, game.board_side);
    clear_highlights();
    game_text_update();
    ui.redraw_board();
}

// The engine has the move. In a position that is none, as a request may have it, it cannot make one, and the
// game ends there.
void start_engine_move() {
    if (!is_legal_setup(game.board)) {
        dxp_drop_search();
        return dxp_claim_end(GAME_GOES_ON);
    }
    if (search_thread.searching.load(std::memory_order_acquire))
        restart_search();
    else
        start_search();
}

void accept_request(const DxpMessage& message) {
    DxpState& s = dxp_state;
    dxp_drop_search();
    reset_game_clock();
    s.gameend_sent = false;
    copy_name(message.request.name);
    // Behind this side's claim it stands for the acknowledgement: the game is counted and filed.
    if (s.phase == DXP_CLAIMED) ++s.match_games;
    if (s.match_games == 0) clear_match_counters();
    // Who is asked for a game follows.
    s.dxp_follower = 1;
    DxpMessage acceptance;
    acceptance.type = DXP_GAMEACC;
    std::memcpy(acceptance.acceptance.name, s.engine_name, sizeof acceptance.acceptance.name);
    dxp_send_and_log(acceptance);
    take_time(message);
    take_position(message.request);
    s.engine_colour = message.request.follower_colour == 'W' ? WHITE : BLACK;
    s.phase = DXP_PLAYING;
    clock_state.clock_side.store(s.engine_colour, std::memory_order_relaxed);
    set_gui_mode(DXP_MODE);
    if (game.board_side == s.engine_colour) start_engine_move();
    start_game_clock();
    show_status("DXP_GAMEREQ accepted");
}

void take_acceptance(const DxpMessage& message) {
    DxpState& s = dxp_state;
    if (s.phase != DXP_REQUESTED) return;
    reset_game_clock();
    copy_name(message.acceptance.name);
    s.phase = message.acceptance.code == 0 ? DXP_PLAYING : DXP_NO_GAME;
    if (s.phase == DXP_NO_GAME) return start_game_clock();
    if (game.gui_mode != DXP_MODE) set_gui_mode(DXP_MODE);
    update_title();
    if (game.board_side == s.engine_colour) {
        char status[DXP_TEXT_SIZE];
        std::snprintf(status, sizeof status, "GAMEACC from %s", s.opponent_name);
        show_status(status);
        set_gui_mode(DXP_MODE);
        start_engine_move();
    }
    update_menu();
    start_game_clock();
}

// What a GAMEEND of the peer's makes of the game.
struct PeerEnd {
    int32_t DxpState::*counter;
    int32_t result;
};

PeerEnd peer_end(DxpReason reason) {
    const int engine = dxp_state.engine_colour;
    switch (reason) {
        case DXP_REASON_SENDER_LOSES:
            return {&DxpState::match_wins, win_of(engine)};
        case DXP_REASON_DRAW:
            return {&DxpState::match_draws, RESULT_DRAW};
        case DXP_REASON_SENDER_WINS:
            return {&DxpState::match_losses, win_of(engine ^ 1)};
        default:
            return {&DxpState::match_unknowns, RESULT_UNKNOWN};
    }
}

void acknowledge_end(DxpReason reason) {
    DxpState& s = dxp_state;
    const PeerEnd end = peer_end(reason);
    ++(s.*end.counter);
    append_finished_game(end.result);
    dxp_send_and_log(make_game_end(DXP_REASON_UNKNOWN));
    s.gameend_sent = true;
    show_status("DXP_GAMEEND received and acknowledged.");
    update_title();
    match_hooks.write_match_stats();
    match_hooks.game_ended(end.result);
}

void end_match() {
    dxp_disconnect();
    set_gui_mode(NORMAL_MODE);
    clock_stop_command();
    ui.redraw_board();
    update_menu();
    // The score stays to be seen until the mode changes again.
    char title[TITLE_SIZE];
    dxp_match_title(title, sizeof title);
    ui.set_title(title);
    match_hooks.match_over();
}

void go_on_with_match() {
    DxpState& s = dxp_state;
    const int over = match_hooks.set_next_start_position(s.match_games / 2);
    if (over && s.match_games % 2 == 0) return end_match();
    dxp_send_game_request();
    ui.redraw_board();
}

// An end that belongs to no game. One without a reason is an acknowledgement, as some programs answer every
// end; and behind a request the game that it ends is over. An answer to either would reach the other side in
// the next game and end that.
void take_stray_end(DxpReason reason) {
    DxpState& s = dxp_state;
    if (reason == DXP_REASON_UNKNOWN || s.phase == DXP_REQUESTED) return;
    if (s.answered_strays++ < MAX_STRAY_ANSWERS) dxp_send_and_log(make_game_end(DXP_REASON_UNKNOWN));
}

void take_game_end(const DxpMessage& message) {
    DxpState& s = dxp_state;
    const DxpReason reason = game_end_reason(message.game_end.reason);
    if (s.phase != DXP_PLAYING && s.phase != DXP_CLAIMED) return take_stray_end(reason);
    dxp_drop_search();
    if (!s.gameend_sent) acknowledge_end(reason);
    s.phase = DXP_NO_GAME;
    ++s.match_games;
    if (!s.dxp_follower) go_on_with_match();
}

// The number of the entry with this move of white's or black's to come. Entry 1 has move 1 to come.
int32_t entry_of_move(const DxpBackRequest& request) {
    const bool white_first = game.game_history[0].side == WHITE;
    const int32_t entry = 2 * request.move_number - (white_first ? 0 : 1);
    return request.colour == 'W' ? entry - 1 : entry;
}

void take_back(const DxpMessage& message) {
    if (!game_is_played()) return;
    DxpMessage granted;
    granted.type = DXP_BACKACC;
    const int32_t entry = entry_of_move(message.back_request);
    if (entry < 1 || entry > game.history_last) return dxp_send_and_log(granted);
    dxp_drop_search();
    move_in_game_history(entry);
    game.history_last = game.history_count;
    clock_state.clock_moves = (game.history_last - (dxp_state.engine_colour == WHITE ? 0 : 1)) / 2;
    clear_highlights();
    game_text_update();
    ui.redraw_board();
    dxp_send_and_log(granted);
    if (game.board_side == dxp_state.engine_colour) start_engine_move();
}

bool searched_position_is_on_board() {
    return search_thread.search_side == game.board_side &&
           same_pieces(search_thread.search_position, game.board);
}

// The engine answers a move of the peer's, as it does a user's.
void answer_move() {
    SearchThread& t = search_thread;
    const bool searching = t.searching.load(std::memory_order_acquire) != 0;
    // A search that a command has given up has no answer.
    const bool predicted = searched_position_is_on_board() && !t.this_search_aborted;
    if (searching && t.pondering.load(std::memory_order_relaxed) && predicted) {
        change_ponder_to_normal_search();
        ui.redraw_board();
        ui.post_search_picture(PICTURE_STOP);
    } else if (t.ponder_done && predicted && !searching) {
        ui.redraw_board();
        t.pondering.store(0, std::memory_order_relaxed);
        search_done(1);
    } else {
        start_engine_move();
    }
}

void tell_move_error(const char* text) {
    dxp_log_message(text, false);
    ui.message_box(text, "MOVE error", ICON_ERROR);
}

// A move that does not fit is told, and the game goes on with another one all the same. While the user reads
// of it the engine may move, so that the board is another one then.
MoveMatch find_move_on_board(const DxpMove& move) {
    const MoveMatch match = match_received_move(move, game.board, game.board_side);
    if (!match.wrong_count && match.index >= 0) return match;
    if (match.wrong_count) tell_move_error("number jumped dont match");
    if (match.index < 0) tell_move_error("cannot match from and to squares of received move");
    return match_received_move(move, game.board, game.board_side);
}

void take_move(const DxpMessage& message) {
    if (!game_is_played()) return;
    charge_user_time(clock_ms());
    const MoveMatch match = find_move_on_board(message.move);
    if (!game_is_played()) return;
    // Who has the move and cannot make one has lost.
    if (match.moves == 0) {
        dxp_drop_search();
        return dxp_claim_end(game.board_side == dxp_state.engine_colour ? GAME_LOSS : GAME_WIN);
    }
    const int side = game.board_side ^ 1;
    set_board(position_after(match.move, side), side);
    addto_game_history(game.board, side, 0);
    game_text_update();
    clear_highlights();
    ui.redraw_board();
    answer_move();
}

// Before the text is added to the protocol.
void show_game_end(const DxpGameEnd& end) {
    char status[80];
    std::snprintf(status, sizeof status, "DXP_GAMEEND received, reason %d, stop code %d", end.reason,
                  end.stop_code);
    show_status(status);
    ui.trim_dxp_text(PROTOCOL_LIMIT, PROTOCOL_KEPT);
}

void take_message(const DxpMessage& message) {
    switch (message.type) {
        case DXP_GAMEREQ:
        case DXP_GAMEREQ_FISCHER:
            return accept_request(message);
        case DXP_GAMEACC:
            return take_acceptance(message);
        case DXP_MOVE:
            return take_move(message);
        case DXP_GAMEEND:
            return take_game_end(message);
        case DXP_BACKREQ:
            return take_back(message);
        default:
            return;
    }
}

}  // namespace

void start_dxp() {
    mode_hooks.dxp_send_move = dxp_send_move;
    mode_hooks.dxp_show_search_text = dxp_show_search_text;
    mode_hooks.dxp_follower = [] { return dxp_state.dxp_follower != 0; };
    mode_hooks.dxp_title = dxp_match_title;
    reset_dxp_state();
    choose_dxp_port(std::getenv(DXP_PORT_VARIABLE));
    dxp_connection.post_event = post_event;
    start_connection_thread();
}

void dxp_handle_message(int32_t type) {
    if (type == DXP_CONNECTIONLOST) return dxp_connection_lost();
    if (type > DXP_CONNECTIONLOST) return;
    DxpMessage message;
    char text[DXP_TEXT_SIZE];
    dxp_get_message(message, text);
    if (message.type == DXP_NO_MESSAGE) return;
    if (message.type == DXP_GAMEEND)
        show_game_end(message.game_end);
    else
        dxp_state.answered_strays = 0;
    dxp_log_message(text, true);
    take_message(message);
}

void dxp_drop_search() {
    discard_search();  // also one whose end waits behind a box
    search_thread.search_finished.store(0, std::memory_order_relaxed);
    search_thread.ponder_done = false;
}

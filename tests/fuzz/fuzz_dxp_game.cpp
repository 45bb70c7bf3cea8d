// A peer who sends anything at any moment, and a user who does meanwhile what the menu lets him: the board
// stays that of a game, what is sent are messages, the engine's moves are legal ones, and the results add up.
//
// Bit 0 of the first byte turns pondering on and bit 1 makes the program a server. Then a byte for each step:
// its lower three bits choose among `take_step`'s, the others are its number.
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "book/engine_book.h"
#include "check_game.h"
#include "control/game_clock.h"
#include "control/game_commands.h"
#include "control/game_flow.h"
#include "control/panes.h"
#include "control/program_flags.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/ui.h"
#include "core/capture_lines.h"
#include "dxp/game_flow.h"
#include "dxp/received_move.h"
#include "search/engine_settings.h"
#include "search/table.h"

namespace {

struct Work {
    void (*run)(int32_t argument);
    int32_t argument;
};

struct World {
    std::deque<Work> posted;
    int open_boxes = 0;
    Socket peer;
    std::string heard;  // by the peer, up to a message that is not complete
    int32_t entries_at_end =
        0;  // of the game, when the program claimed its end; 0 if the user did more since
};
World world;

// The engine answers at once, or when it is stopped or let go.
std::atomic<bool> hold{false};
std::atomic<bool> held{false};
std::thread::id interface_thread;

int answer(const Position& position, int, const MoveList& list, const BookTerms&, int& index, int& value,
           char*) {
    if (std::this_thread::get_id() != interface_thread) {
        held = true;
        while (hold && !search_thread.stop_flag.load(std::memory_order_relaxed)) std::this_thread::yield();
        held = false;
    }
    if (list.count == 0) return 0;
    index = static_cast<int>((position.black ^ position.white) % static_cast<uint64_t>(list.count));
    value = 0;
    return 1;
}

void run_posted() {
    while (!world.posted.empty()) {
        const Work work = world.posted.front();
        world.posted.pop_front();
        work.run(work.argument);
    }
}

// A box runs what comes in, as a window does.
void show_box(const char*, const char*, MessageIcon) {
    if (world.open_boxes >= 3) return;
    ++world.open_boxes;
    run_posted();
    timer_tick();
    --world.open_boxes;
}

// What the program says of itself, which it tells right behind the sending: a move is the step to the board,
// and with the claim of the end the game is over.
void check_told(const char* text, bool received) {
    if (received) return;
    if (text[0] == 'E' && dxp_state.phase == DXP_CLAIMED) world.entries_at_end = game.history_last;
    if (text[0] != 'M') return;
    DxpMessage message;
    dxp_parse_message(std::string_view(text, std::strcspn(text, "\n")), message);
    const auto history = played_history();
    if (history.size() == MAX_HISTORY) return;
    FUZZ_CHECK(history.size() >= 2);
    const ReplayState& before = history[history.size() - 2];
    const MoveMatch match = match_received_move(message.move, before.position, before.side);
    FUZZ_CHECK(match.index >= 0 && !match.wrong_count);
    FUZZ_CHECK(step_index(before, history.back()) >= 0);
}

void check_heard() {
    char bytes[4096];
    for (ssize_t count;
         (count = recv(static_cast<int>(world.peer.get()), bytes, sizeof bytes, MSG_DONTWAIT)) > 0;)
        world.heard.append(bytes, static_cast<size_t>(count));
    for (size_t end; (end = world.heard.find('\0')) != std::string::npos; world.heard.erase(0, end + 1)) {
        const std::string text = world.heard.substr(0, end);
        DxpMessage message;
        dxp_parse_message(text, message);
        FUZZ_CHECK(message.type != DXP_NO_MESSAGE && text.size() <= DXP_MAX_TEXT);
        char again[DXP_TEXT_SIZE];
        if (message.type == DXP_CHAT) continue;
        FUZZ_CHECK(dxp_format_message(message, again) == text.size() && text == again);
    }
}

bool connected() { return dxp_connection.connection_state == DXP_CONNECTED; }

// A connection without the threads of one.
void connect_peer() {
    int ends[2];
    FUZZ_CHECK(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
    world.peer = Socket(ends[1]);
    world.heard.clear();
    auto link = std::make_shared<DxpLink>();
    link->socket = Socket(ends[0]);
    const std::lock_guard lock(dxp_connection.mutex);
    link->number = dxp_connection.last_number = dxp_connection.last_number % DXP_MAX_NUMBER + 1;
    dxp_connection.link = std::move(link);
    dxp_connection.connection_state = DXP_CONNECTED;
}

// As the receive thread does with what comes in, but that nobody else could make room in a full ring: it ends
// the connection.
void receive(std::string_view bytes) {
    if (!connected()) connect_peer();
    const std::shared_ptr<DxpLink> link = dxp_connection.link;
    for (const char byte : bytes) {
        const int32_t put = dxp_ring_put(link->ring, byte);
        if (put > 0) dxp_connection.post_event(put, link->number);
        if (put < 0) {
            if (link->open.exchange(false)) dxp_connection.post_event(DXP_CONNECTIONLOST, link->number);
            return;
        }
    }
}

void receive(const DxpMessage& message) {
    char text[DXP_TEXT_SIZE];
    receive({text, dxp_format_message(message, text) + 1});
}

// A legal move of the position on the board, or nothing.
void receive_move(int number) {
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    const int side = game.board_side;
    if (has_both_colours(game.board) || generate_moves_with_lines(game.board, list, side, lines, jumps) == 0)
        return;
    const int index = number % list.count;
    uint64_t from = 0, to = 0;
    move_step_squares(jumps, index, side, game.board, list, lines, from, to);
    DxpMessage message;
    message.type = DXP_MOVE;
    message.move.from = static_cast<int16_t>(square_number(from));
    message.move.to = static_cast<int16_t>(square_number(to));
    message.move.jumped_count = static_cast<int16_t>(jumps);
    for (int jump = 0; jump < jumps; ++jump)
        message.move.jumped[static_cast<size_t>(jump)] =
            static_cast<int16_t>(square_number(captured_at(lines[static_cast<size_t>(index)], jump, side)));
    receive(message);
}

// The initial position, or the pieces of the board one row on.
void receive_request(int number) {
    DxpMessage message;
    message.type = number & 1 ? DXP_GAMEREQ_FISCHER : DXP_GAMEREQ;
    DxpGameRequest& request = message.request;
    request.version = 1;
    request.follower_colour = number & 2 ? 'W' : 'Z';
    request.to_move = "AAWZ"[number >> 2 & 3];
    request.time = 5;
    request.moves = static_cast<int16_t>(number >> 4 ? 75 : 3);
    for (size_t i = 0; i < SQUARES; ++i) {
        const uint64_t mask = mask_of_square[(i + 5) % SQUARES];
        const bool king = (game.board.king & mask) != 0;
        request.squares[i] = 'e';
        if (game.board.black & mask) request.squares[i] = king ? 'Z' : 'z';
        if (game.board.white & mask) request.squares[i] = king ? 'W' : 'w';
    }
    receive(message);
}

void receive_small(int number) {
    DxpMessage message;
    if (number & 1) {
        message.type = DXP_GAMEACC;
        message.acceptance.code = static_cast<int16_t>(number >> 1 & 1);
    } else {
        message.type = DXP_GAMEEND;
        message.game_end.reason = static_cast<int16_t>(number >> 1 & 7);
    }
    receive(message);
}

// Written here, as the program never asks for one.
void receive_back(int number) {
    char text[16];
    const int length = std::snprintf(text, sizeof text, "B%03d%c", number / 2, number & 1 ? 'W' : 'Z');
    receive({text, static_cast<size_t>(length) + 1});
}

void lose_connection() {
    if (connected()) dxp_connection.post_event(DXP_CONNECTIONLOST, dxp_connection_number());
}

void ask_for_game() {
    if (!connected()) return;
    dxp_state.dxp_follower = 0;
    dxp_send_game_request();
}

void let_search_end() {
    hold = false;
    wait_for_search();
    timer_tick();
}

void user_moves() {
    MoveList list;
    if (!has_both_colours(game.board) && generate_moves(game.board, list, game.board_side) > 0)
        make_user_move(0);
}

void use_menu(int number) {
    constexpr void (*COMMANDS[])() = {
        ask_for_game,        terminate_connection_command,
        lose_connection,     normal_command,
        new_game_command,    back_command,
        forward_command,     back_to_start_command,
        pondering_command,   search_button_command,
        two_players_command, setup_command,
        change_side_command, autoplay_command,
        analysis_command,    user_moves,
    };
    COMMANDS[number % 16]();
}

// Takes the step's bytes off the input.
void take_step(std::string_view& input) {
    const int number = static_cast<uint8_t>(input[0]) >> 3;
    const int kind = input[0] & 7;
    input.remove_prefix(1);
    switch (kind) {
        case 0: {
            const std::string text(input.substr(0, input.find('\0')));
            input.remove_prefix(std::min(text.size() + 1, input.size()));
            return receive({text.c_str(), text.size() + 1});
        }
        case 1:
            return receive_move(number);
        case 2:
            return receive_request(number);
        case 3:
            return receive_small(number);
        case 4:
            return receive_back(number);
        case 5:
            world.entries_at_end = 0;
            return use_menu(number);
        case 6:
            hold = number % 2 == 1;
            return;
        default:
            return number % 2 ? timer_tick() : let_search_end();
    }
}

// Until the search thread is idle or held, so that the same input always does the same.
void let_search_settle() {
    if (hold)
        while (search_thread.searching && !held) std::this_thread::yield();
    else
        wait_for_search();
}

void check_all() {
    check_history();
    if (game.history_last < MAX_HISTORY && game.gui_mode == DXP_MODE) check_board();
    const DxpState& s = dxp_state;
    FUZZ_CHECK(s.phase >= DXP_NO_GAME && s.phase <= DXP_CLAIMED);
    FUZZ_CHECK(s.match_wins + s.match_draws + s.match_losses + s.match_unknowns >= s.match_games);
    FUZZ_CHECK(s.phase != DXP_CLAIMED || !world.entries_at_end || game.history_last == world.entries_at_end);
    FUZZ_CHECK(connected() || s.phase == DXP_NO_GAME);
    if (world.peer.open()) check_heard();
}

void start_program() {
    interface_thread = std::this_thread::get_id();
    settings = make_default_settings({});
    settings2 = make_default_settings2();
    engine_settings.hash_size_mb = 1;
    FUZZ_CHECK(tt_allocate() == 0);
    engine_book = {true, answer};
    ui = no_ui();
    ui.post = [](void (*work)(int32_t), int32_t argument) { world.posted.push_back({work, argument}); };
    ui.message_box = show_box;
    ui.append_dxp_text = check_told;
    start_search_thread();
    dxp_connection.make_connection_thread = [](void (*)()) { return true; };
    start_dxp();
}

void reset_program(int flags) {
    terminate_connection_command();
    hold = false;
    discard_search();
    wait_for_search();
    reset_search_flags();
    world.posted.clear();
    world.entries_at_end = 0;
    program_flags.server_mode = (flags & 2) != 0;
    settings = make_default_settings({});
    settings2 = make_default_settings2();
    settings.hash_mb = 1;
    settings.search_threads = 1;
    settings.book_mode = 3;
    settings.wld_enable = settings.mtc_enable = 0;
    settings.sound_on = 0;
    settings.pondering_on = flags & 1;
    reset_clock_state();
    reset_panes();
    reset_game();
    reset_dxp_state();
    new_game();
    set_gui_mode(NORMAL_MODE);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    static const bool started = (start_program(), true);
    (void)started;
    reset_program(data[0]);
    std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
    while (!input.empty()) {
        take_step(input);
        run_posted();
        let_search_settle();
        check_all();
    }
    return 0;
}

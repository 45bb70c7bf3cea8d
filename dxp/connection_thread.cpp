#include "dxp/connection_thread.h"

#include <chrono>
#include <string>
#include <thread>

#include "base/detached_thread.h"
#include "base/log.h"
#include "control/game.h"
#include "control/panes.h"
#include "control/program_flags.h"
#include "control/settings.h"
#include "control/ui.h"
#include "dxp/dxp_state.h"
#include "dxp/game_flow.h"
#include "dxp/match_hooks.h"

namespace {

constexpr int LISTEN_AGAIN_MS = 100;

bool connected_by(int32_t number) {
    return dxp_connection.connection_state.load(std::memory_order_acquire) == DXP_CONNECTED &&
           dxp_connection_number() == number;
}

// A peer may come back in the middle of a match; without a file to prove that, a new one begins.
void check_match_stats() {
    MatchCounters ignored;
    if (dxp_state.match_games < 1 || match_hooks.read_match_stats(ignored) > 0) return;
    dxp_state.match_games = 0;
    clear_match_counters();
}

// What the connection thread has to tell, told by the interface thread.

void tell_listening(int32_t) { ui.append_dxp_text("Listening for Dxp connections\n", false); }

void tell_port_taken(int32_t) {
    ui.append_dxp_text(("Cannot listen on port " + std::string(dxp_connection.port_text) + "\n").c_str(),
                       false);
}

void tell_listening_ended(int32_t) { ui.append_dxp_text("Listening terminated\n", false); }

void show_menu(int32_t) { update_menu(); }

// Messages come in only from here on, so that the first finds everything in place.
void tell_peer_has_come(int32_t number) {
    if (!connected_by(number)) return;
    ui.append_dxp_text("Connection established\n", false);
    show_status("Connection established");
    update_menu();
    check_match_stats();
    dxp_begin_receiving();
}

// A port that is taken is told once, though it is tried as long as the waiting lasts.
void listen_for_peer() {
    ui.post(tell_listening, 0);
    bool told = false;
    while (dxp_connection.connection_state.load(std::memory_order_acquire) == DXP_LISTENING) {
        if (dxp_connect(nullptr) == 0) return ui.post(tell_peer_has_come, dxp_connection_number());
        if (dxp_connection.port_taken.load(std::memory_order_relaxed) && !told) {
            told = true;
            log_printf("cannot listen on port %s\n", dxp_connection.port_text);
            ui.post(tell_port_taken, 0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(LISTEN_AGAIN_MS));
    }
    dxp_connection.port_taken.store(false, std::memory_order_relaxed);
    ui.post(tell_listening_ended, 0);
}

// A server listens whenever it has nothing else to do.
void serve() {
    int32_t expected = DXP_UNCONNECTED;
    if (!program_flags.server_mode ||
        !dxp_connection.connection_state.compare_exchange_strong(expected, DXP_LISTENING))
        return;
    // Looked at only now: whoever ends the program sets it first and puts the state back afterwards.
    expected = DXP_LISTENING;
    if (dxp_connection.closing &&
        dxp_connection.connection_state.compare_exchange_strong(expected, DXP_UNCONNECTED))
        return;
    dxp_connection.connection_event.signal();
    ui.post(show_menu, 0);
}

void connection_thread_body() {
    for (;;) {
        dxp_connection.connection_event.wait();
        const int32_t state = dxp_connection.connection_state.load(std::memory_order_acquire);
        if (state == DXP_UNCONNECTED) serve();
        if (state != DXP_LISTENING) continue;
        dxp_connection.waits_for_peer.store(true, std::memory_order_relaxed);
        listen_for_peer();
        dxp_connection.waits_for_peer.store(false, std::memory_order_release);
    }
}

// The engine's search is thrown away, as its move belongs to a game that nobody plays any more. A game of the
// user's, in NORMAL_MODE, goes on.
void leave_game() {
    // A game that this side has claimed is counted and filed already; the next one is not to take its place.
    if (dxp_state.phase == DXP_CLAIMED) ++dxp_state.match_games;
    dxp_state.phase = DXP_NO_GAME;
    if (game.gui_mode == NORMAL_MODE) return;
    dxp_drop_search();
    set_gui_mode(NORMAL_MODE);
}

}  // namespace

DxpMenuState dxp_menu_state(int32_t connection_state, int32_t gui_mode) {
    DxpMenuState state;
    const bool unconnected = connection_state == DXP_UNCONNECTED;
    state.connect_enabled = unconnected;
    state.terminate_enabled = !unconnected;
    state.start_match_enabled = connection_state == DXP_CONNECTED && gui_mode != DXP_MODE;
    state.autoconnect_enabled = unconnected;
    return state;
}

DxpMenuState dxp_menu_state() {
    return dxp_menu_state(dxp_connection.connection_state.load(std::memory_order_acquire), game.gui_mode);
}

void start_connection_thread() {
    DxpConnection& connection = dxp_connection;
    if (connection.connection_thread_runs) return;
    connection.connection_thread_runs = connection.make_connection_thread
                                            ? connection.make_connection_thread(connection_thread_body)
                                            : start_detached_thread(connection_thread_body);
    if (!connection.connection_thread_runs)
        ui.message_box("Cannot create connection thread", "Error", ICON_ERROR);
    else if (program_flags.server_mode)
        connection.connection_event.signal();
}

int connect_to_host() {
    const std::string host(setting_text(settings.dxp_host));
    ui.append_dxp_text(("Attempting connection to " + host + "\n").c_str(), false);
    if (dxp_connect(host.c_str()) != 0) {
        ui.append_dxp_text("Connection attempt failed\n", false);
        leave_game();
        ui.message_box("Cannot connect to remote host", "Unsuccessful", ICON_ERROR);
        return 1;
    }
    ui.append_dxp_text("Connected\n", false);
    update_menu();
    dxp_begin_receiving();
    return 0;
}

void make_connection_command(const char* host) {
    if (dxp_connection.connection_state.load(std::memory_order_acquire) != DXP_UNCONNECTED) return;
    constexpr size_t LONGEST_HOST = 49;
    store_setting_text(settings.dxp_host, std::string_view(host).substr(0, LONGEST_HOST));
    connect_to_host();
}

void wait_for_connection_command() {
    int32_t expected = DXP_UNCONNECTED;
    if (!dxp_connection.connection_state.compare_exchange_strong(expected, DXP_LISTENING)) return;
    dxp_connection.connection_event.signal();
    update_menu();
}

void terminate_connection_command() {
    dxp_disconnect();
    leave_game();
    update_menu();
}

void dxp_connection_lost() {
    dxp_disconnect();
    leave_game();
    dxp_state.dxp_follower = 1;
    show_status("DXP_CONNECTIONLOST");
    ui.append_dxp_text("Connection lost\n", false);
    update_menu();
    if (program_flags.server_mode) wait_for_connection_command();
}

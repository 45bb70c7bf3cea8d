#include "shell/qt/dxp_commands.h"

#include <QElapsedTimer>
#include <QThread>
#include <string>

#include "control/settings.h"
#include "dxp/game_flow.h"
#include "dxp/match.h"
#include "shell/menu.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/main_window.h"

namespace {

// A wait for a peer cannot be cut short.
constexpr int QUIET_LIMIT_MS = 5 * DXP_LISTEN_MS;
constexpr unsigned long LOOK_AGAIN_MS = 5;

void make_connection() {
    if (make_connection_dialog(main_window))
        make_connection_command(std::string(setting_text(settings.dxp_host)).c_str());
}

bool network_is_quiet() {
    return !dxp_connection.waits_for_peer.load(std::memory_order_acquire) &&
           dxp_connection.receive_threads.load(std::memory_order_acquire) == 0;
}

}  // namespace

bool is_dxp_command(int32_t id) {
    return id == COMMAND_DXP_CONNECT || id == COMMAND_DXP_WAIT || id == COMMAND_DXP_TERMINATE ||
           id == COMMAND_START_MATCH || id == COMMAND_START_MATCH_AUTOCONNECT;
}

bool dxp_command_is_enabled(int32_t id) {
    const DxpMenuState state = dxp_menu_state();
    switch (id) {
        case COMMAND_DXP_TERMINATE:
            return state.terminate_enabled;
        case COMMAND_START_MATCH:
            return state.start_match_enabled;
        case COMMAND_START_MATCH_AUTOCONNECT:
            return state.autoconnect_enabled;
        default:
            return state.connect_enabled;
    }
}

bool run_dxp_command(int32_t id) {
    if (!is_dxp_command(id)) return false;
    // The menu may show what was so a moment ago.
    if (!dxp_command_is_enabled(id)) return true;
    if (id == COMMAND_DXP_CONNECT) make_connection();
    if (id == COMMAND_DXP_WAIT) wait_for_connection_command();
    if (id == COMMAND_DXP_TERMINATE) terminate_connection_command();
    if (id == COMMAND_START_MATCH) start_match_dialog(main_window);
    if (id == COMMAND_START_MATCH_AUTOCONNECT) begin_match_autoconnect();
    return true;
}

void start_network_play() {
    dxp_connection.closing = false;
    start_matches();
    start_dxp();
}

bool end_network_play() {
    dxp_connection.closing = true;
    terminate_connection_command();
    QElapsedTimer elapsed;
    elapsed.start();
    while (!network_is_quiet()) {
        if (elapsed.elapsed() > QUIET_LIMIT_MS) return false;
        QThread::msleep(LOOK_AGAIN_MS);
    }
    return true;
}

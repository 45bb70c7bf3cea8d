#include "control/panes.h"

#include <algorithm>
#include <cstdio>

#include "base/clock.h"
#include "base/text.h"
#include "control/game.h"
#include "control/game_clock.h"
#include "control/mode_hooks.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/text_ids.h"
#include "control/ui.h"

Panes panes;

namespace {

struct Text {
    char text[CONTROL_TEXT_SIZE];

    explicit Text(int id) { get_text(id, text, sizeof text); }
};

int egdb_text_id() {
    if (!settings.wld_enable) return TEXT_EGDB_DISABLED;
    switch (mode_hooks.egdb_state()) {
        case EGDB_NOT_OPENED:
            return TEXT_EGDB_UNINITIALIZED;
        case EGDB_OPENING:
            return TEXT_EGDB_INITIALIZING;
        case EGDB_OPENED:
        case EGDB_IN_USE:
            return TEXT_EGDB_READY;
        case EGDB_SWITCHED_OFF:
            return TEXT_EGDB_DISABLED;
        case EGDB_FAILED:
            return TEXT_EGDB_FAILED;
        default:
            return TEXT_UNKNOWN;
    }
}

// What is known of the ponder search, without its status text. Returns the length.
int ponder_move_lines(char* buffer, size_t size) {
    const SearchThread& t = search_thread;
    if (t.searching.load(std::memory_order_acquire) && t.pondering.load(std::memory_order_relaxed))
        return std::snprintf(buffer, size, "%s %s\r\n", Text(TEXT_PONDERING_MOVE).text, t.ponder_move_text);
    if (t.ponder_done)
        return std::snprintf(buffer, size, "%s %s\r\n%s %s\r\n", Text(TEXT_PONDER_MOVE).text,
                             t.ponder_move_text, Text(TEXT_PONDER_RESULT).text, t.ponder_result_text);
    return 0;
}

void show_pane(ChildWindow pane, std::string& shown, const char* text) {
    if (shown == text) return;
    shown = text;
    ui.set_pane_text(pane, text);
}

}  // namespace

void reset_panes() { panes = Panes{}; }

void show_status(const char* text) {
    if (panes.shown_status == text) return;
    panes.shown_status = text;
    ui.set_status_text(text);
}

void show_status(int text_id) { show_status(Text(text_id).text); }

void status_pane_text(char* buffer, size_t size) {
    char mode[CONTROL_TEXT_SIZE];
    mode_text(game.gui_mode, mode_hooks.dxp_follower(), mode, sizeof mode);
    std::snprintf(buffer, size, "%s: %s\r\n%s: %s\r\n", Text(TEXT_EGDB).text, Text(egdb_text_id()).text,
                  Text(TEXT_SEARCH_MODE).text, mode);
}

void ponder_pane_text(char* buffer, size_t size) {
    buffer[0] = '\0';
    if (!is_playing_mode(game.gui_mode) || !settings.pondering_on) return;
    const size_t room = std::min(size, PONDER_TEXT_SIZE);
    const size_t length = static_cast<size_t>(std::max(ponder_move_lines(buffer, room), 0));
    if (length < room) std::snprintf(buffer + length, room - length, "%s", search_text());
}

void clock_pane_text(char* buffer, size_t size) {
    buffer[0] = '\0';
    if (is_playing_mode(game.gui_mode)) clock_text(engine_time_runs(), clock_ms(), buffer, size);
}

void refresh_panes() {
    char text[PANE_TEXT_SIZE];
    status_pane_text(text, sizeof text);
    show_pane(STATUS_WINDOW, panes.shown[0], text);
    ponder_pane_text(text, sizeof text);
    show_pane(PONDER_WINDOW, panes.shown[1], text);
    clock_pane_text(text, sizeof text);
    show_pane(CLOCK_WINDOW, panes.shown[2], text);
}

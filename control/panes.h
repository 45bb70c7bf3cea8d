// The texts that follow the search: the status line and the three panes. Interface thread only.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

constexpr size_t PONDER_TEXT_SIZE = 217;
constexpr size_t PANE_TEXT_SIZE = 300;

// The ticks counted and the texts last shown, so that each is sent to `ui` only when it has changed.
struct Panes {
    int32_t ticks = 0;
    std::string shown_status;
    std::array<std::string, 3> shown;  // status, ponder and clock pane
};
extern Panes panes;

// Forgets what was shown, so that everything is sent again.
void reset_panes();

// Shows a text in the status line. Who shows one there uses this and not `ui` itself.
void show_status(const char* text);
// The same with the text of a string id.
void show_status(int text_id);

// The texts of the panes as they are now, NUL-terminated and cut to `size`, at least 1.
void status_pane_text(char* buffer, size_t size);
void ponder_pane_text(char* buffer, size_t size);  // empty in modes without pondering
void clock_pane_text(char* buffer, size_t size);   // empty in modes without a clock

// Shows the panes whose texts changed.
void refresh_panes();

// What game control wants of a screen: a record of functions that a front end fills in. The windows, the
// console and the tests each have their own; the one that is there at first shows nothing, agrees to nothing
// and loses what it is given, and with it all of game control runs.
//
// Every function but the posting ones at the end is called on the interface thread only. Texts and spans
// belong to the caller and hold for the call. No function may change the game, run a command or start a
// search; a function that waits for the user, as a message box does, may let `timer_tick` run meanwhile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "control/modes.h"
#include "control/settings.h"
#include "records/game_headers.h"
#include "records/pdn_game.h"

enum MessageIcon { ICON_NONE, ICON_INFO, ICON_WARNING, ICON_ERROR };

// The picture of the button that starts and stops the search, by its number in the strip of pictures.
enum SearchPicture : int32_t { PICTURE_STOP = 7, PICTURE_GO = 8 };

// The title that a message box has when the caller names none.
constexpr const char* DEFAULT_BOX_TITLE = "Error";

struct Ui {
    // The board with its marks is to be drawn as it stands in `game` now; before the call returns where it
    // can be, as pauses follow that let the user see it.
    void (*redraw_board)();
    // The button of the side to move shows that side.
    void (*set_side_button)(int side);
    // The one line at the bottom. Game control calls it through `show_status` (control/panes.h).
    void (*set_status_text)(const char* text);
    void (*set_title)(const char* title);
    // The commands' states and ticks are to be brought up to date: those told by `state`, and the ticks that
    // follow the settings.
    void (*update_menu)(const MenuState& state);
    // Replaces the text of the status, ponder or clock pane; lines end in "\r\n".
    void (*set_pane_text)(ChildWindow pane, const char* text);
    // Replaces the text of the game pane; the bytes from `begin` up to `end` are coloured, and the end of
    // them is scrolled into view.
    void (*set_game_text)(const char* text, int begin, int end);
    // Adds to the protocol of the DamExchange pane; what was received is coloured.
    void (*append_dxp_text)(const char* text, bool received);
    // Shortens the protocol to its last bytes when it has more than `limit`, behind one blank.
    void (*trim_dxp_text)(size_t limit, size_t kept);

    // Returns when the user has seen it.
    void (*message_box)(const char* text, const char* title, MessageIcon icon);
    // A question with "OK" and "Cancel"; true for "OK".
    bool (*ask)(const char* text, const char* title);
    // A file of games to read, or to append to. False if the user cancels; `path` is then untouched.
    bool (*choose_load_file)(const char* title, std::string& path);
    bool (*choose_save_file)(const char* title, std::string& path);
    // One of the games of a text, by its number from 0; -1 if the user cancels. The first `count` games of
    // `offsets` are offered, as `pdn_game_line` shows them, with `selected` chosen at first.
    int (*choose_game)(const char* text, const PdnOffsets& offsets, int count, int selected);
    // The dialog of the game's headers, which it changes only when the user agrees; true if he does.
    bool (*edit_headers)(GameHeaders& headers);

    // The clipboard's plain text, cut to `size` - 1 bytes and NUL-terminated. False if there is none; the
    // buffer is then untouched.
    bool (*read_clipboard)(char* buffer, size_t size);
    // False if the clipboard cannot be had.
    bool (*write_clipboard)(const char* text);
    // Opens a file in the program that the system has for it.
    void (*open_file)(const char* path);
    // Plays a sound file of the program's folder without waiting for its end.
    void (*play_sound)(const char* file);
    // Gives the user time to see the board. Does not let the timer run.
    void (*pause)(int milliseconds);

    // From any thread. Neither waits for the interface thread, nor for anything else.
    void (*post_search_picture)(SearchPicture picture);
    // Has `work` called with `argument` on the interface thread, in the order of the posts.
    void (*post)(void (*work)(int32_t argument), int32_t argument);
};

// Filled in by the front end before other threads run, and constant from then on.
extern Ui ui;

// The record without a screen.
Ui no_ui();

// The modal dialogs. Each takes its texts from the language file when it opens, and returns when the user has
// closed it; the timer runs meanwhile. What a dialog has to tell in a box goes through `ui`. Interface thread
// only.
#pragma once

#include <QWidget>
#include <cstdint>
#include <string>

#include "records/game_headers.h"
#include "records/pdn_game.h"

// Their numbers in language files.
enum DialogNumber : int32_t {
    DIALOG_MAKE_CONNECTION = 117,
    DIALOG_START_MATCH = 118,
    DIALOG_DATABASES = 119,
    DIALOG_GAME_TIME = 125,
    DIALOG_PARALLEL_SEARCH = 126,
    DIALOG_GAME_INFORMATION = 127,
    DIALOG_SELECT_GAME = 128,
    DIALOG_VERIFY_FILES = 130,
    DIALOG_FONT = 140,
};

// Gives the window and its controls the texts that the language's file has for the dialog. A control is found
// by its object name, "id_" and the number of its id: labels, buttons, boxes and group boxes take a text. An
// entry of a combobox has an id of its own where the combobox has the property "first_entry_id", the id of
// its first entry. Ids that the dialog does not have are passed over.
void translate_dialog(QWidget& window, int32_t dialog);

// The game clock's dialog; it chooses the game clock when its values are taken over. `settings` follow.
void game_time_dialog(QWidget* parent);
void parallel_search_dialog(QWidget* parent);
// The endgame databases and the size of the transposition table. `settings` follow, the next search follows
// them.
void databases_dialog(QWidget* parent);

// Checks the files of the open win/loss/draw database, which takes as long as the disk does.
void verify_files_dialog(QWidget* parent);
// There is a database to check, and the engine is idle.
bool can_verify_files();

// The other side's computer into `settings`; false if the user cancels.
bool make_connection_dialog(QWidget* parent);

// Takes over the choices and starts a match on the connection that is there, if the user agrees.
void start_match_dialog(QWidget* parent);

// True if the user agreed; otherwise the headers stay as they were.
bool game_information_dialog(QWidget* parent, GameHeaders& headers);

// One of the first `count` games of the text, by its number from 0; -1 if the user cancels.
int select_game_dialog(QWidget* parent, const char* text, const PdnOffsets& offsets, int count, int selected);

// The font of the panes into `settings`; false if the user cancels. Sizes are whole points in a range.
constexpr double LEAST_FONT_SIZE = 2;
constexpr double LARGEST_FONT_SIZE = 18;
bool font_dialog(QWidget* parent);

void about_box(QWidget* parent);

// Opens the manual of the current language in the program that the system has for it; if that cannot be
// started the user is told.
void open_help(QWidget* parent);

// Tells the user that a file cannot be opened in another program.
void tell_cannot_open(const std::string& path);

// Opens a file in the program that the system has for its kind. False if there is none. Tests put their own
// in its place.
extern bool (*open_document)(const std::string& path);

// The ids of the texts that game control shows; base/text_table.cpp has the English ones.
#pragma once

enum ControlTextId {
    TEXT_GAME_OVER = 133,
    TEXT_DRAW_DECLARED = 134,
    TEXT_SETUP_HINT = 154,
    // The texts of the modes, by the modes up to DXP_MODE; behind it stands the follower's.
    TEXT_FIRST_MODE = 188,
    TEXT_DXP_FOLLOWER = 195,
    TEXT_FIRST_ANALYZE_MODE = 196,
    TEXT_UNKNOWN = 200,
    // The states of the databases.
    TEXT_EGDB_UNINITIALIZED = 201,
    TEXT_EGDB_INITIALIZING = 202,
    TEXT_EGDB_READY = 203,
    TEXT_EGDB_DISABLED = 204,
    TEXT_EGDB_FAILED = 205,
    TEXT_EGDB = 206,
    TEXT_SEARCH_MODE = 207,
    TEXT_PONDERING_MOVE = 208,
    TEXT_PONDER_MOVE = 209,
    TEXT_PONDER_RESULT = 210,
    TEXT_NEW_GAME = 221,
    TEXT_NO_GAME_MOVES = 222,
    TEXT_INFO = 223,
    TEXT_SELECT_FIXED_TIME = 224,
    TEXT_SETTINGS_CONFLICT = 225,
    TEXT_TIME_IS_INFINITE = 226,
    TEXT_CANNOT_OPEN_PDN = 227,
    TEXT_ERROR_PARSING_PDN = 228,
    TEXT_TIME_CHANGED = 229,
    // The titles of the panes.
    TEXT_GAME_PANE = 241,
    TEXT_STATUS_PANE = 242,
    TEXT_PONDER_PANE = 243,
    TEXT_DXP_PANE = 244,
    TEXT_CLOCK_PANE = 245,
    TEXT_GAMES_READ = 312,
    TEXT_GAME_NOT_WRITTEN = 314,
};

// Room for any of them in any language.
constexpr int CONTROL_TEXT_SIZE = 300;

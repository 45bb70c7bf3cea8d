// The commands that analyse the game on the board, or all games of a file. Each position is searched for the
// fixed time, and the text of its search is kept as a comment behind the move that was played there. Each
// game is written when its last position has been searched.
//
// The searches are those of the search thread: a command starts the first, and the end of each reaches
// `analysis_step` through the hooks of the modes, which starts the next. The board follows, and the game that
// was on it and is analysed is whole again when the mode is left. Interface thread only.
#pragma once

#include <cstdint>
#include <string>

#include "records/pdn_game.h"
#include "records/pdn_replay.h"

// By their ids in the menu and in language files.
enum AnalyzeCommand : int32_t {
    COMMAND_ANALYZE_GAME = 40110,
    COMMAND_ANALYZE_PDN = 40111,
    COMMAND_ANALYZE_GAME_ALLSCORES = 40114,
    COMMAND_ANALYZE_PDN_ALLSCORES = 40115,
};

struct Analysis {
    PdnTable analysis_games;
    int32_t analysis_game_index = 0;
    // Nodes of the game at the index: the move or embedded FEN just played, null at the start of the game;
    // and the next one, null at the end.
    PdnNode* analysis_prev_node = nullptr;
    PdnNode* analysis_next_node = nullptr;
    ReplayState analysis_state;  // the position that is searched
    std::string analysis_path;   // of the file that the games are written to
    bool write_failed = false;   // a game is not in it, or not as a whole
};
extern Analysis analysis;

// Where the games go. A front end may put its own in; the default writes them to `analysis_path`, anew for
// each command, and at the end has the file opened for the user, or tells him that it could not be written.
struct AnalysisOutput {
    void (*begin)();
    // The game at the index, with the flags of pdn_write.h.
    void (*write_game)(const PdnTable& games, uint32_t flags, int index);
    void (*finish)();  // behind the last game; not when the analysis is cancelled
    // The file of that path would be lost to the output, and is not analysed.
    bool (*replaces)(const std::string& path) = [](const std::string&) { return false; };
};
AnalysisOutput file_analysis_output();
extern AnalysisOutput analysis_output;

// Runs the command of an id. False if the id is none of the above.
bool run_analyze_command(int32_t id);

// Each does nothing in the modes in which its menu entry is disabled.
void analyze_game_command(bool all_scores);
void analyze_pdn_command(bool all_scores);

// The search of the position on the board has ended: keeps its text and goes on.
void analysis_step();

// Forgets the games. An analysis that runs does not go on.
void free_analysis_games();

#include "cli/play_commands.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "base/clock.h"
#include "base/files.h"
#include "cli/game_console.h"
#include "cli/play_screen.h"
#include "cli/typed_move.h"
#include "control/analyze_games.h"
#include "control/game.h"
#include "control/game_commands.h"
#include "control/game_flow.h"
#include "control/load_save.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "core/notation.h"
#include "records/fen.h"
#include "records/game_headers.h"

PlayCommands play_commands;

namespace {

using Words = std::vector<std::string>;

struct CommandRow {
    const char* name;
    size_t least, most;  // words behind the name
    bool at_once;
    void (*run)(const Words& words);  // the name is the first
    const char* usage;
    const char* help;
};
extern const CommandRow COMMANDS[];
const CommandRow* find_command(const std::string& name);

constexpr size_t ANY_WORDS = 1000;

Words split(const std::string& line) {
    Words words;
    size_t at = 0;
    while ((at = line.find_first_not_of(" \t", at)) != std::string::npos) {
        const size_t end = std::min(line.find_first_of(" \t", at), line.size());
        words.push_back(line.substr(at, end - at));
        at = end;
    }
    return words;
}

std::string join(const Words& words, size_t first) {
    std::string text;
    for (size_t i = first; i < words.size(); ++i) text.append(i > first ? " " : "").append(words[i]);
    return text;
}

// A positive number of the user's, or 0 where that may be. False if it is no such number, which he is told.
bool read_number(const std::string& word, double& number, bool may_be_zero = false) {
    char* end = nullptr;
    number = std::strtod(word.c_str(), &end);
    const bool is_number = end != word.c_str() && !*end;
    if (is_number && (number > 0 || (may_be_zero && number == 0)) && number <= 1e6) return true;
    complain("not a number that can be used: %.50s", word.c_str());
    return false;
}

// How often a step is to be made, 1 if nothing is said; 0 if it is no number.
int read_count(const Words& words) {
    double count = 1;
    if (words.size() > 1 && !read_number(words[1], count)) return 0;
    return static_cast<int>(count);
}

void step(const Words& words, void (*command)(), const char* nothing) {
    for (int i = read_count(words); i > 0; --i) {
        const int before = game.history_count;
        command();
        if (game.history_count != before) continue;
        complain("%s", is_stepping_mode(game.gui_mode) ? nothing : "not in this mode");
        return;
    }
}

void play_typed_move(const std::string& line) {
    if (!is_stepping_mode(game.gui_mode) || !user_may_move()) {
        complain("you cannot move now");
        return;
    }
    std::string problem;
    const int index = find_typed_move(line, game.board, game.board_side, problem);
    if (index < 0) {
        complain("%s", problem.c_str());
        return;
    }
    const int count = game.history_count;
    make_user_move(index);
    play_commands.engine_moves_behind = std::min(count + 1, MAX_HISTORY);
}

void let_engine_move(const Words&) {
    if (real_search_runs())
        complain("the engine is searching");
    else if (game.gui_mode == NORMAL_MODE || is_analysis_mode(game.gui_mode))
        search_button_command();
    else
        complain("not in this mode");
}

void stop_engine(const Words&) {
    if (real_search_runs())
        search_button_command();
    else
        complain("the engine is not searching");
}

void setup_position(const Words& words) {
    const std::string fen = join(words, 1);
    Position position;
    int side = WHITE;
    if (fen_to_position(fen.c_str(), position, side) != 0 || !is_legal_setup(position)) {
        complain("not a position: %.200s", fen.c_str());
        return;
    }
    play_screen.clipboard = fen;
    paste_command();
}

void print_fen(const Words&) {
    char fen[FEN_TEXT_SIZE];
    position_to_fen(game.board, game.board_side, fen);
    say("%s", fen);
}

void copy_text(const Words& words) {
    const bool position = words.size() > 1 && words[1] == "position";
    if (words.size() > 1 && !position && words[1] != "game") {
        complain("copy what? game or position");
        return;
    }
    position ? copy_position_command() : copy_game_command();
}

void paste_text(const Words& words) {
    if (words.size() > 1) {
        const std::string path = path_of_user(join(words, 1));
        std::string text;
        if (read_file(path, text) != 0) {
            complain("cannot read %s", path.c_str());
            return;
        }
        play_screen.clipboard = text;
    }
    paste_command();
}

void change_mode(const Words& words) {
    if (!set_mode_by_name(words[1])) complain("no such mode: %.50s", words[1].c_str());
}

void change_time(const Words& words) {
    double seconds = 0;
    if (words[1] == "infinite")
        set_time_control(TIME_INFINITE);
    else if (read_number(words[1], seconds))
        set_time_per_move(seconds);
}

void set_clock_numbers(const Words& words) {
    GameClockFields fields = game_clock_fields();
    const bool increment = words[1] == "increment";
    const size_t first = increment ? 2 : 1;
    double a = 0, b = 0;
    if (words.size() < first + 2) {
        complain("clock MOVES MINUTES, or clock increment INITIAL INCREMENT");
        return;
    }
    if (!read_number(words[first], a) || !read_number(words[first + 1], b, increment)) return;
    if (increment) {
        fields.initial_seconds = a;
        fields.increment_seconds = b;
    } else {
        fields.moves = static_cast<int32_t>(a);
        fields.minutes = b;
    }
    if (set_game_clock(fields) != 0) {
        complain("the average time per move is too short");
        return;
    }
    settings2.increment_mode = increment;
    reset_game_clock();
}

void change_clock(const Words& words) {
    if (words.size() == 1) {
        char text[PANE_TEXT_SIZE];
        clock_pane_text(text, sizeof text);
        say("%s", text);
    } else if (words[1] == "start") {
        clock_start_command();
    } else if (words[1] == "stop") {
        clock_stop_command();
    } else if (words[1] == "reset") {
        clock_reset_command();
    } else {
        set_clock_numbers(words);
    }
}

void change_pondering(const Words& words) {
    if (words[1] != "on" && words[1] != "off") {
        complain("ponder on, or ponder off");
        return;
    }
    if ((words[1] == "on") == (settings.pondering_on != 0)) return;
    pondering_command();
    if (words[1] == "off" && search_thread.searching && !engine_time_runs()) discard_search();
}

void change_book(const Words& words) {
    if (!set_book_by_name(words[1])) complain("no such mode of the book: %.50s", words[1].c_str());
}

// Sets the file, which may be followed by one word more. Returns that word.
std::string take_file(const Words& words, bool word_follows) {
    Words file = words;
    std::string last;
    if (word_follows && file.size() > 2) {
        last = file.back();
        file.pop_back();
    }
    play_screen.chosen_file = path_of_user(join(file, 1));
    return last;
}

void load_file(const Words& words) {
    const bool numbered =
        words.size() > 2 && words.back().find_first_not_of("0123456789") == std::string::npos;
    const std::string number = take_file(words, numbered);
    double n = 0;
    if (!number.empty() && !read_number(number, n)) return;
    play_screen.chosen_game = static_cast<int>(n) - 1;
    load_command();
}

void save_file(const Words& words) {
    take_file(words, false);
    save_command();
}

void change_header(const Words& words) {
    if (words.size() == 1) {
        const GameHeaders& h = game.headers;
        say("Event \"%s\" Date \"%s\" White \"%s\" Black \"%s\" Result \"%s\"", h.event.data(), h.date.data(),
            h.white.data(), h.black.data(), result_string(h.result));
        return;
    }
    std::string value = "\"";
    value.append(join(words, 2)).append("\"");
    const bool is_result = strcasecmp(words[1].c_str(), "Result") == 0;
    if (is_result && value != "\"*\"" && pdn_result_code(value.c_str()) == RESULT_UNKNOWN)
        complain("no result: %.50s", join(words, 2).c_str());
    else if (!set_game_header(game.headers, words[1].c_str(), value.c_str()))
        complain("no header of a game: %.50s", words[1].c_str());
}

void give_hint(const Words&) {
    if (engine_time_runs()) {
        complain("the engine is searching");
        return;
    }
    if (search_thread.searching) {
        discard_search();
        timer_tick();
    }
    Move reply{};
    char text[MOVE_TEXT_SIZE] = "";
    if (is_legal_setup(game.board) && predict_reply(reply))
        full_move_text(game.board, reply, game.board_side, text);
    say("hint %s", *text ? text : "none");
}

void analyze_game(const Words& words) {
    if (words.size() > 1 && words[1] != "allscores")
        complain("analyze, or analyze allscores");
    else
        analyze_game_command(words.size() > 1);
}

void analyze_file(const Words& words) {
    const bool all_scores = words.size() > 2 && words.back() == "allscores";
    take_file(words, all_scores);
    analyze_pdn_command(all_scores);
}

void cancel_analysis(const Words&) {
    if (is_analyze_mode(game.gui_mode))
        cancel_analyze_command();
    else
        complain("no game is being analysed");
}

void print_status(const Words&) {
    char text[PANE_TEXT_SIZE];
    status_pane_text(text, sizeof text);
    std::string all = text;
    ponder_pane_text(text, sizeof text);
    all += text;
    clock_pane_text(text, sizeof text);
    all += text;
    std::erase(all, '\r');
    say("%s%s", all.c_str(), search_text());
}

void sleep_seconds(const Words& words) {
    double seconds = 0;
    if (read_number(words[1], seconds))
        play_commands.sleep_until = clock_ms() + static_cast<int64_t>(seconds * 1000);
}

void print_help(const Words&);

const CommandRow COMMANDS[] = {
    {"go", 0, 0, false, let_engine_move, "", "have the engine move, or start the analysis"},
    {"stop", 0, 0, true, stop_engine, "", "have the engine move now, or end the analysis"},
    {"back", 0, 1, false, [](const Words& w) { step(w, back_command, "this is the first position"); }, "[N]",
     "take back one move, or N"},
    {"forward", 0, 1, false, [](const Words& w) { step(w, forward_command, "this is the last position"); },
     "[N]", "play a move forward again, or N"},
    {"start", 0, 0, false, [](const Words&) { back_to_start_command(); }, "", "go back to the start"},
    {"end", 0, 0, false, [](const Words&) { forward_to_end_command(); }, "", "go forward to the end"},
    {"new", 0, 0, false, [](const Words&) { new_game_command(); }, "", "start a new game"},
    {"side", 0, 0, false, [](const Words&) { change_side_command(); }, "", "give the other side the move"},
    {"setup", 1, ANY_WORDS, false, setup_position, "FEN", "set up a position"},
    {"board", 0, 0, false, [](const Words&) { print_board(); }, "", "print the board"},
    {"fen", 0, 0, false, print_fen, "", "print the position as FEN"},
    {"moves", 0, 0, false, [](const Words&) { print_legal_moves(); }, "", "print the legal moves"},
    {"game", 0, 0, false, [](const Words&) { say("%s", play_screen.game_text.c_str()); }, "",
     "print the moves of the game"},
    {"copy", 0, 1, false, copy_text, "[game|position]", "print the game or the position and keep the text"},
    {"paste", 0, ANY_WORDS, false, paste_text, "[FILE]", "take the game or position of that text, or a file"},
    {"mode", 1, 1, true, change_mode, "MODE", "normal, twoplayers, analysis, allscores or autoplay"},
    {"time", 1, 1, false, change_time, "SECONDS", "time for each move; or infinite"},
    {"clock", 0, 3, false, change_clock, "...",
     "start, stop, reset; MOVES MINUTES or increment INITIAL INCREMENT to play by it"},
    {"ponder", 1, 1, false, change_pondering, "on|off", "think in the user's time"},
    {"book", 1, 1, false, change_book, "MODE", "off, all, good or best"},
    {"load", 1, ANY_WORDS, false, load_file, "FILE [N]", "load game N of a PDN file"},
    {"save", 1, ANY_WORDS, false, save_file, "FILE", "append the game to a PDN file"},
    {"header", 0, ANY_WORDS, false, change_header, "[KEY VALUE]", "Event, Date, White, Black or Result"},
    {"hint", 0, 0, false, give_hint, "", "the move that the engine expects"},
    {"analyze", 0, 1, false, analyze_game, "[allscores]", "analyse the game move by move, into a file"},
    {"analyzepdn", 1, ANY_WORDS, false, analyze_file, "FILE [allscores]", "analyse all games of a file"},
    {"cancel", 0, 0, true, cancel_analysis, "", "end the analysis of games"},
    {"status", 0, 0, true, print_status, "", "print what the engine is doing"},
    {"wait", 0, 0, true, [](const Words&) { play_commands.waiting = true; }, "",
     "read no more until no search runs"},
    {"sleep", 1, 1, true, sleep_seconds, "SECONDS", "read no more for some time"},
    {"help", 0, 0, true, print_help, "", "print this"},
    {"quit", 0, 0, true, [](const Words&) { play_commands.quit = true; }, "", "end the program"},
};

void print_help(const Words&) {
    say("Moves are typed as 32-28 or 19x30, with the squares between where two captures have the same "
        "ends.");
    for (const CommandRow& row : COMMANDS) {
        char usage[64];
        std::snprintf(usage, sizeof usage, "%s %s", row.name, row.usage);
        say("%-28s %s", usage, row.help);
    }
}

const CommandRow* find_command(const std::string& name) {
    for (const CommandRow& row : COMMANDS)
        if (name == row.name) return &row;
    return nullptr;
}

}  // namespace

bool runs_at_once(const std::string& line) {
    const Words words = split(line);
    if (words.empty()) return true;
    const CommandRow* const row = find_command(words[0]);
    return row && row->at_once;
}

void run_play_line(const std::string& line) {
    play_commands.engine_moves_behind = -1;
    const Words words = split(line);
    if (words.empty() || words[0][0] == '#') return;
    const CommandRow* const row = find_command(words[0]);
    if (row && words.size() - 1 >= row->least && words.size() - 1 <= row->most)
        row->run(words);
    else if (row)
        complain("usage: %s %s", row->name, row->usage);
    else if (words[0].find_first_of("0123456789") == 0)
        play_typed_move(line);
    else
        complain("unknown command: %.50s (help lists them)", words[0].c_str());
}

bool set_mode_by_name(const std::string& name) {
    const struct {
        const char* name;
        void (*command)();
    } modes[] = {{"normal", normal_command},
                 {"twoplayers", two_players_command},
                 {"analysis", analysis_command},
                 {"allscores", analysis_allscores_command},
                 {"autoplay", autoplay_command}};
    for (const auto& mode : modes) {
        if (name != mode.name) continue;
        mode.command();
        return true;
    }
    return false;
}

bool set_book_by_name(const std::string& name) {
    const char* const names[] = {"off", "all", "good", "best"};
    for (int32_t mode = 0; mode < 4; ++mode) {
        if (name != names[mode]) continue;
        settings.book_mode = mode;
        return true;
    }
    return false;
}

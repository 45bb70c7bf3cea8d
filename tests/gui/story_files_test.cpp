// Game files: one of many games, names in any script, files that are gone or cannot be written, and the
// analysis of a file.
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "control/analyze_games.h"
#include "control/game_commands.h"
#include "control/load_save.h"
#include "control/ui.h"
#include "core/notation.h"
#include "shell/menu.h"
#include "tests/gui/story_steps.h"

namespace {

constexpr int FILE_GAMES = 40;

// A game of `plies` moves of its own.
Positions made_game(size_t number, size_t plies) {
    Positions game = {START_POSITION};
    for (size_t ply = 0; ply < plies; ++ply) game.push_back(clickable_move(game.back(), number * 3 + ply));
    return game;
}

std::string pdn_of(const Positions& game, size_t number) {
    std::string text = "[Event \"Story\"]\n[White \"Player " + std::to_string(number) + "\"]\n";
    for (size_t i = 1; i < game.size(); ++i) {
        char move[MOVE_TEXT_SIZE];
        full_move_text(game[i - 1], move_to(game[i]), game[i - 1].side, move);
        if (i % 2 == 1) text += std::to_string(i / 2 + 1) + ". ";
        text += std::string(move) + " ";
    }
    return text + "*\n\n";
}

// Forty games of growing length.
std::string many_games() {
    std::string text;
    for (size_t number = 1; number <= FILE_GAMES; ++number) text += pdn_of(made_game(number, number), number);
    return text;
}

size_t times_in(const std::string& text, const std::string& part) {
    size_t times = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++times;
    return times;
}

}  // namespace

TEST_F(Story, OneGameOfFortyIsLoaded) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    const BoardPlaceOnScreen board = find_board(desk);
    const QString file = desk.path(QStringLiteral("forty.pdn"));
    ASSERT_TRUE(write_text(file, many_games()));
    ASSERT_TRUE(load_game(desk, file, 36));
    const Positions game = made_game(37, 37);
    EXPECT_TRUE(wait_for_position(desk, board, game.back()));
    press(desk, QStringLiteral("Left"));
    EXPECT_TRUE(wait_for_position(desk, board, game[game.size() - 2]));
    EXPECT_EQ(title_of(desk, desk.window).toStdString(), "Tessarin International(x64) 1.60b");

    const QString copy = desk.path(QStringLiteral("copy.pdn"));
    ASSERT_TRUE(save_game(desk, copy));
    ASSERT_TRUE(wait_until([&] { return !game_in_file(copy).empty(); }));
    EXPECT_TRUE(same_games(game, game_in_file(copy)));
    EXPECT_NE(file_text(copy).find("[White \"Player 37\"]"), std::string::npos) << file_text(copy);
    EXPECT_TRUE(close_program(desk));
}

TEST_F(Story, FilesHaveNamesInAnyScriptAndMayBeGone) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    const BoardPlaceOnScreen board = find_board(desk);
    const QString folder = desk.path(QString::fromUtf8("Шашки été"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString file = folder + QString::fromUtf8("/партия №1.pdn");
    const Positions game = made_game(5, 6);
    ASSERT_TRUE(write_text(file, pdn_of(game, 5)));
    ASSERT_TRUE(load_game(desk, file, 0));
    ASSERT_TRUE(wait_for_position(desk, board, game.back()));

    // The file goes between two loads; its name is not accepted and the game on the board stays.
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(choose(desk, COMMAND_LOAD));
    const QString dialog = wait_for_window(desk, QString::fromLatin1(LOAD_FILE_TITLE));
    ASSERT_FALSE(dialog.isEmpty());
    take_keyboard(desk, dialog);
    type_here(desk, desk.path(QStringLiteral("gone.pdn")));
    press_here(desk, QStringLiteral("Return"));
    wait_until_at_rest(desk);
    EXPECT_NE(find_board(desk), board) << "taken";
    press_here(desk, QStringLiteral("Escape"));
    // It may only have closed the list of names.
    wait_until_at_rest(desk);
    if (find_board(desk) != board) press_here(desk, QStringLiteral("Escape"));
    ASSERT_TRUE(wait_until_closed(desk, dialog));
    EXPECT_TRUE(wait_for_position(desk, board, game.back()));
    EXPECT_TRUE(close_program(desk));
}

// A disk without room for the game.
TEST_F(Story, AGameThatCannotBeWrittenIsTold) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    const QString full = desk.path(QStringLiteral("full.pdn"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), full));
    ASSERT_TRUE(save_game(desk, full));
    EXPECT_TRUE(answer_box(desk, QStringLiteral("Error"))) << "the game is not saved and nobody is told";
    EXPECT_TRUE(close_program(desk));
}

// The folder of the settings cannot be made.
TEST_F(Story, SettingsThatCannotBeKeptAreTold) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    ASSERT_TRUE(QDir().mkpath(desk.path(QStringLiteral("config"))));
    ASSERT_TRUE(write_text(desk.path(QStringLiteral("config/Quillorn")), "no folder"));
    ASSERT_TRUE(choose(desk, COMMAND_SAVE_SETTINGS));
    EXPECT_TRUE(answer_box(desk, QStringLiteral("Error")));
    EXPECT_TRUE(find_board(desk).is_found());
}

TEST_F(Story, AFileIsAnalysedAndAnotherAnalysisCancelled) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    // The engine is to search from the first move on.
    ASSERT_TRUE(choose(desk, COMMAND_BOOK_OFF));
    const BoardPlaceOnScreen board = find_board(desk);
    ASSERT_TRUE(choose(desk, TIME_ONE_SECOND));
    const QString small = desk.path(QStringLiteral("small.pdn"));
    const Positions game = made_game(2, 1);
    ASSERT_TRUE(write_text(small, pdn_of(made_game(1, 2), 1) + pdn_of(game, 2)));
    ASSERT_TRUE(choose(desk, COMMAND_ANALYZE_PDN));
    ASSERT_TRUE(answer_file_dialog(desk, QString::fromLatin1(LOAD_FILE_TITLE), small));
    // The result is opened when it is complete.
    const QString opened = desk.path(QStringLiteral("opened"));
    const QString result = desk.data_folder() + QStringLiteral("analysis.txt");
    ASSERT_TRUE(wait_until([&] { return QFileInfo::exists(opened); }, 2 * PATIENCE));
    EXPECT_NE(file_text(opened).find("analysis.txt"), std::string::npos) << file_text(opened);
    const std::string text = file_text(result);
    EXPECT_EQ(times_in(text, "{value="), 5U) << text;
    EXPECT_LT(text.find("Player 1"), text.find("Player 2")) << text;
    EXPECT_TRUE(wait_for_position(desk, board, game.back()));

    // No game of it is over soon.
    const QString file = desk.path(QStringLiteral("long.pdn"));
    ASSERT_TRUE(write_text(file, pdn_of(made_game(37, 37), 37) + pdn_of(made_game(38, 38), 38)));
    ASSERT_TRUE(choose(desk, COMMAND_ANALYZE_PDN));
    ASSERT_TRUE(answer_file_dialog(desk, QString::fromLatin1(LOAD_FILE_TITLE), file));
    ASSERT_TRUE(wait_until([&] { return button_shows(desk, COMMAND_SEARCH_BUTTON, PICTURE_STOP); }));
    ASSERT_TRUE(choose(desk, COMMAND_CANCEL_ANALYZE));
    EXPECT_TRUE(wait_until([&] { return button_shows(desk, COMMAND_SEARCH_BUTTON, PICTURE_GO); }));
    EXPECT_LT(times_in(file_text(result), "[Event"), 2U);
    EXPECT_EQ(times_in(file_text(opened), "analysis.txt"), 1U);
    EXPECT_TRUE(close_program(desk));
}

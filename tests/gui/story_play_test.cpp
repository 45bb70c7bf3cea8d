// Playing: against the engine, taking back, setting up a position and having it analysed.
#include "control/game_commands.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "shell/menu.h"
#include "tests/gui/story_steps.h"

namespace {

// Stops the search by its button. A click that has come to nothing when all is at rest was lost on its way.
bool stop_search_by_button(const Desk& desk) {
    const auto stopped = [&] { return button_shows(desk, COMMAND_SEARCH_BUTTON, PICTURE_GO); };
    for (int tries = 0; tries < 3 && !stopped(); ++tries) {
        click_button(desk, COMMAND_SEARCH_BUTTON);
        wait_until_at_rest(desk);
    }
    return stopped();
}

// Lets the engine answer; with `stop` it is told to move as soon as it searches.
bool have_an_answer(const Desk& desk, const BoardPlaceOnScreen& board, Positions& game, bool stop) {
    if (stop) {
        const Positions replies = successors(game.back());
        // A forced reply comes without a search.
        if (replies.size() > 1 &&
            !wait_until([&] { return button_shows(desk, COMMAND_SEARCH_BUTTON, PICTURE_STOP); }))
            return false;
        if (replies.size() > 1 && !stop_search_by_button(desk)) return false;
    }
    return wait_for_move(desk, board, game) &&
           wait_until([&] { return button_shows(desk, COMMAND_SEARCH_BUTTON, PICTURE_GO); });
}

}  // namespace

TEST_F(Story, TenMovesAgainstTheEngine) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    // The engine is to search from the first move on.
    ASSERT_TRUE(choose(desk, COMMAND_BOOK_OFF));
    const BoardPlaceOnScreen board = find_board(desk);
    ASSERT_TRUE(wait_for_position(desk, board, START_POSITION));
    ASSERT_TRUE(choose(desk, TIME_ONE_SECOND));
    Positions game = {START_POSITION};
    for (size_t move = 0; move < 10; ++move) {
        // From here on the engine is stopped by the button.
        if (move == 3) {
            ASSERT_TRUE(choose(desk, TIME_ONE_MINUTE));
        }
        const Position mine = clickable_move(game.back(), 7 * move);
        click_move(desk, board, game.back(), mine);
        game.push_back(mine);
        ASSERT_TRUE(have_an_answer(desk, board, game, move >= 3)) << "move " << move;
    }
    const QString file = desk.path(QStringLiteral("game.pdn"));
    ASSERT_TRUE(save_game(desk, file));
    ASSERT_TRUE(wait_until([&] { return game_in_file(file).size() >= game.size(); }));
    EXPECT_TRUE(same_games(game, game_in_file(file))) << file_text(file);
    EXPECT_TRUE(close_program(desk));
}

TEST_F(Story, MovesAreTakenBackAndTheGameChanged) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    const BoardPlaceOnScreen board = find_board(desk);
    ASSERT_TRUE(choose(desk, COMMAND_TWO_PLAYERS));
    Positions game = {START_POSITION};
    for (size_t move = 0; move < 8; ++move) {
        const Position made = clickable_move(game.back(), 5 * move);
        click_move(desk, board, game.back(), made);
        ASSERT_TRUE(wait_for_position(desk, board, made)) << "move " << move;
        game.push_back(made);
    }
    // With the toolbar and with keys, to the start and back to the middle.
    click_button(desk, COMMAND_BACK);
    ASSERT_TRUE(wait_for_position(desk, board, game[7]));
    press(desk, QStringLiteral("Left"));
    ASSERT_TRUE(wait_for_position(desk, board, game[6]));
    press(desk, QStringLiteral("Home"));
    ASSERT_TRUE(wait_for_position(desk, board, game[0]));
    click_button(desk, COMMAND_FORWARD_TO_END);
    ASSERT_TRUE(wait_for_position(desk, board, game[8]));
    click_button(desk, COMMAND_BACK_TO_START);
    ASSERT_TRUE(wait_for_position(desk, board, game[0]));
    for (size_t move = 1; move <= 4; ++move) {
        press(desk, QStringLiteral("Right"));
        ASSERT_TRUE(wait_for_position(desk, board, game[move]));
    }
    // Another move drops those that were ahead.
    game.resize(5);
    const Position other = clickable_move(game.back(), 3);
    click_move(desk, board, game.back(), other);
    ASSERT_TRUE(wait_for_position(desk, board, other));
    game.push_back(other);
    press(desk, QStringLiteral("End"));
    const QString file = desk.path(QStringLiteral("changed.pdn"));
    ASSERT_TRUE(save_game(desk, file));
    ASSERT_TRUE(wait_until([&] { return !game_in_file(file).empty(); }));
    EXPECT_TRUE(same_games(game, game_in_file(file))) << file_text(file);
    EXPECT_TRUE(wait_for_position(desk, board, other));
    EXPECT_TRUE(close_program(desk));
}

TEST_F(Story, APositionIsSetUpAnalysedAndStopped) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    const BoardPlaceOnScreen board = find_board(desk);
    ASSERT_TRUE(choose(desk, COMMAND_CLEAR_BOARD));
    ASSERT_TRUE(wait_for_position(desk, board, Position{}));
    // Left for black, right for white; twice for a king, at once where no man can stand.
    struct Click {
        int square;
        int button;
        int times;
    };
    for (const Click& click :
         {Click{8, 1, 1}, Click{13, 1, 1}, Click{46, 1, 1}, Click{24, 1, 2}, Click{33, 3, 1}, Click{38, 3, 1},
          Click{5, 3, 1}, Click{41, 3, 2}, Click{20, 3, 1}, Click{20, 1, 1}, Click{50, 1, 2}})
        for (int i = 0; i < click.times; ++i) click_square(desk, board, click.square, click.button);
    Position wanted;
    for (const int square : {8, 13, 46, 24, 20}) wanted.black |= set_of_square(square);
    for (const int square : {33, 38, 5, 41}) wanted.white |= set_of_square(square);
    for (const int square : {46, 24, 5, 41}) wanted.king |= set_of_square(square);
    ASSERT_TRUE(wait_for_position(desk, board, wanted));

    ASSERT_TRUE(choose(desk, TIME_INFINITE));
    ASSERT_TRUE(choose(desk, COMMAND_ANALYSIS));
    ASSERT_TRUE(wait_until([&] { return button_shows(desk, COMMAND_SEARCH_BUTTON, PICTURE_STOP); }));
    // The status line tells of the search.
    const QString log = desk.data_folder() + QStringLiteral("Tessarin.log");
    EXPECT_TRUE(wait_until([&] {
        return file_text(log).find("B:W") != std::string::npos ||
               file_text(log).find("W:W") != std::string::npos;
    })) << file_text(log);
    EXPECT_TRUE(button_shows(desk, COMMAND_SEARCH_BUTTON, PICTURE_STOP));
    ASSERT_TRUE(stop_search_by_button(desk));
    // An analysis plays nothing.
    EXPECT_TRUE(wait_for_position(desk, board, wanted));

    press(desk, QStringLiteral("alt+c"));
    const QString box = wait_for_window(desk, QStringLiteral("Position to clipboard"));
    ASSERT_FALSE(box.isEmpty());
    EXPECT_EQ(clipboard_of_screen().toStdString(), "[FEN \"W:WK5,33,38,K41:B8,13,20,K24,K46\"]\r\n*\r\n");
    EXPECT_TRUE(answer_box(desk, QStringLiteral("Position to clipboard")));
    EXPECT_TRUE(close_program(desk));
}

// Leaving never waits for a search.
TEST_F(Story, TheWindowIsClosedWhileTheEngineThinks) {
    Desk desk;
    ASSERT_TRUE(run(desk));
    // The engine is to search from the first move on.
    ASSERT_TRUE(choose(desk, COMMAND_BOOK_OFF));
    ASSERT_TRUE(choose(desk, TIME_INFINITE));
    click_button(desk, COMMAND_SEARCH_BUTTON);
    ASSERT_TRUE(wait_until([&] { return button_shows(desk, COMMAND_SEARCH_BUTTON, PICTURE_STOP); }));
    EXPECT_TRUE(close_program(desk));
}

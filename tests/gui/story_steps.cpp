#include "tests/gui/story_steps.h"

#include <QFile>
#include <algorithm>

#include "control/game_commands.h"
#include "control/load_save.h"
#include "core/movegen.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"

namespace {

const QString GAME_INFORMATION = QStringLiteral("Game Information");
const QString SELECT_GAME = QStringLiteral("Select Game");

size_t moves_between(const Positions& moves, const Position& before, int from, int to) {
    return static_cast<size_t>(std::count_if(moves.begin(), moves.end(), [&](const Position& after) {
        return square_left(before, after) == from && (to == 0 || square_reached(before, after) == to);
    }));
}

}  // namespace

void Story::SetUp() {
    const QString missing = missing_tools();
    if (!missing.isEmpty())
        GTEST_SKIP() << "not installed: " << missing.toStdString() << " (./test installs what tests need)";
    ASSERT_NE(test_screen, nullptr) << "Xvfb or openbox did not start";
}

Positions successors(const Position& position) {
    MoveList list;
    generate_moves(position, list, position.side);
    Positions after;
    for (const Move& move : list) after.push_back(position_after(move, position.side ^ 1));
    return after;
}

int square_left(const Position& before, const Position& after) {
    return square_number(pieces_of(before, before.side) & ~pieces_of(after, before.side));
}

int square_reached(const Position& before, const Position& after) {
    return square_number(pieces_of(after, before.side) & ~pieces_of(before, before.side));
}

void click_move(const Desk& desk, const BoardPlaceOnScreen& board, const Position& before,
                const Position& after) {
    const int from = square_left(before, after);
    click_square(desk, board, from);
    if (moves_between(successors(before), before, from, 0) > 1)
        click_square(desk, board, square_reached(before, after));
}

Position clickable_move(const Position& before, size_t number) {
    const Positions all = successors(before);
    Positions clear;
    for (const Position& after : all) {
        const int from = square_left(before, after);
        const int to = square_reached(before, after);
        if (from && to && moves_between(all, before, from, to) == 1) clear.push_back(after);
    }
    return clear.empty() ? before : clear[number % clear.size()];
}

bool wait_for_move(const Desk& desk, const BoardPlaceOnScreen& board, Positions& game) {
    const Positions possible = successors(game.back());
    return wait_until([&] {
        const std::optional<Position> seen = read_board(desk, board);
        if (!seen) return false;
        const auto found = std::find_if(possible.begin(), possible.end(),
                                        [&](const Position& move) { return same_pieces(move, *seen); });
        if (found == possible.end()) return false;
        game.push_back(*found);
        return true;
    });
}

bool save_game(const Desk& desk, const QString& path) {
    return choose(desk, COMMAND_SAVE) && answer_box(desk, GAME_INFORMATION) &&
           answer_file_dialog(desk, QString::fromLatin1(SAVE_FILE_TITLE), path);
}

bool load_game(const Desk& desk, const QString& path, int index) {
    if (!choose(desk, COMMAND_LOAD) || !answer_file_dialog(desk, QString::fromLatin1(LOAD_FILE_TITLE), path))
        return false;
    const QString dialog = wait_for_window(desk, SELECT_GAME);
    if (dialog.isEmpty()) return false;
    QStringList words = {QStringLiteral("windowactivate"), QStringLiteral("--sync"), dialog,
                         QStringLiteral("key"), QStringLiteral("Home")};
    for (int i = 0; i < index; ++i) words.append(QStringLiteral("Down"));
    xdotool(desk, words << QStringLiteral("Return"));
    return wait_until_closed(desk, dialog);
}

Positions game_in_file(const QString& path, int index) {
    PdnTable games;
    if (pdn_read_file(path.toStdString(), games) != 0 || index >= pdn_game_count(games)) return {};
    ReplayState state;
    const auto position_of = [&] { return position_after(move_to(state.position), state.side); };
    PdnNode* node = pdn_start_position(games[static_cast<size_t>(index)].get(), state);
    Positions positions = {position_of()};
    while (node) {
        node = pdn_next_move(node, state);
        positions.push_back(position_of());
    }
    return positions;
}

std::string file_text(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

bool write_text(const QString& path, const std::string& text) {
    QFile file(path);
    const auto size = static_cast<qint64>(text.size());
    return file.open(QIODevice::WriteOnly) && file.write(text.data(), size) == size;
}

bool same_games(const Positions& a, const Positions& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Position& x, const Position& y) {
        return same_pieces(x, y) && x.side == y.side;
    });
}

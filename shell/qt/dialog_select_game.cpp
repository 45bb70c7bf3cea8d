// The list of the games of a text. A file can hold many thousands of them, so a line is made only when it is
// drawn, and the width of the list is found by adding up the widths of characters, each measured once.
#include <ui_dialog_select_game.h>

#include <QAbstractListModel>
#include <QFontMetrics>
#include <QHash>
#include <algorithm>

#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"

namespace {

// Around the text of a line, in pixels.
constexpr int LINE_MARGIN = 4;
constexpr int LINE_LEADING = 4;

class GameList : public QAbstractListModel {
  public:
    GameList(const char* text, const PdnOffsets& offsets, int count)
        : games_text(text), games_offsets(offsets), games(std::clamp(count, 0, pdn_game_count(offsets))) {}

    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : games; }

    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid() || index.row() >= games) return {};
        if (role == Qt::DisplayRole) return line(index.row());
        if (role == Qt::SizeHintRole) return line_size;
        return {};
    }

    // Makes all lines as large as the widest one is in this font.
    void measure(const QFontMetrics& metrics) {
        QHash<QChar, int> widths;
        int widest = 0;
        for (int row = 0; row < games; ++row) {
            int width = 0;
            for (const QChar c : line(row)) {
                auto known = widths.find(c);
                if (known == widths.end()) known = widths.insert(c, metrics.horizontalAdvance(c));
                width += *known;
            }
            widest = std::max(widest, width);
        }
        line_size = QSize(widest + 2 * LINE_MARGIN, metrics.height() + LINE_LEADING);
    }

  private:
    QString line(int row) const {
        char text[GAME_LINE_SIZE];
        pdn_game_line(games_text, games_offsets, row, text);
        return shown_text(text);
    }

    const char* games_text;
    const PdnOffsets& games_offsets;
    int games;
    QSize line_size;
};

void select_row(QListView& list, int row) {
    const QModelIndex index = list.model()->index(row, 0);
    list.setCurrentIndex(index);
    list.scrollTo(index, QAbstractItemView::PositionAtCenter);
}

}  // namespace

int select_game_dialog(QWidget* parent, const char* text, const PdnOffsets& offsets, int count,
                       int selected) {
    QDialog dialog(parent);
    forms::Ui::SelectGame form;
    form.setupUi(&dialog);
    QListView& list = *form.id_1028;
    GameList games(text, offsets, count);
    games.measure(QFontMetrics(list.font()));
    list.setModel(&games);
    list.setFocus();
    prepare_dialog(dialog, DIALOG_SELECT_GAME);
    QObject::connect(&list, &QListView::doubleClicked, &dialog, &QDialog::accept);
    // The list must have its size before it can bring a line into view.
    dialog.ensurePolished();
    dialog.layout()->activate();
    select_row(list, selected);
    if (dialog.exec() != QDialog::Accepted) return -1;
    return list.currentIndex().row();
}

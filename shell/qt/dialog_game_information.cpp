// The dialog of the game's headers.
#include <ui_dialog_game_information.h>

#include "control/game.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

void show_headers(const forms::Ui::GameInformation& form, const GameHeaders& headers) {
    show_field(*form.id_1025, headers.event);
    show_field(*form.id_1024, headers.date);
    show_field(*form.id_1023, headers.white);
    show_field(*form.id_1026, headers.black);
    if (!headers.date[0]) form.id_1024->setText(shown_text(today_text()));
    add_entry(*form.id_1027, RESULT_WHITE_WINS, QStringLiteral("White win"));
    add_entry(*form.id_1027, RESULT_BLACK_WINS, QStringLiteral("Black win"));
    add_entry(*form.id_1027, RESULT_DRAW, QStringLiteral("Draw"));
    add_entry(*form.id_1027, RESULT_UNKNOWN, QStringLiteral("Unknown"));
    choose_entry(*form.id_1027, headers.result);
    form.id_1025->setFocus();
    form.id_1025->selectAll();
}

}  // namespace

bool game_information_dialog(QWidget* parent, GameHeaders& headers) {
    QDialog dialog(parent);
    forms::Ui::GameInformation form;
    form.setupUi(&dialog);
    show_headers(form, headers);
    prepare_dialog(dialog, DIALOG_GAME_INFORMATION);
    if (dialog.exec() != QDialog::Accepted) return false;
    read_field(*form.id_1025, headers.event);
    read_field(*form.id_1024, headers.date);
    read_field(*form.id_1023, headers.white);
    read_field(*form.id_1026, headers.black);
    read_entry(*form.id_1027, headers.result);
    return true;
}

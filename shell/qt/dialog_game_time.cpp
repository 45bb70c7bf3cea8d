// The dialog of the game clock. Its box acts when it is clicked; all else is taken over on OK.
#include <ui_dialog_game_time.h>

#include "base/text.h"
#include "control/game.h"
#include "control/modes.h"
#include "control/settings.h"
#include "control/text_ids.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

constexpr int INITIAL_DECIMALS = 1;
constexpr int INCREMENT_DECIMALS = 3;
// Room for any number of minutes.
constexpr size_t MINUTES_TEXT_SIZE = 400;

void enable_fields(const forms::Ui::GameTime& form, bool increment_mode) {
    for (QWidget* const part : {static_cast<QWidget*>(form.id_1058), static_cast<QWidget*>(form.id_1036),
                                static_cast<QWidget*>(form.id_1103), static_cast<QWidget*>(form.id_1104)})
        part->setEnabled(increment_mode);
    for (QWidget* const part : {static_cast<QWidget*>(form.id_1017), static_cast<QWidget*>(form.id_1018),
                                static_cast<QWidget*>(form.id_1100), static_cast<QWidget*>(form.id_1101)})
        part->setEnabled(!increment_mode);
}

void show_fields(const forms::Ui::GameTime& form) {
    const GameClockFields fields = game_clock_fields();
    char minutes[MINUTES_TEXT_SIZE];
    clock_minutes_text(fields.minutes, minutes, sizeof minutes);
    form.id_1017->setText(QString::number(fields.moves));
    form.id_1018->setText(shown_text(minutes));
    form.id_1019->setText(QString::number(fields.operator_time));
    form.id_1058->setText(number_text(fields.initial_seconds, INITIAL_DECIMALS));
    form.id_1036->setText(number_text(fields.increment_seconds, INCREMENT_DECIMALS));
    const bool increment_mode = settings2.increment_mode != 0;
    form.id_1060->setChecked(increment_mode);
    enable_fields(form, increment_mode);
    QLineEdit* const first = increment_mode ? form.id_1058 : form.id_1017;
    first->setFocus();
    first->selectAll();
}

GameClockFields read_fields(const forms::Ui::GameTime& form) {
    GameClockFields fields;
    fields.moves = read_integer(*form.id_1017);
    fields.minutes = read_number(*form.id_1018);
    fields.operator_time = read_integer(*form.id_1019);
    fields.initial_seconds = read_number(*form.id_1058);
    fields.increment_seconds = read_number(*form.id_1036);
    return fields;
}

}  // namespace

void game_time_dialog(QWidget* parent) {
    QDialog dialog(parent);
    forms::Ui::GameTime form;
    form.setupUi(&dialog);
    prepare_dialog(dialog, DIALOG_GAME_TIME);
    show_fields(form);
    QObject::connect(form.id_1060, &QCheckBox::toggled, &dialog, [&form](bool checked) {
        if (game.gui_mode != DXP_MODE) settings2.increment_mode = checked;
        enable_fields(form, checked);
    });
    // A game over the network may have begun while the user chose; its time is not his to change.
    if (dialog.exec() != QDialog::Accepted || game.gui_mode == DXP_MODE) return;
    // One that has begun and ended meanwhile may have changed what the box chose.
    const bool increment_mode = form.id_1060->isChecked();
    if ((settings2.increment_mode != 0) != increment_mode) settings2.increment_mode = increment_mode;
    if (set_game_clock(read_fields(form))) {
        char text[CONTROL_TEXT_SIZE];
        get_text(TEXT_AVERAGE_TOO_SHORT, text, sizeof text);
        ui.message_box(text, DEFAULT_BOX_TITLE, ICON_ERROR);
        return;
    }
    update_menu();
}

// The dialog that starts a match. Two edits hold the time for a number of moves, or with the box the initial
// time and the increment; what was typed for the one is kept while the other is shown.
#include <ui_dialog_start_match.h>

#include <utility>

#include "control/load_save.h"
#include "control/program_flags.h"
#include "control/ui.h"
#include "dxp/connection.h"
#include "dxp/connection_thread.h"
#include "dxp/match.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

constexpr int INITIAL_DECIMALS = 1;
constexpr int INCREMENT_DECIMALS = 3;
// Room for any number of minutes.
constexpr size_t MINUTES_TEXT_SIZE = 400;
// As the settings' field for it.
constexpr size_t PATH_SIZE = sizeof settings2.match_ballot_file;

using Form = forms::Ui::StartMatch;

// The texts of the two edits.
struct TimeTexts {
    QString first;
    QString second;
};

struct MatchDialog {
    Form form;
    TimeTexts hidden;  // of the kind of time that is not shown
};

TimeTexts minutes_texts(const MatchFields& fields) {
    char minutes[MINUTES_TEXT_SIZE];
    match_minutes_text(fields.minutes, minutes, sizeof minutes);
    return {shown_text(minutes), QString::number(fields.moves)};
}

TimeTexts incremental_texts(const MatchFields& fields) {
    return {number_text(fields.initial_seconds, INITIAL_DECIMALS),
            number_text(fields.increment_seconds, INCREMENT_DECIMALS)};
}

void label_times(const Form& form, bool incremental) {
    form.id_1004->setVisible(!incremental);
    form.id_1003->setVisible(!incremental);
    form.id_1063->setVisible(incremental);
    form.id_1062->setVisible(incremental);
}

void change_kind_of_time(MatchDialog& dialog, bool incremental) {
    label_times(dialog.form, incremental);
    const TimeTexts shown{dialog.form.id_1002->text(), dialog.form.id_1001->text()};
    dialog.form.id_1002->setText(dialog.hidden.first);
    dialog.form.id_1001->setText(dialog.hidden.second);
    dialog.hidden = shown;
}

MatchOpenings chosen_openings(const Form& form) {
    int32_t openings = TWO_MOVE_OPENINGS;
    read_entry(*form.id_1037, openings);
    return static_cast<MatchOpenings>(openings);
}

void offer_resume(const Form& form) {
    form.id_1014->setChecked(false);
    form.id_1014->setEnabled(match_can_resume(chosen_openings(form)));
}

void show_fields(MatchDialog& dialog, const MatchFields& fields) {
    const Form& form = dialog.form;
    TimeTexts shown = minutes_texts(fields);
    dialog.hidden = incremental_texts(fields);
    if (fields.incremental) std::swap(shown, dialog.hidden);
    form.id_1002->setText(shown.first);
    form.id_1001->setText(shown.second);
    label_times(form, fields.incremental);
    form.id_1061->setChecked(fields.incremental);
    form.id_1061->setVisible(program_flags.autoconnect_enabled);
    form.id_1058->setText(QString::number(fields.repeats));
    add_entry(*form.id_1037, TWO_MOVE_OPENINGS, QStringLiteral("2-move ballots"));
    add_entry(*form.id_1037, THREE_MOVE_OPENINGS, QStringLiteral("3-move ballots"));
    add_entry(*form.id_1037, FILE_OPENINGS, QStringLiteral("read from PDN file"));
    choose_entry(*form.id_1037, fields.openings);
    form.id_1036->setText(QString::fromLocal8Bit(fields.ballot_file.c_str()));
    form.id_1036->setMaxLength(static_cast<int>(PATH_SIZE) - 1);
    offer_resume(form);
    form.id_1002->setFocus();
    form.id_1002->selectAll();
}

void browse(const Form& form) {
    std::string path;
    if (ui.choose_load_file(LOAD_FILE_TITLE, path))
        form.id_1036->setText(QString::fromLocal8Bit(path.c_str()));
}

void read_times(const Form& form, MatchFields& fields) {
    const double first = read_number(*form.id_1002);
    if (fields.incremental) {
        fields.initial_seconds = first;
        fields.increment_seconds = read_number(*form.id_1001);
    } else {
        fields.minutes = first;
        fields.moves = read_integer(*form.id_1001);
    }
}

MatchFields read_fields(const Form& form, const MatchFields& before) {
    MatchFields fields = before;
    fields.openings = chosen_openings(form);
    fields.ballot_file = form.id_1036->text().toLocal8Bit().toStdString();
    fields.incremental = form.id_1061->isChecked();
    read_times(form, fields);
    fields.repeats = read_integer(*form.id_1058);
    fields.resume = form.id_1014->isChecked();
    return fields;
}

}  // namespace

void start_match_dialog(QWidget* parent) {
    QDialog window(parent);
    MatchDialog dialog;
    const Form& form = dialog.form;
    dialog.form.setupUi(&window);
    const MatchFields before = match_fields();
    show_fields(dialog, before);
    prepare_dialog(window, DIALOG_START_MATCH);
    QObject::connect(form.id_1061, &QCheckBox::toggled, &window,
                     [&dialog](bool checked) { change_kind_of_time(dialog, checked); });
    QObject::connect(form.id_1037, &QComboBox::currentIndexChanged, &window, [&form] { offer_resume(form); });
    QObject::connect(form.id_1059, &QPushButton::clicked, &window, [&form] { browse(form); });
    const int32_t connection = dxp_connection_number();
    if (window.exec() != QDialog::Accepted) return;
    // The connection may have gone while the user chose, and another come, or the other side may have begun a
    // game.
    if (dxp_menu_state().start_match_enabled && dxp_connection_number() == connection)
        begin_match(read_fields(form, before));
}

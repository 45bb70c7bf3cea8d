// The dialog of the endgame databases and the transposition table. What is changed is followed by the next
// search. A folder that has been looked at or chosen is stored at once, also if the user cancels.
#include <ui_dialog_databases.h>

#include <QFileDialog>
#include <QLabel>
#include <QTimer>
#include <algorithm>
#include <array>

#include "control/database_settings.h"
#include "control/settings.h"
#include "control/ui.h"
#include "egdb/identify.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/file_choice.h"
#include "shell/qt/text.h"

namespace {

constexpr int OFFER_INTERVAL_MS = 50;
constexpr int MOST_BYTES_READ = 310;                                       // of an edit
constexpr const char* FOLDER_TITLE = "Choose the WLD database directory";  // for both folders
constexpr std::array<const char*, 2> INITIALIZATIONS = {"before search", "in parallel with search"};

// What is asked of a folder, and what the user is told of it.
struct FolderKind {
    bool mtc;
    const char* box_title;
    const char* found;
    const char* missing;
};
constexpr FolderKind WLD_KIND{false, "WLD Endgame Database Check", "WLD database found with %d pieces.",
                              "No WLD database found in '%s'"};
constexpr FolderKind MTC_KIND{true, "MTC Endgame Database Check", "MTC database found with %d pieces.",
                              "No MTC database found in '%s'"};

std::string stored_folder(const FolderKind& kind) {
    return std::string(setting_text(kind.mtc ? settings.mtc_folder : settings.wld_folder));
}

// What the user left alone stays to the byte, also where it cannot be shown as it is.
void store_folder(const FolderKind& kind, const QLineEdit& edit) {
    if (edit.text() == shown_text(stored_folder(kind))) return;
    std::array<char, MOST_BYTES_READ + 1> text{};
    read_field(edit, text.data(), text.size());
    (kind.mtc ? set_mtc_folder : set_wld_folder)(text.data());
}

void check_folder(const FolderKind& kind, const QLineEdit& edit) {
    store_folder(kind, edit);
    const std::string folder = stored_folder(kind);
    EgdbType type{};
    int32_t pieces = 0;
    const bool found = identify_egdb(folder, type, pieces) == 0 && (type == EGDB_MTC) == kind.mtc;
    QString text = text_in_language(found ? kind.found : kind.missing);
    if (found)
        text.replace(QStringLiteral("%d"), QString::number(pieces));
    else
        text.replace(QStringLiteral("%s"), shown_text(folder));
    ui.message_box(text.toUtf8().constData(), kind.box_title, found ? ICON_INFO : ICON_WARNING);
}

void browse(QWidget* parent, const FolderKind& kind, QLineEdit& edit) {
    QFileDialog dialog(parent, file_dialog_title(FOLDER_TITLE), edit.text());
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    dialog.resize(dialog.sizeHint());
    fit_to_screen(dialog);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    edit.setText(dialog.selectedFiles().constFirst());
    store_folder(kind, edit);
}

// The entry of no limit has a text, the others are numbers.
template <size_t N>
void add_limits(QComboBox& box, const std::array<int32_t, N>& limits) {
    for (const int32_t limit : limits)
        add_entry(box, limit, limit < 0 ? QStringLiteral("No limit") : QString::number(limit));
}

void show_fields(const forms::Ui::Databases& form) {
    for (const int32_t megabytes : OFFERED_HASH_MB)
        add_entry(*form.id_1005, megabytes, QString::number(megabytes));
    add_limits(*form.id_1009, OFFERED_MAX_PIECES);
    add_limits(*form.id_1010, OFFERED_MAX_KINGS);
    for (int32_t parallel = 0; parallel < 2; ++parallel)
        add_entry(*form.id_1014, parallel, shown_text(INITIALIZATIONS[static_cast<size_t>(parallel)]));
    choose_entry(*form.id_1005, settings.hash_mb);
    choose_entry(*form.id_1009, settings.wld_max_pieces);
    choose_entry(*form.id_1010, settings.wld_max_kings_8);
    choose_entry(*form.id_1014, settings.wld_parallel_init != 0);
    form.id_1008->setChecked(settings.wld_enable != 0);
    form.id_1012->setChecked(settings.mtc_enable != 0);
    form.id_1006->setText(QString::number(settings.wld_cache_mb));
    form.id_1007->setText(shown_text(stored_folder(WLD_KIND)));
    form.id_1016->setText(shown_text(stored_folder(MTC_KIND)));
    form.id_1005->setFocus();
}

// The fields of both groups begin at the same place, whatever the language.
void align_fields(const forms::Ui::Databases& form) {
    int widest = form.id_1106->sizeHint().width();
    for (const QLabel* const label : form.id_1150->findChildren<QLabel*>())
        widest = std::max(widest, label->sizeHint().width());
    for (QLabel* const label : {form.id_1101, form.id_1106}) label->setMinimumWidth(widest);
}

// A setting without an entry of its own is left alone.
void store_entry(const QComboBox& box, int32_t stored, void (*set)(int32_t number)) {
    read_entry(box, stored);
    set(stored);
}

void store_fields(const forms::Ui::Databases& form) {
    store_entry(*form.id_1005, settings.hash_mb, set_hash_mb);
    set_wld_enable(form.id_1008->isChecked());
    store_folder(WLD_KIND, *form.id_1007);
    set_wld_cache_mb(read_integer(*form.id_1006));
    store_entry(*form.id_1009, settings.wld_max_pieces, set_wld_max_pieces);
    store_entry(*form.id_1010, settings.wld_max_kings_8, set_wld_max_kings_8);
    set_wld_parallel_init(form.id_1014->currentIndex() == 1);
    set_mtc_enable(form.id_1012->isChecked());
    store_folder(MTC_KIND, *form.id_1016);
}

void connect_folder(QDialog& dialog, const FolderKind& kind, QLineEdit& edit, const QPushButton& check,
                    const QPushButton& choose) {
    QObject::connect(&check, &QPushButton::clicked, &dialog, [&] { check_folder(kind, edit); });
    QObject::connect(&choose, &QPushButton::clicked, &dialog, [&] { browse(&dialog, kind, edit); });
}

// A database may be opened, or a search begin and end, while the dialog is shown.
void offer_verification(QDialog& dialog, QPushButton& button) {
    const auto offer = [&button] { button.setEnabled(can_verify_files()); };
    auto* const timer = new QTimer(&dialog);
    QObject::connect(timer, &QTimer::timeout, &dialog, offer);
    timer->start(OFFER_INTERVAL_MS);
    offer();
    QObject::connect(&button, &QPushButton::clicked, &dialog, [&dialog] { verify_files_dialog(&dialog); });
}

}  // namespace

void databases_dialog(QWidget* parent) {
    QDialog dialog(parent);
    forms::Ui::Databases form;
    form.setupUi(&dialog);
    show_fields(form);
    prepare_dialog(dialog, DIALOG_DATABASES);
    align_fields(form);
    connect_folder(dialog, WLD_KIND, *form.id_1007, *form.id_1013, *form.id_1017);
    connect_folder(dialog, MTC_KIND, *form.id_1016, *form.id_1015, *form.id_1018);
    offer_verification(dialog, *form.id_1019);
    if (dialog.exec() == QDialog::Accepted) store_fields(form);
}

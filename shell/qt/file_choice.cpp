#include "shell/qt/file_choice.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QSplitter>
#include <QStandardPaths>
#include <QTreeView>

#include "base/text.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/text.h"
#include "shell/qt/toolkit_texts.h"

namespace {

struct ChosenFile {
    QString folder;
    QString name;
};
ChosenFile chosen_file;

// Where the user keeps his own files, before he has chosen one.
QString first_folder() {
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

// Room for whole names and dates, where the dialog is the toolkit's own.
void widen(QFileDialog& dialog) {
    dialog.resize(760, 480);
    fit_to_screen(dialog);
    if (auto* const splitter = dialog.findChild<QSplitter*>()) splitter->setSizes({150, 600});
    constexpr int SIZE_COLUMN = 1, DATE_COLUMN = 3;
    auto* const files = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
    for (const int column : {SIZE_COLUMN, DATE_COLUMN})
        if (files && files->header()->count() > column)
            files->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
}

QString dialog_text(int id) {
    return toolkit_speaks_language() ? program_text(id) : shown_text(built_in_text(id));
}

bool choose_file(QFileDialog& dialog, std::string& path) {
    widen(dialog);
    dialog.setNameFilters({dialog_text(TEXT_PDN_FILES) + QStringLiteral(" (*.pdn)"),
                           dialog_text(TEXT_ALL_FILES) + QStringLiteral(" (*)")});
    const bool known = !chosen_file.folder.isEmpty() && QFileInfo(chosen_file.folder).isDir();
    dialog.setDirectory(known ? chosen_file.folder : first_folder());
    if (!chosen_file.name.isEmpty()) dialog.selectFile(chosen_file.name);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
    const QFileInfo file(dialog.selectedFiles().constFirst());
    chosen_file = {file.absolutePath(), file.fileName()};
    path = QFile::encodeName(file.absoluteFilePath()).toStdString();
    return true;
}

}  // namespace

QString file_dialog_title(const char* title) {
    return toolkit_speaks_language() ? text_in_language(title) : shown_text(title);
}

bool choose_file_to_load(QWidget* parent, const char* title, std::string& path) {
    QFileDialog dialog(parent, file_dialog_title(title));
    dialog.setFileMode(QFileDialog::ExistingFile);
    return choose_file(dialog, path);
}

bool choose_file_to_save(QWidget* parent, const char* title, std::string& path) {
    QFileDialog dialog(parent, file_dialog_title(title));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setDefaultSuffix(QStringLiteral("pdn"));
    return choose_file(dialog, path);
}

void forget_chosen_file() { chosen_file.name.clear(); }

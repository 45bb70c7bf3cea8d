#include "shell/qt/file_choice.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QSplitter>
#include <QStandardPaths>

#include "shell/qt/text.h"

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
    if (auto* const splitter = dialog.findChild<QSplitter*>()) splitter->setSizes({150, 600});
}

bool choose_file(QFileDialog& dialog, std::string& path) {
    widen(dialog);
    dialog.setNameFilters({QStringLiteral("PDN Files (*.pdn)"), QStringLiteral("All Files (*)")});
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

bool choose_file_to_load(QWidget* parent, const char* title, std::string& path) {
    QFileDialog dialog(parent, shown_text(title));
    dialog.setFileMode(QFileDialog::ExistingFile);
    return choose_file(dialog, path);
}

bool choose_file_to_save(QWidget* parent, const char* title, std::string& path) {
    QFileDialog dialog(parent, shown_text(title));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setDefaultSuffix(QStringLiteral("pdn"));
    return choose_file(dialog, path);
}

void forget_chosen_file() { chosen_file.name.clear(); }

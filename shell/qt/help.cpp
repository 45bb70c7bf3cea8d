// The manual: a help file of the current language in the folder of languages, where there is one, or the
// pages that come with the program.
#include <QDesktopServices>
#include <QFile>
#include <QUrl>
#include <array>
#include <string_view>

#include "base/files.h"
#include "base/paths.h"
#include "base/program_paths.h"
#include "control/ui.h"
#include "shell/languages.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

constexpr const char* ENGLISH = "English";

struct ManualFolder {
    std::string_view language;
    const char* folder;
};
constexpr std::array<ManualFolder, LANGUAGES> MANUAL_FOLDERS{{{ENGLISH, "en"},
                                                              {"Dutch", "nl"},
                                                              {"French", "fr"},
                                                              {"Italian", "it"},
                                                              {"Portugese", "pt"},
                                                              {"Russian", "ru"}}};

std::string help_file(std::string_view language) {
    return program_paths.program_folder + "Languages/TessarinIntlHelp_" + std::string(language) + ".chm";
}

std::string manual_page(std::string_view language) {
    const char* folder = MANUAL_FOLDERS.front().folder;
    for (const ManualFolder& row : MANUAL_FOLDERS)
        if (row.language == language) folder = row.folder;
    return program_paths.program_folder + "manual/" + folder + "/index.html";
}

bool open_in_system(const std::string& path) {
    const QString file = QFile::decodeName(QByteArray::fromStdString(absolute_path(path)));
    return QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

}  // namespace

bool (*open_document)(const std::string& path) = open_in_system;

void tell_cannot_open(const std::string& path) {
    const QString text = program_text(TEXT_CANNOT_OPEN, shown_text(path));
    ui.message_box(text.toUtf8().constData(), DEFAULT_BOX_TITLE, ICON_WARNING);
}

void open_help(QWidget*) {
    const std::string_view language = language_name();
    const std::string candidates[] = {help_file(language), help_file(ENGLISH), manual_page(language),
                                      manual_page(ENGLISH)};
    // The last one is tried even if it is not there: it is the one that the user is told of.
    const std::string* chosen = candidates;
    while (chosen + 1 < std::end(candidates) && !can_read_file(*chosen)) ++chosen;
    if (can_read_file(*chosen) && open_document(*chosen)) return;
    tell_cannot_open(*chosen);
}

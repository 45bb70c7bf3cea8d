// The dialogs that choose a file of games. They open where the last file was. Interface thread only.
#pragma once

#include <QString>
#include <QWidget>
#include <string>

// False if the user cancels; `path` is then untouched.
bool choose_file_to_load(QWidget* parent, const char* title, std::string& path);
// Games are appended, so a file that is there is no question.
bool choose_file_to_save(QWidget* parent, const char* title, std::string& path);

// The title of a dialog for files, by its English words. Most of such a dialog is Qt's own: where that does
// not speak the user's language all of it is English, rather than half of it.
QString file_dialog_title(const char* title);

// Forgets the file that was chosen last; its folder stays.
void forget_chosen_file();

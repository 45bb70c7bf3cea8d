// The dialogs that choose a file of games. They open where the last file was. Interface thread only.
#pragma once

#include <QWidget>
#include <string>

// False if the user cancels; `path` is then untouched.
bool choose_file_to_load(QWidget* parent, const char* title, std::string& path);
// Games are appended, so a file that is there is no question.
bool choose_file_to_save(QWidget* parent, const char* title, std::string& path);

// Forgets the file that was chosen last; its folder stays.
void forget_chosen_file();

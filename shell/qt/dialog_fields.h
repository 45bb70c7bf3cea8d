// What the dialogs have in common: how a form becomes a dialog, and how its fields are filled and read. Texts
// that the user entered are UTF-8. Interface thread only.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QString>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "shell/qt/text.h"

// Names the OK and Cancel buttons of a dialog "id_1" and "id_2" and gives them their texts.
void name_buttons(QDialog& dialog);

// Readies a dialog that was set up from its form: its buttons, edits that are read-only, which are shown as
// such, and the texts that the language's file has for the dialog.
void prepare_dialog(QDialog& dialog, int32_t number);

// Makes a dialog no larger than its screen: what stands above its buttons scrolls then, unless the dialog has
// a size of its own, which is cut. Readying does so.
void fit_to_screen(QDialog& dialog);

// Titles a dialog that language files say nothing of by the menu's text for the command that opens it.
void take_command_title(QDialog& dialog, int32_t command);

// The whole number at the start of a text, behind blanks and a sign; 0 if there is none. What is too large
// becomes the largest of its sign.
int32_t read_integer(std::string_view text);
int32_t read_integer(const QLineEdit& edit);

// The same with a decimal point and an exponent; what is too large becomes the largest that is a number.
double read_number(std::string_view text);
double read_number(const QLineEdit& edit);

// A number with so many decimals and a point before them, in any language.
QString number_text(double number, int decimals);

// A field of a record in an edit. Read back it is as it was if the user left the text alone, otherwise the
// entered text, cut before the character that does not fit with the NUL.
template <size_t N>
void show_field(QLineEdit& edit, const std::array<char, N>& field) {
    edit.setText(shown_text(field.data()));
}
void read_field(const QLineEdit& edit, char* field, size_t size);
template <size_t N>
void read_field(const QLineEdit& edit, std::array<char, N>& field) {
    read_field(edit, field.data(), N);
}

// Adds an entry that stands for a number.
void add_entry(QComboBox& box, int32_t number, const QString& text);

// Chooses the entry that stands for the number; none if there is no such entry.
void choose_entry(QComboBox& box, int32_t number);

// Stores the number of the chosen entry; without one `number` stays as it is.
void read_entry(const QComboBox& box, int32_t& number);

// The texts that Qt brings itself, such as those of the dialog for files: they follow the language where the
// system has Qt's translation, and are English elsewhere. Interface thread only.
#pragma once

#include <QString>

// Takes Qt's translation for the current language, instead of the one before.
void follow_toolkit_language();

// Qt speaks the current language, as it always does in English.
bool toolkit_speaks_language();

// Takes the translation away again.
void end_toolkit_language();

// Where Qt's translations are. Tests put folders of their own in its place.
extern QString (*toolkit_texts_folder)();

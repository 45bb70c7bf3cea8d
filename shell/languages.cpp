#include "shell/languages.h"

const std::array<Language, LANGUAGES> language_table{{
    {40117, "English"},
    {40126, "Dutch"},
    {40127, "French"},
    {40129, "Italian"},
    {40128, "Portugese"},
    {40130, "Russian"},
}};

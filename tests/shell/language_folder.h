// A program folder with language files for one test; the language layer is taken away at its end.
#pragma once

#include <string>

#include "base/program_paths.h"
#include "base/text.h"
#include "control/settings.h"
#include "shell/languages.h"
#include "tests/base/scratch_folder.h"

constexpr int32_t DUTCH_ID = 40126;
constexpr int32_t FRENCH_ID = 40127;
constexpr int32_t PORTUGUESE_ID = 40128;
constexpr int32_t ITALIAN_ID = 40129;
constexpr int32_t RUSSIAN_ID = 40130;

class LanguageFolder {
  public:
    LanguageFolder() {
        clean();
        program_paths.program_folder = scratch.path;
        std::filesystem::create_directory(scratch.file("Languages"));
    }
    ~LanguageFolder() { clean(); }

    void write(const std::string& language, const std::string& content) const {
        write_content(scratch.file("Languages/" + language + ".lng"), content);
    }

    ScratchFolder scratch;

  private:
    static void clean() {
        reset_languages();
        program_paths = ProgramPaths{};
        settings = Settings{};
        settings2 = Settings2{};
    }
};

// A text of the program at its full length.
inline std::string text_of(int id) {
    char text[1000];
    get_text(id, text, sizeof text);
    return text;
}

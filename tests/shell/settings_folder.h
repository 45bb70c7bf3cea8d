// A settings folder for one test, with the settings as a new process has them.
#pragma once

#include <string>

#include "base/program_paths.h"
#include "shell/settings_store.h"
#include "tests/base/scratch_folder.h"
#include "tests/control/settings_images.h"

class SettingsFolder {
  public:
    SettingsFolder() {
        clean();
        program_paths.program_folder = scratch.path;
        program_paths.settings_folder = scratch.file("config/");
    }
    ~SettingsFolder() { clean(); }

    std::string file() const { return program_paths.settings_folder + "settings"; }
    std::string file2() const { return program_paths.settings_folder + "settings2"; }
    void write(const std::string& image, const std::string& image2) const {
        std::filesystem::create_directories(program_paths.settings_folder);
        write_content(file(), image);
        write_content(file2(), image2);
    }

    ScratchFolder scratch;  // the program's folder; "config/" in it is that of the settings

  private:
    static void clean() {
        settings = Settings{};
        settings2 = Settings2{};
        settings_were_reset = false;
        settings_hooks = no_settings_hooks();
        program_paths = ProgramPaths{};
    }
};

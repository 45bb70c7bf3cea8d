// Which manual is opened.
#include "shell/qt/dialogs.h"
#include "tests/gui/dialog_user.h"

namespace {

std::vector<std::string> opened;
bool can_open = true;

class Help : public DialogTest {
  protected:
    Help() {
        opened.clear();
        can_open = true;
        open_document = [](const std::string& path) {
            opened.push_back(path);
            return can_open;
        };
    }
    ~Help() override { open_document = in_system; }

    void speak(const std::string& name, int32_t id) const {
        DialogTest::speak(name, id, "[STRINGTABLE]\nID133=x\n");
    }
    std::string add(const std::string& name) const {
        const std::string path = languages.scratch.file(name);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        write_content(path, "manual");
        return path;
    }
    std::string help_opened() const {
        opened.clear();
        open_help(nullptr);
        return opened.size() == 1 ? opened[0] : std::to_string(opened.size()) + " files";
    }

  private:
    bool (*const in_system)(const std::string&) = open_document;
};

}  // namespace

TEST_F(Help, OpensTheHelpFileOfTheLanguage) {
    const std::string english = add("Languages/TessarinIntlHelp_English.chm");
    const std::string dutch = add("Languages/TessarinIntlHelp_Dutch.chm");
    const std::string portuguese = add("Languages/TessarinIntlHelp_Portugese.chm");
    add("manual/en/index.html");
    add("manual/nl/index.html");
    add("manual/ru/index.html");
    EXPECT_EQ(help_opened(), english);
    speak("Dutch", DUTCH_ID);
    EXPECT_EQ(help_opened(), dutch);
    speak("Portugese", PORTUGUESE_ID);
    EXPECT_EQ(help_opened(), portuguese);
    speak("Russian", RUSSIAN_ID);
    EXPECT_EQ(help_opened(), english) << "there is no Russian one";
    EXPECT_TRUE(shown_boxes.empty());
}

TEST_F(Help, WithoutHelpFilesOpensThePages) {
    struct Row {
        const char* name;
        int32_t id;
        const char* folder;
    };
    const Row rows[] = {{"English", ENGLISH_ID, "en"}, {"Dutch", DUTCH_ID, "nl"},
                        {"French", FRENCH_ID, "fr"},   {"Portugese", PORTUGUESE_ID, "pt"},
                        {"Italian", ITALIAN_ID, "it"}, {"Russian", RUSSIAN_ID, "ru"}};
    const std::string english = add("manual/en/index.html");
    for (const Row& row : rows) {
        speak(row.name, row.id);
        EXPECT_EQ(help_opened(), english) << row.name << " pages are not there yet";
        const std::string page = add(std::string("manual/") + row.folder + "/index.html");
        EXPECT_EQ(help_opened(), page);
    }
    settings2.language_id = 12345;
    EXPECT_EQ(help_opened(), english) << "no language of the table";
    EXPECT_TRUE(shown_boxes.empty());
}

TEST_F(Help, WhatCannotBeStartedIsTold) {
    const std::string page = add("manual/en/index.html");
    can_open = false;
    open_help(nullptr);
    ASSERT_EQ(shown_boxes.size(), 1u);
    EXPECT_EQ(opened.size(), 1u);
    EXPECT_EQ(shown_boxes[0].text, "Cannot open " + page);
    EXPECT_EQ(shown_boxes[0].title, DEFAULT_BOX_TITLE);
    const std::string help = add("Languages/TessarinIntlHelp_English.chm");
    open_help(nullptr);
    ASSERT_EQ(shown_boxes.size(), 2u);
    EXPECT_EQ(shown_boxes[1].text, "Cannot open " + help);
}

TEST_F(Help, WhatIsNotThereIsTold) {
    open_help(nullptr);
    ASSERT_EQ(shown_boxes.size(), 1u);
    EXPECT_EQ(shown_boxes[0].text, "Cannot open " + languages.scratch.file("manual/en/index.html"));
    EXPECT_TRUE(opened.empty()) << "nothing to start a program for";
}

TEST_F(Help, LongAndForeignPathsAreTold) {
    std::string folder = "Тессарин";
    for (int i = 0; i < 20; ++i) folder += "/a folder with a name";
    program_paths.program_folder = languages.scratch.file(folder + "/");
    open_help(nullptr);
    ASSERT_EQ(shown_boxes.size(), 1u);
    EXPECT_EQ(shown_boxes[0].text, "Cannot open " + program_paths.program_folder + "manual/en/index.html");
    const std::string page = add(folder + "/manual/en/index.html");
    EXPECT_EQ(help_opened(), page);
}

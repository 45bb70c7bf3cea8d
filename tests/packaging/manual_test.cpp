// The manual holds together: pages are well-formed and complete in each language, what they link to is there,
// and the menu is quoted as the program shows it.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "base/program_paths.h"
#include "shell/languages.h"
#include "tests/packaging/manual_pages.h"

namespace {

namespace fs = std::filesystem;

const fs::path MANUAL = fs::path(PROJECT_FOLDER) / "docs" / "manual";

struct ManualLanguage {
    const char* code;
    const char* name;  // of its language file
};
constexpr std::array<ManualLanguage, LANGUAGES> MANUAL_LANGUAGES{{{"en", "English"},
                                                                  {"nl", "Dutch"},
                                                                  {"fr", "French"},
                                                                  {"it", "Italian"},
                                                                  {"pt", "Portugese"},
                                                                  {"ru", "Russian"}}};

const std::string CONTENTS = "index";
// In the order in which they are turned over.
const std::vector<std::string> CHAPTERS{"start",           "play",     "undo",      "time",    "pondering",
                                        "modes",           "analysis", "setup",     "files",   "windows",
                                        "languages",       "book",     "databases", "network", "console",
                                        "troubleshooting", "rules",    "notation"};

std::vector<fs::path> files_with(const fs::path& folder, const std::string& extension) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file() && entry.path().extension() == extension) found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

fs::path page_path(const ManualLanguage& language, const std::string& page) {
    return MANUAL / language.code / (page + ".html");
}

// The language tag that the pages of a folder have: the Portuguese is that of Brazil.
std::string tag_of(const std::string& code) { return code == "pt" ? "pt-BR" : code; }

Page page_of(const fs::path& path) {
    return read_page(file_text(path), path.extension() == ".svg" ? Markup::SVG : Markup::HTML);
}

bool is_valid_utf8(const std::string& text) {
    for (size_t i = 0; i < text.size();) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const size_t length = byte < 0x80       ? 1
                              : byte >> 5 == 6  ? 2
                              : byte >> 4 == 14 ? 3
                              : byte >> 3 == 30 ? 4
                                                : 0;
        if (length == 0 || i + length > text.size()) return false;
        for (size_t k = 1; k < length; ++k)
            if ((static_cast<unsigned char>(text[i + k]) & 0xc0) != 0x80) return false;
        i += length;
    }
    return true;
}

// What a page refers to, as written.
std::vector<std::string> references(const Page& page) {
    std::vector<std::string> found;
    for (const Element& element : page.elements)
        for (const char* const key : {"href", "src"})
            if (element.attributes.contains(key)) found.push_back(attribute(element, key));
    return found;
}

struct Target {
    fs::path file;
    std::string fragment;
};

Target target_of(const fs::path& page, const std::string& reference) {
    const size_t hash = reference.find('#');
    const std::string file = reference.substr(0, hash);
    return {file.empty() ? page : (page.parent_path() / file).lexically_normal(),
            hash == std::string::npos ? "" : reference.substr(hash + 1)};
}

TEST(Manual, IsThereInEveryLanguage) {
    std::set<std::string> pages(CHAPTERS.begin(), CHAPTERS.end());
    pages.insert(CONTENTS);
    for (const ManualLanguage& language : MANUAL_LANGUAGES) {
        std::set<std::string> found;
        for (const fs::path& path : files_with(MANUAL / language.code, ".html"))
            found.insert(path.stem().string());
        EXPECT_EQ(found, pages) << language.code;
    }
}

TEST(Manual, PagesAreWellFormed) {
    for (const fs::path& path : files_with(MANUAL, ".html")) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(is_valid_utf8(file_text(path)));
        EXPECT_EQ(file_text(path).find("**"), std::string::npos) << "marks of another form of text";
        const Page page = page_of(path);
        for (const std::string& error : page.errors) ADD_FAILURE() << error;
        EXPECT_EQ(page.doctype, "html");
        ASSERT_FALSE(page.elements.empty());
        EXPECT_EQ(page.elements[0].name, "html");
        EXPECT_EQ(attribute(page.elements[0], "lang"), tag_of(path.parent_path().filename().string()));
        ASSERT_EQ(elements_named(page, "title").size(), 1U);
        EXPECT_FALSE(elements_named(page, "title")[0]->text.empty());
        EXPECT_EQ(elements_named(page, "h1").size(), 1U);
        std::vector<std::string> charsets;
        for (const Element* meta : elements_named(page, "meta"))
            if (meta->attributes.contains("charset")) charsets.push_back(attribute(*meta, "charset"));
        EXPECT_EQ(charsets, std::vector<std::string>{"utf-8"});
        std::vector<std::string> twice;
        ids_of(page, twice);
        for (const std::string& id : twice) ADD_FAILURE() << "two elements have the id " << id;
    }
}

TEST(Manual, DrawingsAreWellFormed) {
    const std::vector<fs::path> drawings = files_with(MANUAL, ".svg");
    EXPECT_FALSE(drawings.empty());
    for (const fs::path& path : drawings) {
        SCOPED_TRACE(path);
        const Page drawing = page_of(path);
        for (const std::string& error : drawing.errors) ADD_FAILURE() << error;
        ASSERT_FALSE(drawing.elements.empty());
        EXPECT_EQ(attribute(drawing.elements[0], "xmlns"), "http://www.w3.org/2000/svg");
        std::vector<std::string> twice;
        const std::set<std::string> ids = ids_of(drawing, twice);
        EXPECT_TRUE(twice.empty());
        for (const Element* use : elements_named(drawing, "use"))
            EXPECT_TRUE(ids.contains(attribute(*use, "href").substr(1))) << attribute(*use, "href");
    }
}

TEST(Manual, EveryReferenceLeadsSomewhere) {
    for (const fs::path& path : files_with(MANUAL, ".html")) {
        const Page page = page_of(path);
        for (const std::string& reference : references(page)) {
            SCOPED_TRACE(path.string() + " refers to " + reference);
            // The manual is read without a network.
            ASSERT_EQ(reference.find(':'), std::string::npos);
            const Target target = target_of(path, reference);
            ASSERT_TRUE(fs::is_regular_file(target.file));
            EXPECT_TRUE(target.file.string().starts_with(MANUAL.string() + "/"));
            if (target.fragment.empty()) continue;
            std::vector<std::string> twice;
            EXPECT_TRUE(ids_of(page_of(target.file), twice).contains(target.fragment));
        }
        for (const Element* image : elements_named(page, "img"))
            EXPECT_FALSE(attribute(*image, "alt").empty()) << path << ": a picture without words for it";
    }
}

// From the index of each language its pages are found, and all other files by some page.
TEST(Manual, NothingIsLost) {
    std::set<fs::path> referred;
    for (const fs::path& path : files_with(MANUAL, ".html"))
        for (const std::string& reference : references(page_of(path))) {
            const fs::path file = target_of(path, reference).file;
            // Pages are found in the contents, not only by turning over.
            if (path.stem() == "index" || file.stem() == "index" || file.extension() != ".html")
                referred.insert(file);
        }
    for (const auto& entry : fs::recursive_directory_iterator(MANUAL))
        EXPECT_TRUE(entry.is_directory() || referred.contains(entry.path())) << entry.path();
}

TEST(Manual, EachIndexLeadsToAllLanguages) {
    for (const ManualLanguage& language : MANUAL_LANGUAGES) {
        const Page page = page_of(MANUAL / language.code / "index.html");
        std::set<std::string> others;
        for (const Element* link : elements_named(page, "a")) {
            const std::string tag = attribute(*link, "hreflang");
            if (tag.empty()) continue;
            EXPECT_EQ(attribute(*link, "lang"), tag);
            others.insert(tag + " " + attribute(*link, "href"));
        }
        std::set<std::string> wanted;
        for (const ManualLanguage& other : MANUAL_LANGUAGES)
            if (&other != &language) wanted.insert(tag_of(other.code) + " ../" + other.code + "/index.html");
        EXPECT_EQ(others, wanted) << language.code;
    }
}

std::string heading_of(const fs::path& path) {
    const Page page = page_of(path);
    const auto headings = elements_named(page, "h1");
    return headings.empty() ? "" : headings[0]->text;
}

TEST(Manual, ChaptersAreCalledByTheirNames) {
    for (const ManualLanguage& language : MANUAL_LANGUAGES)
        for (size_t i = 0; i < CHAPTERS.size(); ++i) {
            const fs::path path = page_path(language, CHAPTERS[i]);
            SCOPED_TRACE(path);
            const Page page = page_of(path);
            ASSERT_FALSE(elements_named(page, "title").empty());
            EXPECT_EQ(elements_named(page, "title")[0]->text, heading_of(path) + " - Tessarin International");
            std::vector<std::string> turns, expected;
            for (const Element* link : elements_named(page, "a"))
                if (link->attributes.contains("rel"))
                    turns.push_back(attribute(*link, "rel") + " " + attribute(*link, "href") + " " +
                                    link->text);
            // The first one turns back to the contents, which each language calls in its own way.
            const std::string before = i ? CHAPTERS[i - 1] : CONTENTS;
            const std::string name = i ? heading_of(page_path(language, before)) : "";
            ASSERT_FALSE(turns.empty());
            expected.push_back("prev " + before + ".html ← " + name);
            if (i == 0) turns[0].resize(std::min(turns[0].size(), expected[0].size()));
            if (i + 1 < CHAPTERS.size())
                expected.push_back("next " + CHAPTERS[i + 1] + ".html " +
                                   heading_of(page_path(language, CHAPTERS[i + 1])) + " →");
            EXPECT_EQ(turns, expected);
        }
}

// Where the text of a page leads to, in the same language, in the order of the links.
std::vector<std::string> links_in_text(const Page& page) {
    std::vector<std::string> links;
    for (const Element* link : elements_named(page, "a")) {
        const std::string target = attribute(*link, "href");
        if (!target.starts_with("../") && !link->attributes.contains("rel")) links.push_back(target);
    }
    return links;
}

TEST(Manual, LanguagesAreBuiltAlike) {
    std::vector<std::string> pages = CHAPTERS;
    pages.push_back(CONTENTS);
    for (const std::string& name : pages) {
        const Page english = page_of(page_path(MANUAL_LANGUAGES[0], name));
        for (const ManualLanguage& language : MANUAL_LANGUAGES) {
            SCOPED_TRACE(std::string(language.code) + " " + name);
            const Page page = page_of(page_path(language, name));
            std::vector<std::string> twice;
            EXPECT_EQ(ids_of(page, twice), ids_of(english, twice));
            std::vector<std::string> links = links_in_text(page), expected = links_in_text(english);
            // The contents are in the same order; in a chapter the words of a language decide.
            if (name != CONTENTS)
                for (auto* const list : {&links, &expected}) std::sort(list->begin(), list->end());
            EXPECT_EQ(links, expected);
            if (name == CONTENTS) {
                EXPECT_EQ(elements_named(page, "h2").size(), elements_named(english, "h2").size());
            }
        }
    }
}

// The lines that show translators the form of a language file.
TEST(Manual, LanguageFilesAreQuotedAsTheyAre) {
    for (const ManualLanguage& language : MANUAL_LANGUAGES) {
        const Page page = page_of(page_path(language, "languages"));
        const auto quotations = elements_named(page, "pre");
        ASSERT_EQ(quotations.size(), 1U) << language.code;
        const fs::path file =
            fs::path(PROJECT_FOLDER) / "data" / "Languages" / (std::string(language.name) + ".lng");
        std::string text = file_text(file);
        std::erase(text, '\r');
        std::istringstream lines(quotations[0]->text);
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count)
            EXPECT_NE(text.find("\n" + line + "\n"), std::string::npos) << language.code << ": " << line;
        EXPECT_GT(count, 1);
    }
}

// Without the mark of the letter to press and the name of the key.
std::string plain_menu_text(std::string text) {
    text.erase(std::min(text.find('\t'), text.size()));
    std::erase(text, '&');
    return text;
}

// Runs of white space as one blank, as they are shown.
std::string on_one_line(const std::string& text) {
    std::string line;
    for (const char c : text)
        if (!std::isspace(static_cast<unsigned char>(c)))
            line += c;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    return line;
}

constexpr std::string_view STEP = " ▸ ";

void collect_menu_paths(const std::vector<MenuItem>& items, const std::string& before,
                        std::set<std::string>& paths) {
    for (const MenuItem& item : items) {
        if (item.id == MENU_SEPARATOR) continue;
        const std::string path = before + plain_menu_text(item.text);
        paths.insert(path);
        collect_menu_paths(item.items, path + std::string(STEP), paths);
    }
}

class ManualMenu : public testing::TestWithParam<ManualLanguage> {
  protected:
    void TearDown() override {
        reset_languages();
        program_paths = ProgramPaths{};
    }
};

TEST_P(ManualMenu, IsQuotedAsTheProgramShowsIt) {
    const ManualLanguage language = GetParam();
    const auto row = std::find_if(language_table.begin(), language_table.end(), [&](const Language& entry) {
        return entry.name == std::string(language.name);
    });
    ASSERT_NE(row, language_table.end());
    program_paths.program_folder = std::string(PROJECT_FOLDER) + "/data/";
    load_languages();
    ASSERT_TRUE(choose_language(row->id));
    std::vector<MenuItem> menu = built_in_menu();
    translate_menu(menu);
    std::set<std::string> paths;
    collect_menu_paths(menu, "", paths);

    int quotations = 0;
    for (const fs::path& path : files_with(MANUAL / language.code, ".html"))
        for (const Element& element : page_of(path).elements)
            if (attribute(element, "class") == "menu") {
                ++quotations;
                const std::string quoted = on_one_line(element.text);
                EXPECT_TRUE(paths.contains(quoted)) << path << ": " << quoted;
            }
    EXPECT_GT(quotations, 10);
}

INSTANTIATE_TEST_SUITE_P(Languages, ManualMenu, testing::ValuesIn(MANUAL_LANGUAGES),
                         [](const auto& test) { return std::string(test.param.code); });

// The reader of these tests itself.
TEST(ManualReader, TellsWhatIsWrong) {
    const auto errors = [](std::string_view text) { return read_page(text, Markup::HTML).errors.size(); };
    EXPECT_EQ(errors("<!doctype html>\n<p class=\"a\">x &amp; y<br>z</p>\n<!-- <b> -->"), 0U);
    EXPECT_EQ(errors("<p>x"), 1U);
    EXPECT_EQ(errors("<p><b>x</p></b>"), 2U);
    EXPECT_EQ(errors("<p>x & y</p>"), 1U);
    EXPECT_EQ(errors("<p>x &nonsense; y</p>"), 1U);
    EXPECT_EQ(errors("<p>x > y</p>"), 1U);
    EXPECT_EQ(errors("<p id=a>x</p>"), 3U);
    EXPECT_EQ(errors("<p id=\"a\" id=\"b\">x</p>"), 1U);
    EXPECT_EQ(errors("<p/>"), 2U);
    EXPECT_EQ(errors("x"), 1U);
    EXPECT_EQ(errors("<p>x</p"), 1U);
    EXPECT_EQ(errors("<!-- x"), 1U);
    EXPECT_EQ(read_page("<g><a/></g>", Markup::SVG).errors.size(), 0U);
    const Page page = read_page("<p title=\"&lt;\">a<b>b</b>&gt;</p>", Markup::HTML);
    EXPECT_EQ(page.elements[0].text, "ab>");
    EXPECT_EQ(attribute(page.elements[0], "title"), "<");
}

}  // namespace

// The rules that hold the source tree together: who may include whom, and how long a file may be. They are
// checked on the sources themselves, and on small trees that break them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int MAX_LINES = 600;

// The libraries that each folder stands on directly. What can be reached along these arrows may be included.
const std::map<std::string, std::set<std::string>> ARROWS = {
    {"base", {}},
    {"core", {"base"}},
    {"eval", {"core"}},
    {"egdb", {"eval"}},
    {"book", {"core"}},
    {"search", {"eval", "egdb", "book"}},
    {"records", {"core"}},
    {"control", {"search", "records"}},
    {"dxp", {"control"}},
    {"tools", {"search", "egdb", "book"}},
    {"shell", {"dxp", "tools"}},
    {"cli", {"shell", "dxp", "tools"}},
};

const std::set<std::string> FREE_FOLDERS = {"tests", "bench"};

bool reaches(const std::string& from, const std::string& to) {
    if (from == to) return true;
    const auto& next = ARROWS.at(from);
    return std::any_of(next.begin(), next.end(),
                       [&](const std::string& folder) { return reaches(folder, to); });
}

// Whether a file of `folder` may include the path.
bool may_include(const std::string& folder, const std::string& path) {
    const std::string target = path.substr(0, path.find('/'));
    if (target == path || !ARROWS.contains(target)) return false;  // includes go from the root
    if (folder == "cli" && path.starts_with("shell/qt/")) return false;
    return reaches(folder, target);
}

// The path of a line that includes in double quotes, or an empty text.
std::string included_path(std::string_view line) {
    const auto skip_blanks = [&] {
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    };
    skip_blanks();
    if (!line.starts_with('#')) return "";
    line.remove_prefix(1);
    skip_blanks();
    if (!line.starts_with("include")) return "";
    line.remove_prefix(7);
    skip_blanks();
    if (!line.starts_with('"')) return "";
    line.remove_prefix(1);
    return std::string(line.substr(0, line.find('"')));
}

bool is_source(const fs::path& path) {
    static const std::set<std::string> EXTENSIONS = {".h", ".cpp", ".c", ".cc", ".hpp", ".inc"};
    return EXTENSIONS.contains(path.extension().string());
}

struct Findings {
    std::vector<std::string> problems;
    int files = 0;
    int includes = 0;
};

void check_file(const fs::path& root, const fs::path& path, Findings& findings) {
    const std::string name = path.lexically_relative(root).generic_string();
    const std::string folder = name.substr(0, name.find('/'));
    ++findings.files;
    if (!ARROWS.contains(folder) && !FREE_FOLDERS.contains(folder))
        findings.problems.push_back(name + ": the folder has no place in the design");
    std::ifstream file(path);
    std::string line;
    int lines = 0;
    while (std::getline(file, line)) {
        ++lines;
        const std::string included = included_path(line);
        if (included.empty()) continue;
        ++findings.includes;
        if (ARROWS.contains(folder) && !may_include(folder, included))
            findings.problems.push_back(name + ": may not include " + included);
    }
    const bool table = path.filename().string().find("_table.") != std::string::npos;
    if (lines > MAX_LINES && !table) findings.problems.push_back(name + ": too long");
}

// Checks all sources below `root` but those in hidden folders and folders of builds.
Findings check_tree(const fs::path& root) {
    Findings findings;
    for (const fs::directory_entry& top : fs::directory_iterator(root)) {
        const std::string name = top.path().filename().string();
        if (!top.is_directory() || name.starts_with('.') || name.starts_with("build")) continue;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(top))
            if (entry.is_regular_file() && is_source(entry.path())) check_file(root, entry.path(), findings);
    }
    std::sort(findings.problems.begin(), findings.problems.end());
    return findings;
}

// A tree of files made for one test.
struct SmallTree {
    fs::path root;

    SmallTree() {
        std::string name = (fs::temp_directory_path() / "tessarin-tree-XXXXXX").string();
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        root = name;
    }
    ~SmallTree() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    SmallTree(const SmallTree&) = delete;
    SmallTree& operator=(const SmallTree&) = delete;

    void add(const std::string& name, const std::string& text) const {
        fs::create_directories((root / name).parent_path());
        std::ofstream(root / name) << text;
    }
    std::vector<std::string> problems() const { return check_tree(root).problems; }
};

using Texts = std::vector<std::string>;

}  // namespace

TEST(Architecture, TheSourcesKeepTheRules) {
    const Findings findings = check_tree(PROJECT_FOLDER);
    for (const std::string& problem : findings.problems) ADD_FAILURE() << problem;
    EXPECT_GT(findings.files, 40);
    EXPECT_GT(findings.includes, 100);
}

TEST(Architecture, ArrowsLeadNowhereUnknown) {
    for (const auto& [folder, targets] : ARROWS)
        for (const std::string& target : targets) {
            EXPECT_TRUE(ARROWS.contains(target)) << folder;
            EXPECT_FALSE(reaches(target, folder)) << folder << " and " << target << " stand on each other";
        }
}

TEST(Architecture, WhoMayIncludeWhom) {
    EXPECT_TRUE(may_include("core", "base/log.h"));
    EXPECT_TRUE(may_include("core", "core/board.h"));
    EXPECT_TRUE(may_include("search", "core/board.h"));
    EXPECT_TRUE(may_include("control", "base/log.h"));
    EXPECT_TRUE(may_include("cli", "tools/seed_weights.h"));
    EXPECT_TRUE(may_include("cli", "shell/start.h"));
    EXPECT_TRUE(may_include("shell", "shell/qt/window.h"));
    EXPECT_FALSE(may_include("cli", "shell/qt/window.h"));
    EXPECT_FALSE(may_include("base", "core/board.h"));
    EXPECT_FALSE(may_include("core", "eval/weights.h"));
    EXPECT_FALSE(may_include("book", "search/table.h"));
    EXPECT_FALSE(may_include("book", "eval/weights.h"));
    EXPECT_FALSE(may_include("egdb", "search/table.h"));
    EXPECT_FALSE(may_include("search", "records/fen.h"));
    EXPECT_FALSE(may_include("records", "eval/weights.h"));
    EXPECT_FALSE(may_include("control", "shell/start.h"));
    EXPECT_FALSE(may_include("tools", "records/fen.h"));
    EXPECT_FALSE(may_include("core", "tests/core/slow_generator.h"));
    EXPECT_FALSE(may_include("core", "board.h"));
    EXPECT_FALSE(may_include("core", "../base/log.h"));
}

TEST(Architecture, IncludeLinesAreFound) {
    EXPECT_EQ(included_path("#include \"core/board.h\""), "core/board.h");
    EXPECT_EQ(included_path("  #  include\t\"core/board.h\"  // why"), "core/board.h");
    EXPECT_EQ(included_path("#include <vector>"), "");
    EXPECT_EQ(included_path("// #include \"core/board.h\""), "");
    EXPECT_EQ(included_path(""), "");
}

TEST(Architecture, AWrongIncludeIsFound) {
    const SmallTree tree;
    tree.add("base/log.h", "#pragma once\n");
    tree.add("core/board.cpp", "#include \"base/log.h\"\n\n#include \"search/table.h\"\n#include <vector>\n");
    tree.add("tests/core/a.cpp", "#include \"search/table.h\"\n");
    tree.add("build/core/b.cpp", "#include \"search/table.h\"\n");
    EXPECT_EQ(tree.problems(), (Texts{"core/board.cpp: may not include search/table.h"}));
}

TEST(Architecture, AFolderWithoutAPlaceIsFound) {
    const SmallTree tree;
    tree.add("utils/strings.cpp", "int x;\n");
    tree.add("docs/notes.txt", "#include \"core/board.h\"\n");
    EXPECT_EQ(tree.problems(), (Texts{"utils/strings.cpp: the folder has no place in the design"}));
}

TEST(Architecture, ALongFileIsFound) {
    const SmallTree tree;
    std::string text;
    for (int i = 0; i < MAX_LINES; ++i) text += "int x;\n";
    tree.add("core/fits.cpp", text);
    tree.add("core/long.cpp", text + "int y;\n");
    tree.add("tests/core/long_test.cpp", text + "int y;\n");
    tree.add("core/values_table.cpp", text + text);
    EXPECT_EQ(tree.problems(), (Texts{"core/long.cpp: too long", "tests/core/long_test.cpp: too long"}));
}

#include "base/paths.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/files.h"
#include "base/program_paths.h"
#include "tests/base/scratch_folder.h"

TEST(UserFolders, FollowTheVariables) {
    ScratchEnvironment environment;
    environment.set("HOME", "/home/somebody");
    environment.set("XDG_DATA_HOME", std::nullopt);
    environment.set("XDG_CONFIG_HOME", std::nullopt);
    EXPECT_EQ(user_data_folder(), "/home/somebody/.local/share/");
    EXPECT_EQ(user_settings_folder(), "/home/somebody/.config/");
    environment.set("XDG_DATA_HOME", "/data");
    environment.set("XDG_CONFIG_HOME", "/settings/");
    EXPECT_EQ(user_data_folder(), "/data/");
    EXPECT_EQ(user_settings_folder(), "/settings/");
    // Empty and relative ones count as missing.
    for (const char* none : {"", "relative/folder", "./x"}) {
        environment.set("XDG_DATA_HOME", none);
        environment.set("XDG_CONFIG_HOME", none);
        EXPECT_EQ(user_data_folder(), "/home/somebody/.local/share/");
        EXPECT_EQ(user_settings_folder(), "/home/somebody/.config/");
    }
}

TEST(UserFolders, NoHome) {
    ScratchEnvironment environment;
    environment.set("XDG_DATA_HOME", std::nullopt);
    environment.set("XDG_CONFIG_HOME", std::nullopt);
    for (const char* none : {"", "relative"}) {
        environment.set("HOME", none);
        EXPECT_EQ(user_data_folder(), "");
        EXPECT_EQ(user_settings_folder(), "");
    }
    environment.set("XDG_DATA_HOME", "/data");
    EXPECT_EQ(user_data_folder(), "/data/");
}

TEST(UserFolders, WithoutTheVariableTheSystemKnowsTheHome) {
    const passwd* const user = getpwuid(getuid());
    if (!user) GTEST_SKIP() << "the system does not know this user";
    const std::string home = user->pw_dir;
    ScratchEnvironment environment;
    environment.set("XDG_DATA_HOME", std::nullopt);
    environment.set("HOME", std::nullopt);
    EXPECT_EQ(user_data_folder(), home + "/.local/share/");
}

TEST(UserFolders, RuntimeFolderIsOursAlone) {
    const ScratchFolder folder;
    ScratchEnvironment environment;
    const std::string fallback = "/tmp/tessarin-international-" + std::to_string(geteuid()) + "/";
    environment.set("XDG_RUNTIME_DIR", folder.path);
    EXPECT_EQ(user_runtime_folder(), folder.path);
    environment.set("XDG_RUNTIME_DIR", folder.path.substr(0, folder.path.size() - 1));
    EXPECT_EQ(user_runtime_folder(), folder.path);

    environment.set("XDG_RUNTIME_DIR", std::nullopt);
    EXPECT_EQ(user_runtime_folder(), fallback);
    struct stat status;
    ASSERT_EQ(lstat(fallback.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);

    // Not there, no folder, a link, and one that others write to.
    write_content(folder.file("file"), "");
    std::filesystem::create_directory(folder.file("open"));
    chmod(folder.file("open").c_str(), 0777);
    std::filesystem::create_directory(folder.file("mine"));
    std::filesystem::create_directory_symlink(folder.file("mine"), folder.file("link"));
    for (const char* name : {"missing", "file", "open", "link"}) {
        environment.set("XDG_RUNTIME_DIR", folder.file(name));
        EXPECT_EQ(user_runtime_folder(), fallback) << name;
    }
}

// Whoever owns the folder could take all numbers away, or let two copies have the same.
TEST(UserFolders, RuntimeFolderIsNotAnotherUsers) {
    if (geteuid() != 0) GTEST_SKIP() << "only the system's own user can give a folder away";
    const ScratchFolder folder;
    ScratchEnvironment environment;
    const std::string foreign = folder.file("foreign") + "/";
    std::filesystem::create_directory(foreign);
    chmod(foreign.c_str(), 0700);
    environment.set("XDG_RUNTIME_DIR", foreign);
    EXPECT_EQ(user_runtime_folder(), foreign);
    ASSERT_EQ(chown(foreign.c_str(), 65534, 65534), 0);
    EXPECT_NE(user_runtime_folder(), foreign);
}

TEST(BuildFolders, TheNamesAreCaseSensitive) {
    for (const char* path : {"/a/Debug/", "/a/Release/x/", "/MyDebugFolder/", "Release", "/a/b/xReleasey/"})
        EXPECT_TRUE(is_build_folder(path)) << path;
    for (const char* path :
         {"/a/debug/", "/a/release/", "/DEBUG/", "/RELEASE/", "/De/bug/", "", "/a/Releas/"})
        EXPECT_FALSE(is_build_folder(path)) << path;
}

TEST(Folders, AreMadeWithThoseAbove) {
    const ScratchFolder folder;
    const std::string deep = folder.file("a/b c/d/");
    EXPECT_FALSE(folder_exists(deep));
    EXPECT_TRUE(make_folders(deep));
    EXPECT_TRUE(folder_exists(deep));
    EXPECT_TRUE(make_folders(deep));
    EXPECT_TRUE(make_folders(folder.file("e")));
    struct stat status;
    ASSERT_EQ(stat(deep.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    write_content(folder.file("file"), "");
    EXPECT_FALSE(make_folders(folder.file("file")));
    EXPECT_FALSE(make_folders(folder.file("file/below")));
    EXPECT_FALSE(folder_exists(folder.file("file")));
    EXPECT_FALSE(make_folders(""));
}

TEST(Files, AreTheSameWhateverTheyAreCalled) {
    const ScratchFolder folder;
    write_content(folder.file("a"), "text");
    write_content(folder.file("copy"), "text");
    ASSERT_EQ(symlink(folder.file("a").c_str(), folder.file("link").c_str()), 0);
    ASSERT_EQ(link(folder.file("a").c_str(), folder.file("hard").c_str()), 0);
    for (const char* name : {"a", "./a", "link", "hard"})
        EXPECT_TRUE(same_file(folder.file("a"), folder.file(name))) << name;
    for (const char* name : {"copy", "missing", ""})
        EXPECT_FALSE(same_file(folder.file("a"), folder.file(name))) << name;
    EXPECT_FALSE(same_file(folder.file("missing"), folder.file("missing")));
    EXPECT_FALSE(same_file(folder.file("a"), ""));
}

TEST(Folders, WhatCanBeRead) {
    const ScratchFolder folder;
    write_content(folder.file("empty"), "");
    EXPECT_TRUE(can_read_file(folder.file("empty")));
    EXPECT_FALSE(can_read_file(folder.file("missing")));
    EXPECT_FALSE(can_read_file(folder.path));
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    can_read_file(folder.file("pipe"));  // comes back although nobody writes
}

TEST(ProgramPaths, OfTheFirstCopy) {
    const ProgramPaths paths = make_program_paths("/opt/t/", "/data/", 0);
    EXPECT_EQ(paths.program_folder, "/opt/t/");
    EXPECT_EQ(paths.data_folder, "/data/");
    EXPECT_EQ(paths.instance_number, 0);
    EXPECT_EQ(paths.instance_suffix, "");
    EXPECT_EQ(paths.log_path, "/data/Tessarin.log");
    EXPECT_EQ(paths.egdb_log_path, "/data/egdb.log");
    EXPECT_EQ(paths.window_title, "Tessarin International(x64) 1.60b");
    EXPECT_EQ(paths.short_name, "Tessarin 1.60b");
}

TEST(ProgramPaths, OfOtherCopies) {
    for (const int number : {1, 9, 10, 99}) {
        const std::string suffix = "[" + std::to_string(number) + "]";
        const ProgramPaths paths = make_program_paths("./", "", number);
        EXPECT_EQ(paths.instance_number, number);
        EXPECT_EQ(paths.instance_suffix, suffix);
        EXPECT_EQ(paths.log_path, "Tessarin" + suffix + ".log");  // no data folder: the current one
        EXPECT_EQ(paths.egdb_log_path, "egdb" + suffix + ".log");
        EXPECT_EQ(paths.window_title, "Tessarin International(x64)" + suffix + " 1.60b");
        EXPECT_EQ(paths.short_name, "Tessarin" + suffix + " 1.60b");
    }
}

TEST(ProgramPaths, FoldersBelowTheUsers) {
    EXPECT_EQ(program_folder_below("/data/"), "/data/Quillorn/Tessarin International/");
    EXPECT_EQ(program_folder_below(""), "");
}

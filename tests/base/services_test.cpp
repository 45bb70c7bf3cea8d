// The services of base/: log, files, texts, clock, memory, paths.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <thread>
#include <vector>

#include "base/child_process.h"
#include "base/clock.h"
#include "base/cpu.h"
#include "base/files.h"
#include "base/log.h"
#include "base/memory.h"
#include "base/paths.h"
#include "base/system_info.h"
#include "base/text.h"
#include "tests/base/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

bool replace_with(const std::string& path, const std::string& text) {
    return replace_file(path, text.data(), text.size()) == 0;
}

class Log : public testing::Test {
  protected:
    void SetUp() override { log_path = folder.file("test.log"); }
    void TearDown() override {
        log_path.clear();
        log_listener = nullptr;
    }
    ScratchFolder folder;
};

std::string heard;
void listen(const char* text) { heard += text; }

void wide_source(int id, char* buffer, size_t size) { std::snprintf(buffer, size, "text %d", id); }

}  // namespace

TEST_F(Log, AppendsAsItIs) {
    log_text("one %d %s\n");
    log_printf("two %d %s\n", 2, "x");
    log_text("");
    log_text("three");
    EXPECT_EQ(content_of(log_path), "one %d %s\ntwo 2 x\nthree");
}

TEST_F(Log, KeepsWhatIsThere) {
    ASSERT_TRUE(replace_with(log_path, "old\n"));
    log_text("new\n");
    EXPECT_EQ(content_of(log_path), "old\nnew\n");
}

// The file is opened anew for each text: one that was taken away in between comes back.
TEST_F(Log, KeepsNothingOpen) {
    log_text("one\n");
    ASSERT_EQ(unlink(log_path.c_str()), 0);
    log_text("two\n");
    EXPECT_EQ(content_of(log_path), "two\n");
    const auto open_files = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = open_files();
    for (int i = 0; i < 20; ++i) log_printf("%d\n", i);
    EXPECT_EQ(open_files(), before);
}

TEST_F(Log, IsSilentWhereItCannotWrite) {
    for (const char* path : {"", "/", "/nowhere/at/all.log"}) {
        log_path = path;
        log_text("lost\n");
        log_printf("%s\n", "lost");
    }
    EXPECT_FALSE(fs::exists("/nowhere"));
}

TEST_F(Log, CutsALongLine) {
    const std::string text(20000, 'x');
    log_printf("%s", text.c_str());
    EXPECT_EQ(content_of(log_path), std::string(8191, 'x'));
    ASSERT_EQ(unlink(log_path.c_str()), 0);
    log_text(text.c_str());  // a plain text is not formatted and so not cut
    EXPECT_EQ(content_of(log_path), text);
}

TEST_F(Log, TellsTheListenerToo) {
    heard.clear();
    log_listener = listen;
    log_text("a\n");
    log_printf("%d\n", 5);
    EXPECT_EQ(heard, "a\n5\n");
    EXPECT_EQ(content_of(log_path), "a\n5\n");
    log_path.clear();
    log_text("b\n");
    EXPECT_EQ(heard, "a\n5\nb\n");
}

TEST_F(Log, LinesOfThreadsAllArrive) {
    const auto write = [] {
        for (int i = 0; i < 200; ++i) log_printf("%s\n", "line");
    };
    std::thread other(write);
    write();
    other.join();
    const std::string text = content_of(log_path);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 400);
    EXPECT_EQ(text.size(), 400 * 5u);
}

TEST(Files, SizeAndContent) {
    const ScratchFolder folder;
    const std::string path = folder.file("a");
    const std::string bytes("one\0two\r\n\xff", 10);
    ASSERT_EQ(replace_file(path, bytes.data(), bytes.size()), 0);
    EXPECT_EQ(file_size(path), 10);
    std::string text = "before";
    EXPECT_EQ(read_file(path, text), 0);
    EXPECT_EQ(text, bytes);
}

TEST(Files, StatusesLeaveTheTextAsItWas) {
    const ScratchFolder folder;
    std::string text = "before";
    EXPECT_EQ(file_size(folder.file("missing")), -1);
    EXPECT_EQ(read_file(folder.file("missing"), text), 2);  // no size is a size below 1
    ASSERT_EQ(replace_file(folder.file("empty"), "", 0), 0);
    EXPECT_EQ(file_size(folder.file("empty")), 0);
    EXPECT_EQ(read_file(folder.file("empty"), text), 2);
    EXPECT_EQ(file_size(folder.path), -1);
    EXPECT_EQ(read_file(folder.path, text), 2);
    const std::string locked = folder.file("locked");
    ASSERT_TRUE(replace_with(locked, "x"));
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    const int expected = geteuid() == 0 ? 0 : 1;  // the superuser reads all
    std::string locked_text = "before";
    EXPECT_EQ(read_file(locked, locked_text), expected);
    EXPECT_EQ(locked_text, expected == 0 ? "x" : "before");
    EXPECT_EQ(text, "before");
}

// A process that may not have the memory, and a file that is large without taking room on the disk.
TEST(Files, NoMemoryForTheContent) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer needs more address space than the limit leaves";
#endif
    const ScratchFolder folder;
    const std::string path = folder.file("huge");
    ASSERT_TRUE(replace_with(path, "x"));
    if (truncate(path.c_str(), int64_t{8} << 30) != 0) GTEST_SKIP() << "the file system has no such sizes";
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{size_t{2} << 30, size_t{2} << 30};
        setrlimit(RLIMIT_AS, &limit);
        std::string text = "before";
        const int status = read_file(path, text);
        _exit(status == 3 && text == "before" ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST(Files, ReplaceIsWholeOrNothing) {
    const ScratchFolder folder;
    const std::string path = folder.file("a");
    ASSERT_TRUE(replace_with(path, "a long first content"));
    ASSERT_TRUE(replace_with(path, "short"));
    EXPECT_EQ(content_of(path), "short");
    EXPECT_EQ(entries_of(folder.path), 1u);

    EXPECT_EQ(replace_file(folder.file("no/such/folder"), "x", 1), 1);
    // A folder cannot be replaced by a file: it stays, and nothing is left beside it.
    const std::string taken = folder.file("taken");
    fs::create_directory(taken);
    ASSERT_TRUE(replace_with(taken + "/inside", "kept"));
    EXPECT_EQ(replace_file(taken, "x", 1), 1);
    EXPECT_EQ(content_of(taken + "/inside"), "kept");
    EXPECT_EQ(entries_of(folder.path), 2u);
}

TEST(Files, ALinkStaysAndItsFileIsReplaced) {
    const ScratchFolder folder;
    fs::create_directory(folder.file("far"));
    write_content(folder.file("far/kept"), "old");
    fs::create_symlink("far/kept", folder.file("link"));
    ASSERT_TRUE(replace_with(folder.file("link"), "new"));
    EXPECT_TRUE(fs::is_symlink(folder.file("link")));
    EXPECT_EQ(content_of(folder.file("far/kept")), "new");
    EXPECT_EQ(entries_of(folder.file("far")), 1u);
    // One that leads nowhere is a name like any other.
    fs::create_symlink("nowhere", folder.file("loose"));
    EXPECT_TRUE(replace_with(folder.file("loose"), "new"));
    EXPECT_EQ(content_of(folder.file("loose")), "new");
    // One that goes in circles is not.
    fs::create_symlink("circle", folder.file("circle"));
    EXPECT_FALSE(can_replace_file(folder.file("circle")));
    EXPECT_FALSE(replace_with(folder.file("circle"), "new"));
    EXPECT_TRUE(fs::is_symlink(folder.file("circle")));
}

TEST(Files, RightsStay) {
    const ScratchFolder folder;
    const std::string path = folder.file("a");
    for (const mode_t rights : {0600, 0640, 0755}) {
        write_content(path, "old");
        ASSERT_EQ(chmod(path.c_str(), rights), 0);
        ASSERT_TRUE(replace_with(path, "new"));
        struct stat status;
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, rights);
    }
}

TEST(Files, OnlyFilesAreReplaced) {
    const ScratchFolder folder;
    const std::string pipe = folder.file("pipe"), below = folder.file("folder");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    fs::create_directory(below);
    for (const std::string& path : {pipe, below, std::string("/dev/full")}) {
        EXPECT_FALSE(can_replace_file(path)) << path;
        EXPECT_FALSE(replace_with(path, "new")) << path;
    }
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    EXPECT_EQ(entries_of(folder.path), 2u);
}

TEST(Files, WhatCanBeReplaced) {
    const ScratchFolder folder;
    write_content(folder.file("a"), "old");
    EXPECT_TRUE(can_replace_file(folder.file("a")));
    EXPECT_EQ(content_of(folder.file("a")), "old");
    EXPECT_TRUE(can_replace_file(folder.file("b")));
    EXPECT_FALSE(can_replace_file(folder.file("no/such/folder")));
    EXPECT_EQ(entries_of(folder.path), 1u);
}

TEST(Files, ALockIsOneOpenings) {
    const ScratchFolder folder;
    const std::string path = folder.file("a");
    OpenFile first(std::fopen(path.c_str(), "ab"));
    ASSERT_TRUE(first);
    EXPECT_TRUE(lock_file(first.get()));
    const OpenFile second(std::fopen(path.c_str(), "ab"));
    EXPECT_FALSE(lock_file(second.get()));
    ChildProcess child;
    ASSERT_EQ(start_child(child, "/bin/cat", std::vector<std::string>{"cat"}), 0);
    first.reset();
    EXPECT_TRUE(lock_file(second.get())) << "a program that was started meanwhile has no part in it";
    EXPECT_EQ(wait_for_child(child), 0);
}

// The disk is full: the old file stands, and no part of the new one is left.
TEST(Files, AFullDiskKeepsTheOldFile) {
    const ScratchFolder folder;
    const std::string path = folder.file("a");
    ASSERT_TRUE(replace_with(path, "old"));
    const std::string large(size_t{1} << 20, 'x');
    const pid_t child = fork();
    if (child == 0) {
        // A limit on the size of files stands in for the full disk.
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        _exit(replace_file(path, large.data(), large.size()) == 1 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(content_of(path), "old");
    EXPECT_EQ(entries_of(folder.path), 1u);
}

TEST(Text, TableIsSortedAndFound) {
    ASSERT_FALSE(text_table.empty());
    for (size_t i = 0; i < text_table.size(); ++i) {
        EXPECT_TRUE(i == 0 || text_table[i - 1].id < text_table[i].id) << i;
        EXPECT_STREQ(built_in_text(text_table[i].id), text_table[i].text);
        EXPECT_STRNE(text_table[i].text, "");
        EXPECT_STREQ(built_in_text(id_of_built_in_text(text_table[i].text)), text_table[i].text);
    }
    EXPECT_EQ(id_of_built_in_text("File is too big!"), 310);
    EXPECT_EQ(id_of_built_in_text("File is too big"), 0);
    EXPECT_EQ(id_of_built_in_text(""), 0);
    EXPECT_STREQ(built_in_text(235), "depth");
    EXPECT_STREQ(built_in_text(236), "kN/s");
    for (const int id : {-1, 0, 1 << 30}) EXPECT_STREQ(built_in_text(id), "");
}

TEST(Text, IsCutToTheBuffer) {
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    get_text(235, buffer, 4);
    EXPECT_STREQ(buffer, "dep");
    EXPECT_EQ(buffer[4], '#');
    get_text(235, buffer, 1);
    EXPECT_STREQ(buffer, "");
    get_text(235, buffer, 6);
    EXPECT_STREQ(buffer, "depth");
    get_text(-5, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "");
}

TEST(Text, ALanguageComesFirst) {
    char buffer[16];
    text_source = wide_source;
    get_text(235, buffer, sizeof buffer);
    text_source = nullptr;
    EXPECT_STREQ(buffer, "text 235");
    get_text(235, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "depth");
}

TEST(Clock, NeverGoesBackAndCountsMilliseconds) {
    const int64_t start = clock_ms();
    EXPECT_GE(start, 0);
    int64_t last = start;
    for (int i = 0; i < 100000; ++i) {
        const int64_t now = clock_ms();
        ASSERT_GE(now, last);
        last = now;
    }
    const int64_t before = clock_ms();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const int64_t passed = clock_ms() - before;
    EXPECT_GE(passed, 29);
    EXPECT_LT(passed, 5000);
}

TEST(LargeMemory, IsZeroAndAligned) {
    for (const size_t bytes : {size_t{1}, size_t{4096}, (size_t{2} << 20) + 1, size_t{9} << 20}) {
        LargeMemory memory = allocate_large(bytes);
        ASSERT_TRUE(memory);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(memory.get()) % (size_t{2} << 20), 0u);
        auto* const words = static_cast<unsigned char*>(memory.get());
        EXPECT_TRUE(std::all_of(words, words + bytes, [](unsigned char byte) { return byte == 0; }));
        std::memset(words, 0xff, bytes);  // all of it may be written
        memory.reset();
        EXPECT_FALSE(memory);
    }
}

TEST(LargeMemory, ReportsFailureAsEmpty) {
    EXPECT_FALSE(allocate_large(0));
    EXPECT_FALSE(allocate_large(SIZE_MAX));
    EXPECT_FALSE(allocate_large(size_t{1} << 60));
}

TEST(LargeMemory, GivesItsMemoryBack) {
    const auto mapped_pages = [] {
        long long pages = 0;
        const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen("/proc/self/statm", "r"), std::fclose);
        EXPECT_TRUE(file && std::fscanf(file.get(), "%lld", &pages) == 1);
        return pages;
    };
    mapped_pages();
    const long long before = mapped_pages();
    for (int i = 0; i < 100; ++i) ASSERT_TRUE(allocate_large(size_t{64} << 20));
    EXPECT_LT(mapped_pages() - before, (64 << 20) / 4096);
}

TEST(Memory, AvailableIsBelowAll) {
    const int64_t available = available_physical_memory();
    EXPECT_GT(available, 0);
    EXPECT_LE(available, int64_t{sysconf(_SC_PHYS_PAGES)} * sysconf(_SC_PAGESIZE));
}

TEST(Cpu, FlagsFitTogether) {
    EXPECT_TRUE(!use_pext || have_bmi2());
    EXPECT_TRUE(!have_bmi2() || have_popcnt);  // every processor with the one has the other
}

TEST(Paths, ExecutableFolder) {
    const std::string folder = executable_folder();
    EXPECT_TRUE(folder.starts_with('/'));
    EXPECT_TRUE(folder.ends_with('/'));
    EXPECT_TRUE(fs::is_directory(folder));
}

TEST(Paths, AbsolutePathsStayRight) {
    EXPECT_EQ(absolute_path("/a/b"), "/a/b");
    EXPECT_EQ(absolute_path("no file"), (fs::current_path() / "no file").string());
}

TEST(Paths, EnterProgramFolder) {
    const fs::path start = fs::current_path();
    const std::string folder = executable_folder();
    const std::string entered = enter_program_folder();
    const bool build_tree =
        folder.find("Release") != std::string::npos || folder.find("Debug") != std::string::npos;
    EXPECT_EQ(entered, build_tree ? "./" : folder);
    EXPECT_EQ(fs::equivalent(fs::current_path(), build_tree ? start : fs::path(folder)), true);
    fs::current_path(start);
}

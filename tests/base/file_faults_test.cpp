// Disks that fail and processes that die while a file is replaced.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "base/file_calls.h"
#include "base/files.h"
#include "tests/base/faulty_files.h"
#include "tests/base/scratch_folder.h"

namespace {

using Trace = std::vector<std::string>;

const std::string OLD = "the old content";
const std::string NEW(5000, 'n');

int replace(const std::string& path, const std::string& text) {
    return replace_file(path, text.data(), text.size());
}

}  // namespace

// The content is on the disk before its name is, and the name before the call returns.
TEST(ReplaceFile, FlushesInOrder) {
    const ScratchFolder folder;
    const FaultyFiles files(Fault::NONE, -1);
    ASSERT_EQ(replace(folder.file("a"), NEW), 0);
    EXPECT_EQ(fault_plan.trace,
              (Trace{"open", "write", "flush", "close", "rename", "open", "flush", "close"}));
}

TEST(ReplaceFile, AnyFailingCallLeavesTheOldOrTheNewFile) {
    for (const Fault fault : {Fault::FAIL, Fault::SHORT_WRITE}) {
        int old_kept = 0, replaced = 0;
        for (int call = 0;; ++call) {
            const ScratchFolder folder;
            const std::string path = folder.file("a");
            ASSERT_EQ(replace(path, OLD), 0);
            int status, calls, reason;
            {
                const FaultyFiles files(fault, call);
                errno = 0;
                status = replace(path, NEW);
                reason = errno;
                calls = fault_plan.calls;
            }
            if (calls <= call) break;  // all calls have had their turn
            EXPECT_EQ(content_of(path), status == 0 ? NEW : OLD) << call;
            EXPECT_EQ(entries_of(folder.path), 1u) << call;
            EXPECT_TRUE(status == 0 || reason == EIO) << call;
            ++(status == 0 ? replaced : old_kept);
        }
        // Opening, writing, flushing, closing, renaming; what comes behind is for the folder.
        EXPECT_EQ(old_kept, fault == Fault::FAIL ? 5 : 1);
        EXPECT_EQ(replaced, fault == Fault::FAIL ? 3 : 7);
    }
}

TEST(ReplaceFile, ACrashAtAnyCallLeavesTheOldOrTheNewFile) {
    int crashes = 0, new_ones = 0;
    for (const Fault fault : {Fault::CRASH_BEFORE, Fault::CRASH_MIDWAY, Fault::CRASH_AFTER})
        for (int call = 0; call < 8; ++call) {
            const ScratchFolder folder;
            const std::string path = folder.file("a");
            ASSERT_EQ(replace(path, OLD), 0);
            const pid_t child = fork();
            if (child == 0) {
                const FaultyFiles files(fault, call);
                _exit(replace(path, NEW));
            }
            int status = -1;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFEXITED(status));
            crashes += WEXITSTATUS(status) == CRASH_STATUS;
            const std::string content = content_of(path);
            EXPECT_TRUE(content == OLD || content == NEW) << call;
            new_ones += content == NEW;
            // What the crash has left does not disturb the next one.
            EXPECT_EQ(replace(path, "next"), 0);
            EXPECT_EQ(content_of(path), "next");
        }
    EXPECT_EQ(crashes, 8 + 1 + 8);
    EXPECT_EQ(new_ones, 3 + 7 + 4);
}

// A signal may come in the midst of every call; here each second one is broken off by one, and the others
// read and write little.
TEST(ReplaceFile, InterruptionsAreNoFailures) {
    static int calls = 0;
    const ScratchFolder folder;
    const std::string path = folder.file("a");
    file_calls.write = [](int descriptor, const void* data, size_t bytes) -> ssize_t {
        errno = EINTR;
        return ++calls % 2 ? -1 : write(descriptor, data, std::min<size_t>(bytes, 700));
    };
    file_calls.read = [](int descriptor, void* data, size_t bytes) -> ssize_t {
        errno = EINTR;
        return ++calls % 2 ? -1 : read(descriptor, data, std::min<size_t>(bytes, 700));
    };
    EXPECT_EQ(replace(path, NEW), 0);
    std::string text;
    EXPECT_EQ(read_file(path, text), 0);
    file_calls = system_file_calls();
    EXPECT_EQ(text, NEW);
    EXPECT_EQ(content_of(path), NEW);
    EXPECT_GT(calls, 30);
}

// A process that died may have had our number.
TEST(ReplaceFile, NamesThatAreTakenArePassedOver) {
    const ScratchFolder folder;
    const std::string path = folder.file("a");
    const pid_t child = fork();
    if (child == 0) {
        for (int n = 0; n < 1000; n += 2)
            write_content(path + ".new" + std::to_string(getpid()) + "-" + std::to_string(n), "left");
        if (replace(path, "first") != 0) _exit(1);
        _exit(replace(path, NEW));
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(content_of(path), NEW);
}

TEST(ReplaceFile, ThreadsAtOnceLeaveOneWholeFile) {
    const ScratchFolder folder;
    const std::string path = folder.file("a");
    std::atomic<int> failures = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            const std::string text(size_t{20000} + static_cast<size_t>(i), static_cast<char>('a' + i));
            for (int n = 0; n < 25; ++n) failures += replace(path, text);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures, 0);
    const std::string content = content_of(path);
    ASSERT_GE(content.size(), 20000u);
    EXPECT_EQ(content, std::string(20000 + static_cast<size_t>(content[0] - 'a'), content[0]));
    EXPECT_EQ(entries_of(folder.path), 1u);
}

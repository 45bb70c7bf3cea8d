#include "base/child_process.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <thread>
#include <vector>

namespace {

int start_shell(ChildProcess& child, const std::string& script) {
    return start_child(child, "/bin/sh", std::vector<std::string>{"sh", "-c", script});
}

bool exists(int32_t pid) { return kill(pid, 0) == 0 || errno != ESRCH; }

TEST(ChildProcess, LinesGoThereAndBack) {
    ChildProcess child;
    ASSERT_EQ(start_child(child, "/bin/cat", std::vector<std::string>{"cat"}), 0);
    for (const std::string text : {"one", "", "three words here", "ümlaut"}) {
        std::string line = "before";
        ASSERT_EQ(write_line(child, text), 0);
        ASSERT_EQ(read_line(child, line), 0);
        EXPECT_EQ(line, text);
    }
    EXPECT_EQ(wait_for_child(child), 0);
    EXPECT_EQ(child.pid, 0);
    EXPECT_EQ(wait_for_child(child), -1);
}

TEST(ChildProcess, ManyLinesAtOnceAreKept) {
    ChildProcess child;
    ASSERT_EQ(start_shell(child, "seq 1 5000; printf rest"), 0);
    std::string line;
    for (int i = 1; i <= 5000; ++i) {
        ASSERT_EQ(read_line(child, line), 0);
        ASSERT_EQ(line, std::to_string(i));
    }
    EXPECT_EQ(read_line(child, line), 1);  // a line without an end
    EXPECT_EQ(line, "5000");
    EXPECT_EQ(wait_for_child(child), 0);
}

TEST(ChildProcess, LongLinesPass) {
    ChildProcess child;
    ASSERT_EQ(start_shell(child, "read x; echo ${#x}; echo $x"), 0);
    const std::string text(300000, 'a');
    std::string line;
    ASSERT_EQ(write_line(child, text), 0);
    ASSERT_EQ(read_line(child, line), 0);
    EXPECT_EQ(line, "300000");
    ASSERT_EQ(read_line(child, line), 0);
    EXPECT_EQ(line, text);
}

TEST(ChildProcess, AMissingProgramIsAnError) {
    ChildProcess child;
    EXPECT_EQ(start_child(child, "/nowhere/at/all", std::vector<std::string>{"all"}), 1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(child.pid, 0);
    EXPECT_EQ(start_shell(child, "exit 0"), 0);  // the record can be used again
    EXPECT_EQ(wait_for_child(child), 0);
}

TEST(ChildProcess, ADyingChildIsNoticed) {
    ChildProcess child;
    ASSERT_EQ(start_shell(child, "read x; echo got $x; exec 0<&-; echo closed; exit 7"), 0);
    std::string line;
    ASSERT_EQ(write_line(child, "it"), 0);
    ASSERT_EQ(read_line(child, line), 0);
    EXPECT_EQ(line, "got it");
    ASSERT_EQ(read_line(child, line), 0);
    EXPECT_EQ(line, "closed");
    EXPECT_EQ(read_line(child, line), 1);
    EXPECT_EQ(write_line(child, "more"), 1);  // and the broken pipe does not end this program
    EXPECT_EQ(wait_for_child(child), 7);
}

TEST(ChildProcess, SignalsAreTold) {
    ChildProcess child;
    ASSERT_EQ(start_shell(child, "kill -TERM $$"), 0);
    EXPECT_EQ(wait_for_child(child), 128 + SIGTERM);
    // A child does not take over that broken pipes are ignored here.
    ASSERT_EQ(start_shell(child, "kill -PIPE $$; exit 3"), 0);
    EXPECT_EQ(wait_for_child(child), 128 + SIGPIPE);
}

TEST(ChildProcess, TheRecordTakesItsChildAlong) {
    int32_t pid = 0;
    {
        ChildProcess child;
        ASSERT_EQ(start_shell(child, "trap '' TERM HUP; while :; do sleep 1; done"), 0);
        pid = child.pid;
        ASSERT_TRUE(exists(pid));
    }
    EXPECT_FALSE(exists(pid));  // neither running nor left unwaited
}

TEST(ChildProcess, ChildrenDoNotHoldEachOthersPipes) {
    // If a later child held the input of an earlier one, that would wait for ever.
    std::vector<ChildProcess> children(6);
    for (ChildProcess& child : children)
        ASSERT_EQ(start_child(child, "/bin/cat", std::vector<std::string>{"cat"}), 0);
    for (ChildProcess& child : children) EXPECT_EQ(wait_for_child(child), 0);
}

TEST(ChildProcess, ThreadsHaveChildrenOfTheirOwn) {
    std::vector<std::thread> threads;
    std::vector<int> wrong(4);
    for (int& count : wrong)
        threads.emplace_back([&count] {
            for (int round = 0; round < 10; ++round) {
                ChildProcess child;
                std::string line;
                if (start_child(child, "/bin/cat", std::vector<std::string>{"cat"}) != 0) ++count;
                for (int i = 0; i < 20; ++i)
                    if (write_line(child, std::to_string(i)) != 0 || read_line(child, line) != 0 ||
                        line != std::to_string(i))
                        ++count;
                if (wait_for_child(child) != 0) ++count;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4));
}

}  // namespace

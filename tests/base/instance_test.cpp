#include "base/instance.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <set>
#include <string>
#include <vector>

#include "tests/base/scratch_folder.h"

namespace {

constexpr const char* NAME = "Some Program";

// A process that claims a number, tells it and holds it until it is told to end, or killed.
class OtherCopy {
  public:
    explicit OtherCopy(const std::string& folder) {
        std::array<int, 2> answer, order;
        EXPECT_EQ(pipe(answer.data()), 0);
        EXPECT_EQ(pipe(order.data()), 0);
        process = fork();
        if (process == 0) {
            close(order[1]);
            const InstanceLock lock = claim_instance(folder, NAME);
            const std::array<int, 2> told = {lock.number(), lock.held()};
            char wait_for_end;
            const bool written = write(answer[1], told.data(), sizeof told) == sizeof told;
            _exit(written && read(order[0], &wait_for_end, 1) >= 0 ? 0 : 1);
        }
        std::array<int, 2> told{-1, -1};
        EXPECT_EQ(read(answer[0], told.data(), sizeof told), static_cast<ssize_t>(sizeof told));
        number = told[0];
        held = told[1] != 0;
        close(answer[0]);
        close(answer[1]);
        close(order[0]);
        end_pipe = order[1];
    }
    ~OtherCopy() { end(SIGKILL); }
    OtherCopy(OtherCopy&& other) noexcept
        : number(other.number), held(other.held), process(other.process), end_pipe(other.end_pipe) {
        other.process = -1;
    }
    OtherCopy& operator=(OtherCopy&&) = delete;

    void end(int signal) {
        if (process < 0) return;
        kill(process, signal);
        int status = 0;
        waitpid(process, &status, 0);
        close(end_pipe);
        process = -1;
    }

    int number = -1;
    bool held = false;

  private:
    pid_t process = -1;
    int end_pipe = -1;
};

}  // namespace

TEST(Instance, NumbersCountUpAndComeBack) {
    const ScratchFolder folder;
    InstanceLock first = claim_instance(folder.path, NAME);
    InstanceLock second = claim_instance(folder.path, NAME);
    EXPECT_EQ(first.number(), 0);
    EXPECT_EQ(second.number(), 1);
    EXPECT_TRUE(first.held() && second.held());
    EXPECT_EQ(entries_of(folder.path), 2u);
    EXPECT_TRUE(std::filesystem::exists(folder.file("Some Program_sem0")));
    EXPECT_TRUE(std::filesystem::exists(folder.file("Some Program_sem1")));
    first.release();
    EXPECT_FALSE(first.held());
    const InstanceLock third = claim_instance(folder.path, NAME);
    EXPECT_EQ(third.number(), 0);
    // Another program counts by itself.
    EXPECT_EQ(claim_instance(folder.path, "Other").number(), 0);
}

TEST(Instance, MovingKeepsTheLock) {
    const ScratchFolder folder;
    InstanceLock zero = claim_instance(folder.path, NAME);
    InstanceLock one = claim_instance(folder.path, NAME);
    InstanceLock moved = std::move(one);
    EXPECT_EQ(moved.number(), 1);
    EXPECT_TRUE(moved.held());
    moved = std::move(zero);  // gives number 1 up
    EXPECT_EQ(moved.number(), 0);
    EXPECT_EQ(claim_instance(folder.path, NAME).number(), 1);
}

TEST(Instance, AHundredAndOneProcesses) {
    const ScratchFolder folder;
    std::vector<OtherCopy> copies;
    copies.reserve(101);
    std::set<int> numbers;
    for (int i = 0; i < INSTANCE_LIMIT; ++i) {
        copies.emplace_back(folder.path);
        EXPECT_TRUE(copies.back().held);
        EXPECT_EQ(copies.back().number, i);
        numbers.insert(copies.back().number);
    }
    EXPECT_EQ(numbers.size(), 100u);
    copies.emplace_back(folder.path);
    EXPECT_EQ(copies.back().number, 0);
    EXPECT_FALSE(copies.back().held);

    // A killed process and one that was asked to end free their numbers; the lowest is taken first.
    copies[57].end(SIGKILL);
    copies[23].end(SIGTERM);
    const InstanceLock lower = claim_instance(folder.path, NAME);
    const InstanceLock higher = claim_instance(folder.path, NAME);
    const InstanceLock none = claim_instance(folder.path, NAME);
    EXPECT_EQ(lower.number(), 23);
    EXPECT_EQ(higher.number(), 57);
    EXPECT_EQ(none.number(), 0);
    EXPECT_FALSE(none.held());
}

TEST(Instance, ProcessesThatStartAtOnceGetDifferentNumbers) {
    constexpr int PROCESSES = 20;
    const ScratchFolder folder;
    std::array<int, 2> answers, gate;
    ASSERT_EQ(pipe(answers.data()), 0);
    ASSERT_EQ(pipe(gate.data()), 0);
    std::vector<pid_t> processes;
    for (int i = 0; i < PROCESSES; ++i) {
        const pid_t process = fork();
        if (process == 0) {
            close(gate[1]);
            char byte;
            if (read(gate[0], &byte, 1) < 0) _exit(1);  // all go when the gate is closed
            const InstanceLock lock = claim_instance(folder.path, NAME);
            const int number = lock.held() ? lock.number() : -1;
            if (write(answers[1], &number, sizeof number) != sizeof number) _exit(1);
            pause();
        }
        processes.push_back(process);
    }
    close(gate[0]);
    close(gate[1]);
    std::set<int> numbers;
    for (int i = 0; i < PROCESSES; ++i) {
        int number = -1;
        ASSERT_EQ(read(answers[0], &number, sizeof number), static_cast<ssize_t>(sizeof number));
        numbers.insert(number);
    }
    for (const pid_t process : processes) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    close(answers[0]);
    close(answers[1]);
    EXPECT_EQ(numbers.size(), size_t{PROCESSES});
    EXPECT_EQ(*numbers.begin(), 0);
    EXPECT_EQ(*numbers.rbegin(), PROCESSES - 1);
}

TEST(Instance, WithoutLocksItIsNumberZero) {
    const ScratchFolder folder;
    for (const std::string& unusable : {std::string(), folder.file("missing/"), std::string("/dev/null/")}) {
        const InstanceLock lock = claim_instance(unusable, NAME);
        EXPECT_EQ(lock.number(), 0);
        EXPECT_FALSE(lock.held());
    }
    // A link could lead to somebody else's file.
    write_content(folder.file("victim"), "kept");
    std::filesystem::create_symlink(folder.file("victim"), folder.file("Some Program_sem0"));
    EXPECT_FALSE(claim_instance(folder.path, NAME).held());
    EXPECT_EQ(content_of(folder.file("victim")), "kept");
}

// A program that this copy starts must not keep its number when this copy ends.
TEST(Instance, StartedProgramsDoNotInheritTheLock) {
    const ScratchFolder folder;
    InstanceLock lock = claim_instance(folder.path, NAME);
    const pid_t process = fork();
    if (process == 0) {
        execl("/bin/sleep", "sleep", "30", nullptr);
        _exit(1);
    }
    // Until the other program runs, it still has the copy's descriptors.
    int number = -1;
    lock.release();
    for (int i = 0; i < 500 && number != 0; ++i) {
        usleep(10000);
        number = claim_instance(folder.path, NAME).number();
    }
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
    EXPECT_EQ(number, 0);
}

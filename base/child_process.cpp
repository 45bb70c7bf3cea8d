#include "base/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <vector>

const char* const THIS_PROGRAM = "/proc/self/exe";

namespace {

void close_end(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

struct Pipe {
    int ends[2] = {-1, -1};  // to read from, to write to

    // Closed in every child that is started, but for the copies made for it: a child that held the end of
    // another's pipe would keep it from seeing the end of its input.
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) ends[0] = ends[1] = -1;
    }
    ~Pipe() {
        close_end(ends[0]);
        close_end(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    bool is_open() const { return ends[0] >= 0; }
};

int release(int& descriptor) {
    const int released = descriptor;
    descriptor = -1;
    return released;
}

// What the child has that this program has not: the pipes in place of the standard files, and the usual end
// by a broken pipe.
struct SpawnSettings {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

    SpawnSettings(int input, int output) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        posix_spawnattr_init(&attributes);
        sigset_t broken_pipe;
        sigemptyset(&broken_pipe);
        sigaddset(&broken_pipe, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes, &broken_pipe);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
};

int wait_for_end(int32_t& pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR) break;
    pid = 0;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

ChildProcess::~ChildProcess() {
    close_end(input);
    close_end(output);
    if (pid == 0) return;
    kill(pid, SIGKILL);
    wait_for_end(pid);
}

int start_child(ChildProcess& child, const char* program, std::span<const std::string> arguments) {
    std::signal(SIGPIPE, SIG_IGN);
    Pipe input, output;
    if (!input.is_open() || !output.is_open()) return 1;
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const SpawnSettings settings(input.ends[0], output.ends[1]);
    pid_t pid = 0;
    errno = posix_spawn(&pid, program, &settings.actions, &settings.attributes, argv.data(), environ);
    if (errno != 0) return 1;
    child.pid = pid;
    child.input = release(input.ends[1]);
    child.output = release(output.ends[0]);
    child.unread.clear();
    return 0;
}

int write_line(ChildProcess& child, const std::string& line) {
    const std::string text = line + '\n';
    for (size_t written = 0; written < text.size();) {
        const ssize_t count = write(child.input, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return 1;
        written += static_cast<size_t>(count);
    }
    return 0;
}

int read_line(ChildProcess& child, std::string& line) {
    for (size_t searched = 0;;) {
        const size_t end = child.unread.find('\n', searched);
        if (end != std::string::npos) {
            line.assign(child.unread, 0, end);
            child.unread.erase(0, end + 1);
            return 0;
        }
        searched = child.unread.size();
        char buffer[4096];
        const ssize_t count = read(child.output, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return 1;
        child.unread.append(buffer, static_cast<size_t>(count));
    }
}

int wait_for_child(ChildProcess& child) {
    if (child.pid == 0) return -1;
    close_end(child.input);
    close_end(child.output);
    return wait_for_end(child.pid);
}

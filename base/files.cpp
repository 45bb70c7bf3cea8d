#include "base/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>

#include "base/file_calls.h"

namespace {

constexpr int NAME_TRIES = 100;
constexpr mode_t RIGHTS = S_IRWXU | S_IRWXG | S_IRWXO;

std::atomic<uint32_t> files_written = 0;  // makes the names of new files differ

// Writes everything, over interruptions and short writes.
bool write_all(int descriptor, const char* data, size_t bytes) {
    while (bytes > 0) {
        const ssize_t written = file_calls.write(descriptor, data, bytes);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        data += written;
        bytes -= static_cast<size_t>(written);
    }
    return true;
}

// The name of a file lives in its folder, so the folder is flushed too.
void flush_folder_of(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int descriptor = file_calls.open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (descriptor < 0) return;
    file_calls.flush(descriptor);
    file_calls.close(descriptor);
}

// Where a file is to be put, and with which rights.
struct Place {
    std::string path;
    std::optional<mode_t> rights;  // those of the file that is there
};

// Behind all links of the path. False if something is there that is no regular file, or may be there but
// cannot be looked at.
bool find_place(const std::string& path, Place& place) {
    place.path = path;
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return errno == ENOENT;
    if (!S_ISREG(status.st_mode)) {
        errno = EINVAL;
        return false;
    }
    place.rights = status.st_mode & RIGHTS;
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
    if (real) place.path = real.get();
    return true;
}

// Makes a new file beside `path` and gives its name: one that no other thread or process writes, not even one
// of another machine that shares the folder, nor any that was left by a process that died. -1 on failure.
int open_aside(const std::string& path, std::string& aside) {
    for (int i = 0; i < NAME_TRIES; ++i) {
        aside = path + ".new" + std::to_string(getpid()) + "-" + std::to_string(files_written++);
        const int descriptor = file_calls.open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0 || errno != EEXIST) return descriptor;
    }
    return -1;
}

}  // namespace

FileCalls system_file_calls() {
    return {[](const char* path, int flags, mode_t mode) { return open(path, flags, mode); },
            write,
            fsync,
            close,
            [](const char* from, const char* to) { return std::rename(from, to); },
            unlink,
            read,
            lseek};
}

FileCalls file_calls = system_file_calls();

int64_t file_size(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return -1;
    return status.st_size;
}

bool can_read_file(const std::string& path) {
    // Without O_NONBLOCK a pipe would keep us until somebody writes to it.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return false;
    struct stat status;
    const bool readable = fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode);
    close(descriptor);
    return readable;
}

bool folder_exists(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool same_file(const std::string& path, const std::string& other) {
    struct stat a, b;
    return stat(path.c_str(), &a) == 0 && stat(other.c_str(), &b) == 0 && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}

bool make_folders(const std::string& path) {
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
        mkdir(path.substr(0, end).c_str(), 0700);
    return mkdir(path.c_str(), 0700) == 0 || folder_exists(path);
}

int read_file(const std::string& path, std::string& text) {
    const int64_t size = file_size(path);
    if (size < 1) return 2;
    const int descriptor = file_calls.open(path.c_str(), O_RDONLY | O_CLOEXEC, 0);
    if (descriptor < 0) return 1;
    std::string content;
    try {
        content.resize(static_cast<size_t>(size));
    } catch (const std::bad_alloc&) {
        file_calls.close(descriptor);
        return 3;
    } catch (const std::length_error&) {
        file_calls.close(descriptor);
        return 3;
    }
    size_t done = 0;
    ssize_t got = 1;
    while (done < content.size() && got != 0) {
        got = file_calls.read(descriptor, content.data() + done, content.size() - done);
        if (got < 0 && errno != EINTR) break;
        if (got > 0) done += static_cast<size_t>(got);
    }
    file_calls.close(descriptor);
    if (got < 0) return 1;
    content.resize(done);  // the file may have shrunk since its size was asked
    text = std::move(content);
    return 0;
}

int replace_file(const std::string& path, const void* data, size_t bytes) {
    Place place;
    if (!find_place(path, place)) return 1;
    std::string aside;
    const int descriptor = open_aside(place.path, aside);
    if (descriptor < 0) return 1;
    if (place.rights) fchmod(descriptor, *place.rights);
    const bool written =
        write_all(descriptor, static_cast<const char*>(data), bytes) && file_calls.flush(descriptor) == 0;
    const int reason = errno;
    const bool closed = file_calls.close(descriptor) == 0;
    if (!written) errno = reason;
    if (!written || !closed || file_calls.rename(aside.c_str(), place.path.c_str()) != 0) {
        const int first_reason = errno;
        file_calls.remove(aside.c_str());
        errno = first_reason;
        return 1;
    }
    flush_folder_of(place.path);
    return 0;
}

bool can_replace_file(const std::string& path) {
    Place place;
    if (!find_place(path, place)) return false;
    std::string aside;
    const int descriptor = open_aside(place.path, aside);
    if (descriptor < 0) return false;
    file_calls.close(descriptor);
    file_calls.remove(aside.c_str());
    return true;
}

int try_lock(int descriptor) {
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    int status;
    do status = flock(descriptor, LOCK_EX | LOCK_NB);
    while (status != 0 && errno == EINTR);
    return status == 0 ? 0 : errno;
}

bool lock_file(std::FILE* file) { return try_lock(fileno(file)) != EWOULDBLOCK; }

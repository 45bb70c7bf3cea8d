#include "base/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <new>
#include <stdexcept>

namespace {

// Writes everything, over interruptions and short writes.
bool write_all(int descriptor, const char* data, size_t bytes) {
    while (bytes > 0) {
        const ssize_t written = write(descriptor, data, bytes);
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
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

}  // namespace

int64_t file_size(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return -1;
    return status.st_size;
}

int read_file(const std::string& path, std::string& text) {
    const int64_t size = file_size(path);
    if (size < 1) return 2;
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return 1;
    std::string content;
    try {
        content.resize(static_cast<size_t>(size));
    } catch (const std::bad_alloc&) {
        close(descriptor);
        return 3;
    } catch (const std::length_error&) {
        close(descriptor);
        return 3;
    }
    size_t done = 0;
    ssize_t got = 1;
    while (done < content.size() && got != 0) {
        got = read(descriptor, content.data() + done, content.size() - done);
        if (got < 0 && errno != EINTR) break;
        if (got > 0) done += static_cast<size_t>(got);
    }
    close(descriptor);
    if (got < 0) return 1;
    content.resize(done);  // the file may have shrunk since its size was asked
    text = std::move(content);
    return 0;
}

int replace_file(const std::string& path, const void* data, size_t bytes) {
    const std::string aside = path + ".new" + std::to_string(getpid());
    const int descriptor = open(aside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) return 1;
    const bool written =
        write_all(descriptor, static_cast<const char*>(data), bytes) && fsync(descriptor) == 0;
    if (close(descriptor) != 0 || !written || std::rename(aside.c_str(), path.c_str()) != 0) {
        unlink(aside.c_str());
        return 1;
    }
    flush_folder_of(path);
    return 0;
}

#include "base/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "base/file_calls.h"

namespace {
constexpr size_t READ_CHUNK = 1048576;
}

void InputFile::close() {
    if (is_open()) file_calls.close(std::exchange(descriptor, -1));
}

bool open_input(const std::string& path, InputFile& file) {
    file.close();
    // Without O_NONBLOCK a pipe would keep us until somebody writes to it.
    file.descriptor = file_calls.open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC, 0);
    if (!file.is_open()) return false;
    struct stat status;
    if (fstat(file.descriptor, &status) == 0 && S_ISREG(status.st_mode)) return true;
    file.close();
    return false;
}

InputStatus read_input(const InputFile& file, int64_t offset, void* data, size_t bytes, size_t& got) {
    got = 0;
    if (file_calls.seek(file.descriptor, offset, SEEK_SET) < 0) return INPUT_NO_SEEK;
    while (got < bytes) {
        const size_t wanted = std::min(bytes - got, READ_CHUNK);
        const ssize_t count = file_calls.read(file.descriptor, static_cast<char*>(data) + got, wanted);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return INPUT_NOT_READ;
        if (count == 0) break;
        got += static_cast<size_t>(count);
    }
    return INPUT_READ;
}

#include "records/game_file.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

#include "base/files.h"

namespace {

constexpr long TAIL_BYTES = 8;
constexpr int END_OF_TEXT = 26;  // of a file of old systems

// Where the marks of the end begin that the file ends with, blank lines among them aside; its size if there
// are none. Readers of texts stop there, or at the zeros of a damaged file: what comes behind would never be
// seen again.
int64_t end_of_games(std::FILE* file, int64_t size) {
    int64_t end = size;
    for (int64_t at = size; at > 0; --at) {
        if (std::fseek(file, static_cast<long>(at - 1), SEEK_SET) != 0) break;
        const int c = std::fgetc(file);
        if (c == END_OF_TEXT || c == 0)
            end = at - 1;
        else if (c != '\n' && c != '\r' && c != ' ')
            break;
    }
    return end;
}

// Takes them away and returns them, with all that follows.
std::string take_end_marks(const std::string& path) {
    const int64_t size = file_size(path);
    const OpenFile file(size < 0 ? nullptr : std::fopen(path.c_str(), "rb"));
    if (!file) return "";
    const int64_t end = end_of_games(file.get(), size);
    std::string taken(static_cast<size_t>(size - end), '\0');
    if (taken.empty() || std::fseek(file.get(), static_cast<long>(end), SEEK_SET) != 0 ||
        std::fread(taken.data(), 1, taken.size(), file.get()) != taken.size())
        return "";
    std::error_code error;
    std::filesystem::resize_file(path, static_cast<uintmax_t>(end), error);
    return error ? "" : taken;
}

// Cuts the file back to the size and puts behind that what was taken away. A disk that is full has room for
// it.
void restore(const std::string& path, int64_t bytes, const std::string& taken) {
    std::error_code ignored;
    if (bytes >= 0) std::filesystem::resize_file(path, static_cast<uintmax_t>(bytes), ignored);
    const OpenFile file(taken.empty() ? nullptr : std::fopen(path.c_str(), "ab"));
    if (file) std::fwrite(taken.data(), 1, taken.size(), file.get());
}

}  // namespace

GameFileStatus load_game_file(const std::string& path, std::string& text, PdnOffsets& offsets) {
    const int64_t size = file_size(path);
    if (size > GAME_FILE_LIMIT) return GAME_FILE_TOO_BIG;
    if (size < 0 || !can_read_file(path)) return GAME_FILE_CLOSED;
    std::string content;
    switch (size == 0 ? 0 : pdn_read_text(path, content)) {
        case 0:
            break;
        case 3:
            return GAME_FILE_NO_MEMORY;
        default:
            return GAME_FILE_CLOSED;
    }
    if (pdn_index_games(content.c_str(), offsets) != 0) return GAME_FILE_NO_MEMORY;
    text = std::move(content);
    return GAME_FILE_READ;
}

int separator_newlines_needed(const std::string& path) {
    // What is no regular file need not have an end.
    const OpenFile file(file_size(path) < 0 ? nullptr : std::fopen(path.c_str(), "rb"));
    if (!file) return 0;
    // In a shorter file the seek fails, and it is read from its start.
    std::fseek(file.get(), -TAIL_BYTES, SEEK_END);
    int before_last = EOF, last = EOF;
    for (int c = std::fgetc(file.get()); c != EOF; c = std::fgetc(file.get())) {
        if (c == '\r') continue;
        before_last = last;
        last = c;
    }
    if (before_last == EOF) return 0;
    if (last == '\n') return before_last == '\n' ? 0 : 1;
    return 2;
}

int append_game_text(const std::string& path, const char* text) {
    const std::string end_marks = take_end_marks(path);
    const int newlines = separator_newlines_needed(path);
    const int64_t bytes_before = file_size(path);
    OpenFile file(std::fopen(path.c_str(), "a"));
    if (!file) {
        restore(path, bytes_before, end_marks);
        return 1;
    }
    for (int i = 0; i < newlines; ++i) std::fputc('\n', file.get());
    std::fputs(text, file.get());
    const bool written = std::ferror(file.get()) == 0;
    if (std::fclose(file.release()) == 0 && written) return 0;
    restore(path, bytes_before, end_marks);
    return 2;
}

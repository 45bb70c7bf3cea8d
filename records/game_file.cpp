#include "records/game_file.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

#include "base/files.h"

namespace {

constexpr long TAIL_BYTES = 8;
constexpr int END_OF_TEXT = 26;  // of a file of old systems

// Readers of texts stop at a mark of the end, or at the zeros of a damaged file: what comes behind it would
// never be seen again. Takes away those at the end of the file.
void drop_end_marks(const std::string& path) {
    const int64_t size = file_size(path);
    const OpenFile file(size < 0 ? nullptr : std::fopen(path.c_str(), "rb"));
    if (!file) return;
    int64_t end = size;
    for (int c = 0; end > 0; --end) {
        if (std::fseek(file.get(), static_cast<long>(end - 1), SEEK_SET) != 0) return;
        c = std::fgetc(file.get());
        if (c != END_OF_TEXT && c != 0) break;
    }
    std::error_code ignored;
    if (end < size) std::filesystem::resize_file(path, static_cast<uintmax_t>(end), ignored);
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
    drop_end_marks(path);
    const int newlines = separator_newlines_needed(path);
    const int64_t bytes_before = file_size(path);
    OpenFile file(std::fopen(path.c_str(), "a"));
    if (!file) return 1;
    for (int i = 0; i < newlines; ++i) std::fputc('\n', file.get());
    std::fputs(text, file.get());
    const bool written = std::ferror(file.get()) == 0;
    if (std::fclose(file.release()) == 0 && written) return 0;
    std::error_code ignored;
    if (bytes_before >= 0) std::filesystem::resize_file(path, static_cast<uintmax_t>(bytes_before), ignored);
    return 2;
}

#include "tools/book_work.h"

#include <cerrno>
#include <cstdio>
#include <sstream>

namespace {

BookWorkKey key_of(const BookTask& task) {
    const Position& p = task.position;
    return {{p.black, p.white, p.king << 1 | static_cast<uint64_t>(p.side)}, task.nodes};
}

// False if the first line is not that of the terms. Lines that were cut short are passed over.
bool read_work(const std::string& content, const std::string& terms, BookWork& work) {
    std::istringstream lines(content);
    std::string line;
    if (!std::getline(lines, line) || line != terms) return false;
    BookTask task;
    BookAnalysis analysis;
    while (std::getline(lines, line))
        if (read_book_analysis_line(line, task, analysis)) work.known.try_emplace(key_of(task), analysis);
    return true;
}

int write_line(std::FILE* file, const std::string& line) {
    return std::fputs(line.c_str(), file) < 0 || std::fputc('\n', file) == EOF || std::fflush(file) != 0;
}

}  // namespace

BookWorkStatus open_book_work(const std::string& path, const std::string& terms, BookWork& work) {
    work = BookWork{};
    work.file.reset(std::fopen(path.c_str(), "ab"));
    if (!work.file) return BOOK_WORK_CANNOT_OPEN;
    if (!lock_file(work.file.get())) return BOOK_WORK_TAKEN;
    std::string content;
    if (file_size(path) > 0) {
        if (read_file(path, content) != 0) return BOOK_WORK_CANNOT_OPEN;
        if (!read_work(content, terms, work)) return BOOK_WORK_OTHER_TERMS;
    }
    // What follows a line that was cut short begins a line of its own.
    if (!content.empty() && content.back() != '\n' && std::fputc('\n', work.file.get()) == EOF)
        return BOOK_WORK_CANNOT_OPEN;
    if (content.empty() && write_line(work.file.get(), terms) != 0) return BOOK_WORK_CANNOT_OPEN;
    return BOOK_WORK_OPEN;
}

const BookAnalysis* find_book_work(const BookWork& work, const BookTask& task) {
    const auto found = work.known.find(key_of(task));
    return found == work.known.end() ? nullptr : &found->second;
}

int keep_book_work(BookWork& work, const BookTask& task, const BookAnalysis& analysis) {
    work.known.try_emplace(key_of(task), analysis);
    return write_line(work.file.get(), book_analysis_line(task, analysis));
}

// The work file of a book: every analysis that was made, one line each, written as soon as it is known. The
// builder makes the same choices again from the same analyses, so nothing else has to be kept to go on where
// it stopped; what was cut short by the end of a process is made again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "base/files.h"
#include "tools/book_analysis.h"
#include "tools/book_graph.h"

struct BookWorkKey {
    BookKey position;
    uint64_t nodes;  // that were asked for
    bool operator==(const BookWorkKey&) const = default;
};
struct BookWorkKeyHash {
    size_t operator()(const BookWorkKey& key) const { return BookKeyHash{}(key.position) ^ key.nodes; }
};

struct BookWork {
    OpenFile file;  // for appending
    std::unordered_map<BookWorkKey, BookAnalysis, BookWorkKeyHash> known;
};

enum BookWorkStatus {
    BOOK_WORK_OPEN = 0,
    BOOK_WORK_CANNOT_OPEN = 1,
    BOOK_WORK_OTHER_TERMS = 2,
    BOOK_WORK_TAKEN = 3,  // another build has it open
};

// Opens the work file, which is made if there is none, and reads what it knows. `terms` is a line that tells
// how its positions are analysed; a file that was begun on other terms is left alone. One position may
// be there with several numbers of nodes.
BookWorkStatus open_book_work(const std::string& path, const std::string& terms, BookWork& work);

// The analysis of the position with just so many nodes, or null.
const BookAnalysis* find_book_work(const BookWork& work, const BookTask& task);

// Keeps the analysis, in the file too. 0, or 1 if it cannot be written.
int keep_book_work(BookWork& work, const BookTask& task, const BookAnalysis& analysis);

#include "egdb/egdb_log.h"

#include <array>
#include <cstdio>

#include "base/files.h"

namespace {

// Needs no destruction: an opening may still run and log while the process ends.
constinit std::array<char, 4096> log_file{};

void write_log(const char* mode, const char* text) {
    if (log_file[0] == '\0') return;
    const OpenFile file(std::fopen(log_file.data(), mode));
    if (file) std::fputs(text, file.get());
}

}  // namespace

void set_egdb_log_path(const std::string& path) {
    std::snprintf(log_file.data(), log_file.size(), "%s", path.c_str());
}

void empty_egdb_log() { write_log("w", ""); }

void egdb_log_text(const char* text) { write_log("a", text); }

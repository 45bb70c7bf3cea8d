#include "base/log.h"

#include <array>
#include <cstdarg>
#include <cstdio>

#include "base/files.h"

std::string log_path;
void (*log_listener)(const char* text) = nullptr;

void log_text(const char* text) {
    if (log_listener) log_listener(text);
    if (log_path.empty()) return;
    const OpenFile file(std::fopen(log_path.c_str(), "a"));
    if (file) std::fputs(text, file.get());
}

void log_printf(const char* format, ...) {
    std::array<char, 8192> line;
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    log_text(line.data());
}

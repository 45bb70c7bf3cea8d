// What the machine has: memory, processors, the date. Read from the system at each call; safe from any
// thread.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

// In bytes.
struct MemoryFigures {
    int64_t total_physical = 0;
    int64_t free_physical = 0;  // what could be had without swapping
    int64_t total_page_file = 0;
    int64_t free_page_file = 0;
    int64_t total_virtual = 0;  // the address space that this process may use
    int64_t free_virtual = 0;
};
MemoryFigures memory_figures();

// Of these the physical memory that could be had without swapping.
int64_t available_physical_memory();

// The figure behind `name` in a text of lines such as "MemTotal:   16384 kB", in bytes; -1 if it is not
// there.
int64_t memory_info_figure(std::string_view text, std::string_view name);

// Percent of the physical memory that is in use, 0 to 100.
int percent_in_use(const MemoryFigures& figures);

// Processors that are there, at least 1.
int processor_count();

// A moment in local time in the form of the library's time text, such as "Thu Jan  1 00:00:00 1970\n".
std::string time_text(std::time_t moment);

// What runs on the interface thread beside the user's doing, and when: work that other threads post, the tick
// every 50 milliseconds, and pauses in which neither runs.
#pragma once

#include <cstdint>

#include "control/ui.h"

// How punctual the ticks are; written by each. The time of a pause does not count.
struct TickFigures {
    int64_t ticks = 0;
    int64_t worst_late_us = 0;  // microseconds behind the time at which a tick was due
};
extern TickFigures tick_figures;

// Interface thread, after the application object is there and before other threads post.
void begin_interface_thread();
// After which posts are lost. Work that was posted and has not run is dropped.
void end_interface_thread();

// From any thread, without waiting: `work` is called on the interface thread, in the order of the posts.
void post_work(void (*work)(int32_t argument), int32_t argument);

// Ticks from now on, until the end.
void start_ticks();

// Passes a finished search on at once instead of with the next tick. Interface thread only.
void tick_if_search_ended();

// Lets time go by in which windows are drawn but nothing else happens: no tick, no posted work, no command.
void pause_interface(int milliseconds);
bool interface_pauses();

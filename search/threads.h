// The search threads: how they are made, woken for a search and put back to sleep. Thread 0 is whoever calls
// `getmove`; the others are workers, made once, which live until the process ends. Between searches they
// sleep, and during a search those that it uses wait on the processor for work, so that recruiting one costs
// a few stores.
#pragma once

#include "search/split.h"
#include "search/thread_record.h"

// Makes the search threads: `wanted` of them with the calling thread, 1 to 8, or with 0 one for each
// processor and 8 at most. Without a call there is thread 0 alone. Another call adds what is missing and
// never takes any away; no search may run during a call. A search uses as many as `engine_settings` asks for,
// and no more than were made. Returns how many there are, which is fewer than wanted if the system refuses
// more.
int threads_init(int wanted = 0);

// How many there are, thread 0 included.
int created_threads();

// How many the next search uses: one fewer while a database is being opened, which needs a processor.
int wanted_threads();

// Before a search, on thread 0: fixes how many threads it uses and wakes them.
void wake_workers();

// After a search, on thread 0, when no split point is in use.
void sleep_workers();

void clear_node_counters();

// Waits for work and does it: until the split point is done, or for ever without one, which is what a worker
// does. An owner that waits here for its split point may help those who still work there.
void idle_loop(ThreadRecord& thread, const SplitPoint* split);

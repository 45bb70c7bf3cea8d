// The loop of messages of a console front end that other threads speak to: they post work, which runs on the
// interface thread in the order of the posts, and wake it.
#pragma once

#include <cstdint>

// From any thread, without waiting for the interface thread; as `ui.post`.
void post_console_work(void (*work)(int32_t argument), int32_t argument);
// From any thread: the loop looks at once whether there is something to do.
void wake_console_loop();

// Interface thread. Runs one piece of posted work, or ticks if that is due or a search has ended, or else
// sleeps until there is something to do, until the next tick at most.
void turn_console_loop();

// Memory that runs out at a chosen moment: the program's `operator new` counts down.
#pragma once

// How many more allocations of the calling thread succeed; negative for all.
extern constinit thread_local int allocations_left;

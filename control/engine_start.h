// The engine's start, once, before the first search.
#pragma once

enum EngineStartStatus { ENGINE_STARTED = 0, ENGINE_NO_WEIGHTS = 1, ENGINE_NO_MEMORY = 2 };

// Empties the log and loads the weights and the opening book from the current folder: ENGINE_STARTED, or
// ENGINE_NO_WEIGHTS with the reason in the log. A book need not be there. The transposition table is not
// there yet: its size is a setting (apply_settings.h).
EngineStartStatus start_engine();

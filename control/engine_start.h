// The engine's start, once, before the first search.
#pragma once

enum EngineStartStatus { ENGINE_STARTED = 0, ENGINE_NO_WEIGHTS = 1, ENGINE_NO_MEMORY = 2 };

// Empties the log, loads the weights from the current folder and allocates the transposition table of
// `engine_settings`. What failed is in the log.
EngineStartStatus start_engine();

// The status text of a search is written by the searching thread into a buffer that is its own. Who shows the
// text meanwhile listens here, and has it each time whole.
#pragma once

// Called on thread 0 with the text, each time that it was rewritten; null for nobody. Must not wait for other
// threads. Set while no search runs.
inline void (*search_text_listener)(const char* text) = nullptr;

inline void tell_search_text(const char* text) {
    if (search_text_listener) search_text_listener(text);
}

// User-visible texts by their numeric ids, the ids that language files use too. The built-in texts are
// English; a language layer above puts itself in front of them through `text_source`.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

struct TextEntry {
    int id;
    const char* text;
};

// The built-in English texts, by rising id.
extern const std::span<const TextEntry> text_table;

// The built-in text of an id, or an empty text if there is none.
const char* built_in_text(int id);

// The id of the built-in text that reads so; 0 if there is none.
int id_of_built_in_text(std::string_view text);

// Gives the text of `id` in the current language; null for the built-in texts. Set before other threads run.
extern void (*text_source)(int id, char* buffer, size_t size);

// The text of `id` in the current language, cut to `size` - 1 characters and ended by a NUL; `size` at
// least 1.
void get_text(int id, char* buffer, size_t size);

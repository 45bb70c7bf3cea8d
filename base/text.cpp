#include "base/text.h"

#include <algorithm>
#include <cstdio>

void (*text_source)(int id, char* buffer, size_t size) = nullptr;

const char* built_in_text(int id) {
    const auto entry = std::lower_bound(text_table.begin(), text_table.end(), id,
                                        [](const TextEntry& e, int wanted) { return e.id < wanted; });
    return entry != text_table.end() && entry->id == id ? entry->text : "";
}

int id_of_built_in_text(std::string_view text) {
    const auto entry = std::find_if(text_table.begin(), text_table.end(),
                                    [text](const TextEntry& e) { return e.text == text; });
    return entry != text_table.end() ? entry->id : 0;
}

void get_text(int id, char* buffer, size_t size) {
    if (text_source)
        text_source(id, buffer, size);
    else
        std::snprintf(buffer, size, "%s", built_in_text(id));
}

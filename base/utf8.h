// Texts of the user and of language files are UTF-8, held in buffers of fixed sizes. What does not fit is cut
// between characters, so that a cut text stays one that can be shown.
#pragma once

#include <cstddef>
#include <string_view>

bool is_utf8(std::string_view text);

// How much of the text goes into `room` bytes without a character being cut in two: `room`, or up to three
// bytes less. Bytes that are no UTF-8 count as characters of their own.
size_t utf8_length_within(std::string_view text, size_t room);

// Copies the text, cut before the character that does not fit with the NUL; `size` at least 1.
void copy_utf8(std::string_view text, char* buffer, size_t size);

// The text without the beginning of a character at its end, which a cut between bytes has left there.
std::string_view without_cut_character(std::string_view text);

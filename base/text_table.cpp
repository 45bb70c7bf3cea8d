// The built-in English texts.
#include "base/text.h"

namespace {
constexpr TextEntry ENTRIES[] = {
    {187, "Average time per move cannot be less than .1 second"},
    {211, "W %02d:%02d   B %02d:%02d\r\nmoves %d\r\n"},
    {234, "value"},
    {235, "depth"},
    {236, "kN/s"},
    {237, "pv"},
    {238, "sec"},
    {247, "no moves"},
    {248, "Thinking..."},
};
}

const std::span<const TextEntry> text_table(ENTRIES);

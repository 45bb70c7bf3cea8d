// The built-in English texts.
#include "base/text.h"

namespace {
constexpr TextEntry ENTRIES[] = {
    {234, "value"}, {235, "depth"},    {236, "kN/s"},        {237, "pv"},
    {238, "sec"},   {247, "no moves"}, {248, "Thinking..."},
};
}

const std::span<const TextEntry> text_table(ENTRIES);

// The tokenizer as a table of states, one character a step: slow, and obvious. The tests hold the real one to
// it.
#pragma once

#include <string>
#include <vector>

#include "records/pdn_token.h"

struct SlowToken {
    PdnTokenKind kind = PDN_END;
    std::string key, value, text;
    int from = 0, to = 0, is_capture = 0;
    std::vector<int> path;  // three squares or more, otherwise empty
};

// Reads the token at `cursor`, which is an index into the text, and moves it.
SlowToken slow_next_token(const std::string& text, size_t& cursor);

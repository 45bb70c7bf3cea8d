// The texts of the panes as their windows want them: characters instead of bytes, lines that end in "\n".
#pragma once

#include <QString>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// A text and the characters of it that are coloured.
struct PaneText {
    QString text;
    int begin = 0;
    int end = 0;
};

// The bytes from `begin` up to `end` of the text become characters; what is out of range is brought into it.
PaneText pane_text(std::string_view bytes, int begin, int end);

// The protocol of the DamExchange pane: what was added, piece by piece.
struct DxpPiece {
    std::string bytes;
    bool received = false;
};

size_t protocol_size(const std::vector<DxpPiece>& pieces);

// Shortens a protocol of more than `limit` bytes to its last `kept`, behind one blank. A character that is
// cut in two goes whole. True if it was shortened.
bool trim_protocol(std::vector<DxpPiece>& pieces, size_t limit, size_t kept);

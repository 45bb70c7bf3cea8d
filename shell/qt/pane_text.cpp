#include "shell/qt/pane_text.h"

#include <algorithm>
#include <cstdint>

#include "shell/qt/text.h"

namespace {

QString with_plain_lines(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return text;
}

// The characters that the first `bytes` of the text become. `utf8` is how the whole text is read: a part of
// it could be read in another way by itself.
int characters_before(std::string_view text, bool utf8, int bytes) {
    const size_t size = static_cast<size_t>(std::clamp<int64_t>(bytes, 0, static_cast<int64_t>(text.size())));
    const QByteArrayView part(text.data(), static_cast<qsizetype>(size));
    return static_cast<int>(
        with_plain_lines(utf8 ? QString::fromUtf8(part) : QString::fromLatin1(part)).size());
}

}  // namespace

PaneText pane_text(std::string_view bytes, int begin, int end) {
    const QString whole = shown_text(bytes);
    const bool utf8 = bytes.starts_with(whole.toStdString());
    PaneText shown;
    shown.text = with_plain_lines(whole);
    shown.begin = characters_before(bytes, utf8, begin);
    shown.end = std::max(shown.begin, characters_before(bytes, utf8, end));
    return shown;
}

size_t protocol_size(const std::vector<DxpPiece>& pieces) {
    size_t size = 0;
    for (const DxpPiece& piece : pieces) size += piece.bytes.size();
    return size;
}

bool trim_protocol(std::vector<DxpPiece>& pieces, size_t limit, size_t kept) {
    const size_t size = protocol_size(pieces);
    if (size <= limit) return false;
    size_t surplus = size - std::min(kept, size);
    while (!pieces.empty() && surplus >= pieces.front().bytes.size()) {
        surplus -= pieces.front().bytes.size();
        pieces.erase(pieces.begin());
    }
    if (!pieces.empty()) {
        std::string& first = pieces.front().bytes;
        const auto continues = [&] { return surplus < first.size() && (first[surplus] & 0xC0) == 0x80; };
        while (surplus > 0 && continues()) ++surplus;
        first.erase(0, surplus);
    }
    pieces.insert(pieces.begin(), DxpPiece{" ", false});
    return true;
}

#include "shell/qt/text.h"

#include <algorithm>

#include "base/text.h"
#include "base/utf8.h"

namespace {

// Room for any of them in any language.
constexpr size_t PROGRAM_TEXT_SIZE = 1000;

bool is_ascii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

QString from_utf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QString shown_text(std::string_view text) {
    if (is_utf8(text)) return from_utf8(text);
    // Were all that is kept ASCII, nothing would tell of UTF-8.
    const std::string_view kept = without_cut_character(text);
    if (is_utf8(kept) && !is_ascii(kept)) return from_utf8(kept);
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

QString program_text(int id) {
    char text[PROGRAM_TEXT_SIZE];
    get_text(id, text, sizeof text);
    return shown_text(text);
}

QString program_text(int id, const QString& inserted) {
    QString text = program_text(id);
    return text.replace(QStringLiteral("%s"), inserted);
}

QString text_in_language(std::string_view text) {
    const int id = id_of_built_in_text(text);
    return id ? program_text(id) : shown_text(text);
}

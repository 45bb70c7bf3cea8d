#include "shell/qt/text.h"

#include <QStringDecoder>

#include "base/text.h"

QString shown_text(std::string_view text) {
    const QByteArrayView bytes(text.data(), static_cast<qsizetype>(text.size()));
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = utf8.decode(bytes);
    if (!utf8.hasError()) return decoded;
    return QString::fromLatin1(bytes);
}

QString program_text(int id) {
    char text[512];
    get_text(id, text, sizeof text);
    return shown_text(text);
}

#include "shell/qt/status_line.h"

#include <QPainter>

namespace {
constexpr int SIDE_MARGIN = 6;
constexpr int LINE_MARGIN = 3;  // above and below the text
}  // namespace

StatusLine::StatusLine(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("status_line"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void StatusLine::set_text(const QString& text) {
    if (text == told) return;
    told = text;
    show_line();
}

void StatusLine::set_typing(const QString& text) {
    if (text == typed) return;
    typed = text;
    show_line();
}

const QString& StatusLine::shown() const { return typed.isEmpty() ? told : typed; }

void StatusLine::show_line() {
    setAccessibleName(shown());
    update();
}

QSize StatusLine::sizeHint() const { return {0, fontMetrics().height() + 2 * LINE_MARGIN}; }

QSize StatusLine::minimumSizeHint() const { return sizeHint(); }

void StatusLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect place = rect().adjusted(SIDE_MARGIN, 0, -SIDE_MARGIN, 0);
    const QString line = shown().simplified();
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(line, Qt::ElideRight, place.width()));
}

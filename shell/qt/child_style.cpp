#include "shell/qt/child_style.h"

#include <QApplication>
#include <QPainter>
#include <algorithm>

namespace {

constexpr double CROSS_OF_BUTTON = 0.42;
constexpr double LINE_OF_BUTTON = 0.11;
constexpr int HOVER_ALPHA = 50, PRESSED_ALPHA = 100;

}  // namespace

ChildStyle::ChildStyle() : QProxyStyle(QApplication::style()->name()) {}

void ChildStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const {
    const auto* const bar = qstyleoption_cast<const QStyleOptionTitleBar*>(option);
    if (control != CC_TitleBar || !bar || !(bar->subControls & SC_TitleBarCloseButton))
        return QProxyStyle::drawComplexControl(control, option, painter, widget);
    QStyleOptionTitleBar without = *bar;
    without.subControls &= ~SC_TitleBarCloseButton;
    QProxyStyle::drawComplexControl(control, &without, painter, widget);
    draw_cross(*bar, *painter, widget);
}

void ChildStyle::draw_cross(const QStyleOptionTitleBar& bar, QPainter& painter, const QWidget* widget) const {
    const QRect button = proxy()->subControlRect(CC_TitleBar, &bar, SC_TitleBarCloseButton, widget);
    if (button.isEmpty()) return;
    // The bar of the active window has the colour of what is selected, which is dark here.
    const bool active = bar.titleBarState & State_Active;
    const QColor colour = active ? QColor(Qt::white) : bar.palette.color(QPalette::WindowText);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (bar.activeSubControls & SC_TitleBarCloseButton) {
        QColor behind = colour;
        behind.setAlpha(bar.state & State_Sunken ? PRESSED_ALPHA : HOVER_ALPHA);
        painter.setPen(Qt::NoPen);
        painter.setBrush(behind);
        painter.drawRoundedRect(button, 3, 3);
    }
    const double extent = std::min(button.width(), button.height());
    const double half = extent * CROSS_OF_BUTTON / 2;
    const QPointF middle = QRectF(button).center();
    painter.setPen(QPen(colour, std::max(extent * LINE_OF_BUTTON, 1.2), Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(middle + QPointF(-half, -half), middle + QPointF(half, half));
    painter.drawLine(middle + QPointF(-half, half), middle + QPointF(half, -half));
    painter.restore();
}

#include "shell/qt/board_window.h"

#include <QCloseEvent>
#include <QLayout>
#include <algorithm>

#include "control/settings.h"
#include "shell/board_geometry.h"

namespace {

// A size that the keyboard or the frame has changed is settled when no other change follows for this time.
constexpr int SETTLE_MS = 120;

WindowPlace place_of(const QRect& rect) { return {rect.x(), rect.y(), rect.width(), rect.height()}; }

QRect rect_of(const WindowPlace& place) { return {place.left, place.top, place.width, place.height}; }

}  // namespace

BoardWindow::BoardWindow(QWidget* parent) : QMdiSubWindow(parent), held(new Board) {
    // A bar to move it by, and no button on it.
    setWindowFlags(Qt::SubWindow | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    setWidget(held);
    settle_timer.setSingleShot(true);
    settle_timer.setInterval(SETTLE_MS);
    connect(&settle_timer, &QTimer::timeout, this, &BoardWindow::settle);
    follow_square_size();
}

Board& BoardWindow::board() { return *held; }

bool BoardWindow::is_settled() const { return !settle_timer.isActive(); }

QSize BoardWindow::frame_extents() const {
    const QMargins margins = contentsMargins();
    return {margins.left() + margins.right(), margins.top() + margins.bottom()};
}

void BoardWindow::follow_square_size() {
    settings.square_size = usable_square_size(settings.square_size);
    const int extent = settings.square_size * BOARD_ROWS;
    held->updateGeometry();
    resize(QSize(extent, extent) + frame_extents());
    settle_timer.stop();
}

void BoardWindow::settle() {
    if (border_held) return settle_timer.start();
    const QSize client = size() - frame_extents();
    const int by_width = square_size_for(client.width());
    const int by_height = square_size_for(client.height());
    const int old = settings.square_size;
    if (by_width == old || by_height == old)
        settings.square_size = by_width == old ? by_height : by_width;
    else
        settings.square_size = std::min(by_width, by_height);
    follow_square_size();
}

void BoardWindow::let_go() {
    board().let_go();
    border_held = false;
}

void BoardWindow::closeEvent(QCloseEvent* event) { event->ignore(); }

void BoardWindow::changeEvent(QEvent* event) {
    QMdiSubWindow::changeEvent(event);
    // The area maximizes the window that follows on a maximized one.
    const bool changed = event->type() == QEvent::WindowStateChange;
    if (changed && (isMaximized() || isMinimized()))
        QTimer::singleShot(0, this, [this] {
            showNormal();
            follow_square_size();
        });
}

void BoardWindow::mousePressEvent(QMouseEvent* event) {
    // The right button opens a menu, which has its release.
    border_held = event->button() == Qt::LeftButton;
    QMdiSubWindow::mousePressEvent(event);
}

void BoardWindow::mouseMoveEvent(QMouseEvent* event) {
    const QRect before = geometry();
    QMdiSubWindow::mouseMoveEvent(event);
    if (geometry().size() == before.size()) return;
    const QSize frame = frame_extents();
    setGeometry(
        rect_of(squared_window(place_of(geometry()), place_of(before), frame.width(), frame.height())));
}

void BoardWindow::mouseReleaseEvent(QMouseEvent* event) {
    QMdiSubWindow::mouseReleaseEvent(event);
    border_held = false;
    if (settle_timer.isActive()) settle();
}

void BoardWindow::resizeEvent(QResizeEvent* event) {
    QMdiSubWindow::resizeEvent(event);
    settle_timer.start();
}

void BoardWindow::showEvent(QShowEvent* event) {
    QMdiSubWindow::showEvent(event);
    // Only now is the frame known as it is drawn.
    follow_square_size();
}

#include "shell/qt/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLayout>
#include <QMenuBar>
#include <QScreen>
#include <QScrollBar>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <algorithm>
#include <chrono>
#include <vector>

#include "base/program_paths.h"
#include "shell/qt/arrangement.h"
#include "shell/qt/art.h"
#include "shell/qt/commands.h"
#include "shell/qt/text.h"
#include "shell/qt/tool_bar.h"
#include "shell/qt/window_records.h"

MainWindow* main_window = nullptr;

namespace {

// What the panes beside the board show without breaking it.
const QString LONG_LINE = QStringLiteral("Search mode: Analyze allscores");

// The bars of the child windows are calmer than what is selected in a list, so that the board has the eye.
QPalette child_palette() {
    constexpr float SATURATION = 0.35f;
    constexpr float BRIGHTNESS = 0.45f;
    QPalette palette;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        const QColor lively = QApplication::palette().color(group, QPalette::Highlight);
        palette.setColor(group, QPalette::Highlight,
                         QColor::fromHsvF(std::max(lively.hsvHueF(), 0.0f),
                                          lively.hsvSaturationF() * SATURATION, BRIGHTNESS));
    }
    return palette;
}

QList<QRect> screen_rooms() {
    QList<QRect> rooms;
    for (const QScreen* const screen : QGuiApplication::screens()) rooms.append(screen->availableGeometry());
    return rooms;
}

ArrangementInput arrangement_input(MainWindow& window, const QSize& room) {
    ArrangementInput input;
    input.room = room;
    input.square_size = settings.square_size;
    window.board_window().follow_square_size();
    const int extent = settings.square_size * 10;
    input.board_frame = window.board_window().size() - QSize(extent, extent);
    const WindowRecord* const records = settings.child_windows;
    input.column_width =
        std::max(records[GAME_WINDOW].width, window.pane(GAME_WINDOW).width_for_text(LONG_LINE));
    constexpr std::array<int, CHILD_WINDOWS> LINES = {2, 0, 3, 4, 6};
    for (size_t i = 0; i < CHILD_WINDOWS; ++i) {
        const ChildWindow which = static_cast<ChildWindow>(i);
        input.heights[i] = std::max(records[i].height, window.pane(which).height_for_lines(LINES[i]));
        input.visible[i] = records[i].visible != 0;
    }
    return input;
}

}  // namespace

MainWindow::MainWindow()
    : mdi_area(new QMdiArea), buttons(new QToolBar), line(new StatusLine), board_child(new BoardWindow) {
    main_window = this;
    setObjectName(QStringLiteral("main_window"));
    setWindowTitle(shown_text(program_paths.window_title));
    setWindowIcon(program_icon());
    setContextMenuPolicy(Qt::PreventContextMenu);
    build_menu(*this, main_menu, run_command, binding);
    build_tool_bar(*buttons, binding, run_command);
    addToolBar(Qt::TopToolBarArea, buttons);
    statusBar()->addWidget(line, 1);
    update_scroll_bars();
    mdi_area->setFrameShape(QFrame::NoFrame);
    setCentralWidget(mdi_area);
    mdi_area->addSubWindow(board_child);
    name_board();
    connect(&board_child->board(), &Board::typing_changed, line, &StatusLine::set_typing);
    for (size_t i = 0; i < CHILD_WINDOWS; ++i) {
        panes[i] = new PaneWindow(static_cast<ChildWindow>(i));
        panes[i]->setStyle(&child_style);
        mdi_area->addSubWindow(panes[i]);
        panes[i]->hide();
        connect(panes[i], &PaneWindow::closed, this,
                [this](int which) { show_pane(static_cast<ChildWindow>(which), false); });
    }
    follow_colours();
}

void MainWindow::follow_colours() {
    const QPalette palette = child_palette();
    mdi_area->setBackground(QApplication::palette().brush(QPalette::Dark));
    board_child->setPalette(palette);
    for (PaneWindow* const child : panes) {
        child->setPalette(palette);
        child->follow_settings();
    }
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && panes.back()) follow_colours();
}

void MainWindow::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    if (!isMaximized()) decoration = geometry().topLeft() - pos();
}

MainWindow::~MainWindow() { main_window = nullptr; }

void MainWindow::name_board() {
    board_child->setAccessibleName(program_text(TEXT_BOARD));
    board_child->board().setAccessibleName(program_text(TEXT_BOARD));
}

void MainWindow::follow_language() {
    show_menu_texts(main_menu, binding);
    show_tool_bar_texts(*buttons);
    for (PaneWindow* const child : panes) child->follow_language();
    name_board();
    menuBar()->update();
}

void MainWindow::show_menu(const MenuState& state) {
    menu_now = state;
    show_menu();
}

void MainWindow::show_menu() { show_menu_state(menu_now, binding); }

void MainWindow::follow_pane_settings() {
    for (PaneWindow* const child : panes) child->follow_settings();
}

// What menu, toolbar and status line take of the frame.
QSize MainWindow::chrome() {
    if (isVisible()) return size() - mdi_area->size();
    ensurePolished();
    return {0,
            menuBar()->sizeHint().height() + buttons->sizeHint().height() + statusBar()->sizeHint().height()};
}

// The room for the frame on its screen, without what the desktop puts around it.
QRect MainWindow::screen_room() {
    const QScreen* const on = screen();
    if (!on) return {0, 0, settings.main_window.width, settings.main_window.height};
    const QSize around = isVisible() && frameSize() != size() ? frameSize() - size() : ASSUMED_DECORATION;
    const QRect room = on->availableGeometry();
    return {room.topLeft(), (room.size() - around).expandedTo(QSize(1, 1))};
}

void MainWindow::set_inside(const QSize& inside) {
    if (isMaximized() || isFullScreen()) showNormal();
    resize((inside + chrome()).boundedTo(screen_room().size()));
    layout()->activate();
}

QPoint MainWindow::scroll_offset() const {
    return {mdi_area->horizontalScrollBar()->value(), mdi_area->verticalScrollBar()->value()};
}

// The area sees windows that move, but not those that are hidden.
void MainWindow::update_scroll_bars() {
    for (const Qt::ScrollBarPolicy policy : {Qt::ScrollBarAlwaysOff, Qt::ScrollBarAsNeeded}) {
        mdi_area->setHorizontalScrollBarPolicy(policy);
        mdi_area->setVerticalScrollBarPolicy(policy);
    }
}

void MainWindow::show_panes_of_settings() {
    for (size_t i = 0; i < CHILD_WINDOWS; ++i) panes[i]->setVisible(settings.child_windows[i].visible != 0);
    board_child->show();
    board_child->raise();
    mdi_area->setActiveSubWindow(board_child);
    board_child->board().setFocus();
    update_scroll_bars();
}

void MainWindow::place_windows() {
    const WindowRecord& record = settings.main_window;
    const bool maximized = record.visible == FRAME_MAXIMIZED;
    const QList<QRect> rooms = screen_rooms();
    board_child->follow_square_size();
    // The board of a larger screen would hide all other windows.
    const QSize board = board_child->size();
    const bool too_large =
        !rooms.isEmpty() && board.boundedTo(nearest_area(place_of_record(record), rooms).size()) != board;
    if (too_large)
        arrange();
    else
        place_as_recorded(record);
    if (maximized) setWindowState(windowState() | Qt::WindowMaximized);
}

void MainWindow::place_as_recorded(const WindowRecord& record) {
    const QRect frame = place_in_view(place_of_record(record), screen_rooms());
    const bool maximized = record.visible == FRAME_MAXIMIZED;
    resize(frame.size().boundedTo(screen_room().size()));
    if (!has_default_place(record)) move(frame.topLeft());
    layout()->activate();
    const QSize room = maximized ? screen_room().size() - chrome() : mdi_area->size();
    const QList<QRect> inside{QRect(QPoint(0, 0), room)};
    board_child->move(WINDOW_GAP, WINDOW_GAP);
    for (size_t i = 0; i < CHILD_WINDOWS; ++i) {
        // What is hidden keeps its place until it is shown.
        const WindowRecord& child = settings.child_windows[i];
        const QRect place = place_of_record(child);
        panes[i]->setGeometry(child.visible ? place_in_view(place, inside) : place);
    }
    show_panes_of_settings();
}

void MainWindow::arrange() {
    const QSize room = screen_room().size() - chrome();
    const Arrangement places = arrange_windows(arrangement_input(*this, room));
    settings.square_size = places.square_size;
    board_child->follow_square_size();
    set_inside(places.area);
    mdi_area->horizontalScrollBar()->setValue(0);
    mdi_area->verticalScrollBar()->setValue(0);
    board_child->move(places.board.topLeft());
    for (size_t i = 0; i < CHILD_WINDOWS; ++i) panes[i]->setGeometry(places.panes[i]);
    show_panes_of_settings();
    if (isVisible()) keep_frame_on_screen();
}

// Where the frame is, or was before it was maximized.
QRect MainWindow::normal_place() const {
    const QRect normal = normalGeometry();
    if (!isMaximized() || !normal.isValid()) return {pos(), size()};
    return normal.translated(-decoration);
}

void MainWindow::read_windows(Settings& record) {
    record.main_window.visible = isMaximized() ? FRAME_MAXIMIZED : FRAME_SHOWN;
    store_place(record.main_window, normal_place());
    const QPoint offset = scroll_offset();
    for (size_t i = 0; i < CHILD_WINDOWS; ++i)
        store_place(record.child_windows[i], panes[i]->geometry().translated(offset));
}

QRect MainWindow::free_place_for(const PaneWindow& child, const QSize& room) const {
    std::vector<QRect> others = {board_child->geometry()};
    for (const PaneWindow* const pane : panes)
        if (pane != &child && pane->isVisible()) others.push_back(pane->geometry());
    return free_place(child.size(), child.width_for_text(LONG_LINE), mdi_area->size(), room, others);
}

// A pane may have its place below or beside what the frame shows: the frame then grows, if the screen has
// room for that. Otherwise the pane goes where there is room, and if there is none it moves in over others.
void MainWindow::bring_into_view(PaneWindow& child) {
    const QSize most = screen_room().size() - chrome();
    const QRect wanted = child.geometry();
    if (!QRect(QPoint(0, 0), most).contains(wanted))
        if (const QRect free = free_place_for(child, most); !free.isEmpty()) child.setGeometry(free);
    const QRect place = child.geometry();
    const QSize needed(place.right() + 1 + WINDOW_GAP, place.bottom() + 1 + WINDOW_GAP);
    const QSize grown = needed.expandedTo(mdi_area->size());
    const bool fits = grown.boundedTo(most) == grown;
    if (fits && grown != mdi_area->size() && !isMaximized() && !isFullScreen()) {
        set_inside(grown);
        keep_frame_on_screen();
    }
    const QRect inside(QPoint(0, 0), mdi_area->size());
    if (inside.contains(place)) return;
    QRect moved(place.topLeft(), place.size().boundedTo(inside.size()));
    moved.moveTo(std::clamp(moved.x(), 0, inside.width() - moved.width()),
                 std::clamp(moved.y(), 0, inside.height() - moved.height()));
    child.setGeometry(moved);
}

void MainWindow::show_pane(ChildWindow which, bool visible) {
    settings.child_windows[which].visible = visible;
    PaneWindow& child = *panes[which];
    child.setVisible(visible);
    if (visible) {
        bring_into_view(child);
        mdi_area->setActiveSubWindow(&child);
        child.raise();
    } else {
        mdi_area->setActiveSubWindow(board_child);
        board_child->board().setFocus();
        update_scroll_bars();
    }
    show_menu();
}

// Once its decoration is known the frame may turn out too large or too far out.
void MainWindow::keep_frame_on_screen() {
    if (isMaximized() || isFullScreen()) return;
    decoration = geometry().topLeft() - pos();
    const QRect outside = frameGeometry();
    const QRect fitted = place_in_view(outside, screen_rooms());
    if (fitted.size() != outside.size()) resize(size() - (outside.size() - fitted.size()));
    if (fitted.topLeft() != outside.topLeft()) move(fitted.topLeft());
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (event->spontaneous()) return;
    // Some window managers tell their decoration only a while after they have made it.
    constexpr std::chrono::milliseconds DECORATED(300);
    QTimer::singleShot(0, this, &MainWindow::keep_frame_on_screen);
    QTimer::singleShot(DECORATED, this, &MainWindow::keep_frame_on_screen);
}

bool MainWindow::event(QEvent* event) {
    // A box opens, and has the release of a button that is down.
    if (event->type() == QEvent::WindowBlocked) board_child->let_go();
    return QMainWindow::event(event);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    // A busy disk may take seconds to have the settings; the user need not look on.
    read_windows(settings);
    hide();
    before_close();
    event->accept();
}

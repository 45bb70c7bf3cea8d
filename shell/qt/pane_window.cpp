#include "shell/qt/pane_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>
#include <QStyle>
#include <QTextBlock>
#include <array>

#include "control/text_ids.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

constexpr const char* SYSTEM_FONT = "MS Shell Dlg";
constexpr int TEXT_MARGIN = 4;

// The colour of the current move and of what was received, and its lighter form for a dark background.
constexpr QRgb MARK_COLOUR = qRgb(200, 80, 0);
constexpr QRgb MARK_COLOUR_ON_DARK = qRgb(255, 150, 80);

constexpr std::array<int, CHILD_WINDOWS> TITLES = {TEXT_CLOCK_PANE, TEXT_GAME_PANE, TEXT_STATUS_PANE,
                                                   TEXT_PONDER_PANE, TEXT_DXP_PANE};

constexpr std::array<const char*, CHILD_WINDOWS> NAMES = {"clock_pane", "game_pane", "status_pane",
                                                          "ponder_pane", "dxp_pane"};

bool is_dark(const QColor& colour) { return qGray(colour.rgb()) < 128; }

// White with black text, or as dialogs are.
QPalette pane_palette() {
    QPalette palette = QApplication::palette();
    // Those of the window are its title bar's.
    for (const QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText})
        palette.setBrush(role, palette.brush(role));
    if (settings.background_kind == 0) {
        palette.setColor(QPalette::Base, Qt::white);
        palette.setColor(QPalette::Text, Qt::black);
    } else {
        palette.setColor(QPalette::Base, palette.color(QPalette::Window));
        palette.setColor(QPalette::Text, palette.color(QPalette::WindowText));
    }
    return palette;
}

// Without one the title bar shows that of the toolkit.
QIcon no_icon() {
    QPixmap nothing(16, 16);
    nothing.fill(Qt::transparent);
    return QIcon(nothing);
}

QTextCharFormat mark_format(const QPalette& palette) {
    QTextCharFormat format;
    format.setForeground(
        QColor::fromRgb(is_dark(palette.color(QPalette::Base)) ? MARK_COLOUR_ON_DARK : MARK_COLOUR));
    return format;
}

}  // namespace

QFont pane_font() {
    QFont font = QApplication::font();
    const QString name = shown_text(setting_text(settings.font_name));
    // The name of no font, but of the one that the system has for dialogs.
    if (!name.isEmpty() && name != QString::fromLatin1(SYSTEM_FONT)) font.setFamily(name);
    font.setPointSizeF(
        setting_number(double{settings.font_size}, double{LEAST_FONT_SIZE}, double{LARGEST_FONT_SIZE}));
    font.setBold(settings.font_bold != 0);
    font.setItalic(settings.font_italic != 0);
    return font;
}

PaneEdit::PaneEdit(QWidget* parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setFrameShape(QFrame::NoFrame);
    document()->setDocumentMargin(TEXT_MARGIN);
}

void PaneEdit::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    QAction* const copy_action = menu.addAction(program_text(TEXT_COPY), this, &QPlainTextEdit::copy);
    copy_action->setEnabled(textCursor().hasSelection());
    menu.addAction(program_text(TEXT_SELECT_ALL), this, &QPlainTextEdit::selectAll);
    menu.exec(event->globalPos());
}

PaneWindow::PaneWindow(ChildWindow which, QWidget* parent)
    : QMdiSubWindow(parent), pane(which), text_edit(new PaneEdit(this)) {
    setObjectName(QString::fromLatin1(NAMES[which]));
    setWindowFlags(Qt::SubWindow | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setWidget(text_edit);
    setWindowIcon(no_icon());
    const bool protocol_pane = which == DXP_WINDOW;
    const bool scrolls = protocol_pane || which == GAME_WINDOW;
    text_edit->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    text_edit->setHorizontalScrollBarPolicy(protocol_pane ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    text_edit->setLineWrapMode(protocol_pane ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
    follow_language();
    follow_settings();
}

void PaneWindow::set_text(const char* text) {
    PaneText wanted = pane_text(text, 0, 0);
    // An empty line at the end would let the text scroll where all of it is to be seen.
    while (wanted.text.endsWith(QLatin1Char('\n'))) wanted.text.chop(1);
    if (wanted.text == shown.text) return;
    shown = std::move(wanted);
    text_edit->setPlainText(shown.text);
}

void PaneWindow::set_game_text(const char* text, int begin, int end) {
    PaneText wanted = pane_text(text, begin, end);
    const bool same_text = wanted.text == shown.text;
    if (same_text && wanted.begin == shown.begin && wanted.end == shown.end) return;
    shown = std::move(wanted);
    if (!same_text) text_edit->setPlainText(shown.text);
    colour_range();
    QTextCursor cursor(text_edit->document());
    cursor.setPosition(shown.end);
    text_edit->setTextCursor(cursor);
    text_edit->ensureCursorVisible();
}

void PaneWindow::colour_range() {
    QList<QTextEdit::ExtraSelection> ranges;
    if (shown.end > shown.begin) {
        QTextEdit::ExtraSelection range;
        range.format = mark_format(text_edit->palette());
        range.cursor = QTextCursor(text_edit->document());
        range.cursor.setPosition(shown.begin);
        range.cursor.setPosition(shown.end, QTextCursor::KeepAnchor);
        ranges.append(range);
    }
    text_edit->setExtraSelections(ranges);
}

void PaneWindow::append_text(const char* text, bool received) {
    if (!*text) return;
    protocol.push_back({text, received});
    QTextCursor cursor(text_edit->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(pane_text(text, 0, 0).text,
                      received ? mark_format(text_edit->palette()) : QTextCharFormat());
    text_edit->verticalScrollBar()->setValue(text_edit->verticalScrollBar()->maximum());
}

void PaneWindow::trim_text(size_t limit, size_t kept) {
    if (trim_protocol(protocol, limit, kept)) rebuild_protocol();
}

void PaneWindow::rebuild_protocol() {
    std::vector<DxpPiece> pieces;
    pieces.swap(protocol);
    text_edit->clear();
    for (const DxpPiece& piece : pieces) append_text(piece.bytes.c_str(), piece.received);
}

void PaneWindow::follow_settings() {
    text_edit->setFont(pane_font());
    text_edit->setPalette(pane_palette());
    if (pane == DXP_WINDOW)
        rebuild_protocol();
    else
        colour_range();
}

void PaneWindow::follow_language() {
    setWindowTitle(program_text(TITLES[pane]));
    text_edit->setAccessibleName(windowTitle());
}

int PaneWindow::height_for_lines(int lines) const {
    const int frame = style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, this);
    const int title = style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, this);
    return title + 2 * frame + 2 * TEXT_MARGIN + lines * QFontMetrics(text_edit->font()).lineSpacing();
}

int PaneWindow::width_for_text(const QString& line) const {
    const int frame = style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, this);
    const int scroll_bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    return 2 * frame + 2 * TEXT_MARGIN + scroll_bar + QFontMetrics(text_edit->font()).horizontalAdvance(line);
}

void PaneWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    Q_EMIT closed(pane);
}

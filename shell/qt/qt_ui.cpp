#include "shell/qt/qt_ui.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

#include "base/paths.h"
#include "base/utf8.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/file_choice.h"
#include "shell/qt/interface_thread.h"
#include "shell/qt/main_window.h"
#include "shell/qt/sound.h"
#include "shell/qt/text.h"
#include "shell/qt/tool_bar.h"

namespace {

// A box belongs to the dialog that is open, if one is.
QWidget* box_parent() {
    QWidget* const dialog = QApplication::activeModalWidget();
    return dialog ? dialog : main_window;
}

QMessageBox::Icon box_icon(MessageIcon icon) {
    switch (icon) {
        case ICON_INFO:
            return QMessageBox::Information;
        case ICON_WARNING:
            return QMessageBox::Warning;
        case ICON_ERROR:
            return QMessageBox::Critical;
        default:
            return QMessageBox::NoIcon;
    }
}

void redraw_board() {
    if (main_window) main_window->board_window().board().redraw();
}

void set_side_button(int side) {
    if (main_window) show_side_picture(main_window->tool_bar(), side);
}

void set_status_text(const char* text) {
    if (main_window) main_window->status_line().set_text(shown_text(text));
}

void set_title(const char* title) {
    if (main_window) main_window->setWindowTitle(shown_text(title));
}

void show_menu(const MenuState& state) {
    if (main_window) main_window->show_menu(state);
}

void set_pane_text(ChildWindow pane, const char* text) {
    if (main_window) main_window->pane(pane).set_text(text);
}

void set_game_text(const char* text, int begin, int end) {
    if (main_window) main_window->pane(GAME_WINDOW).set_game_text(text, begin, end);
}

void append_dxp_text(const char* text, bool received) {
    if (main_window) main_window->pane(DXP_WINDOW).append_text(text, received);
}

void trim_dxp_text(size_t limit, size_t kept) {
    if (main_window) main_window->pane(DXP_WINDOW).trim_text(limit, kept);
}

// A box is as wide as its text alone wants it, which a short text may make too narrow for the title bar.
void make_room_for_title(QMessageBox& box) {
    constexpr int BUTTONS_OF_TITLE_BAR = 140;
    auto* const grid = qobject_cast<QGridLayout*>(box.layout());
    if (!grid) return;
    const int width = box.fontMetrics().horizontalAdvance(box.windowTitle()) + BUTTONS_OF_TITLE_BAR;
    grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
}

void name_buttons(const QMessageBox& box) {
    if (QAbstractButton* const ok = box.button(QMessageBox::Ok)) ok->setText(program_text(TEXT_OK));
    if (QAbstractButton* const cancel = box.button(QMessageBox::Cancel))
        cancel->setText(program_text(TEXT_CANCEL));
}

int show_box(QMessageBox& box, const char* text, const char* title, QMessageBox::StandardButtons buttons) {
    box.setWindowTitle(text_in_language(title));
    box.setTextFormat(Qt::PlainText);
    box.setText(text_in_language(text));
    box.setStandardButtons(buttons);
    name_buttons(box);
    make_room_for_title(box);
    return box.exec();
}

// A box is as high as its text wants it, and may then have its button beyond the screen. This text wants more
// than half of the screen, at a width that boxes for long texts have at least.
bool is_too_long_for_box(const QString& text) {
    constexpr int NARROW_BOX = 300;
    const QWidget* const parent = box_parent();
    const QScreen* const screen = parent ? parent->screen() : QGuiApplication::primaryScreen();
    const QRect wrapped = QFontMetrics(QApplication::font("QMessageBox"))
                              .boundingRect(QRect(0, 0, NARROW_BOX, 0), Qt::TextWordWrap, text);
    return wrapped.height() > screen->availableGeometry().height() / 2;
}

// A text that has to be scrolled.
void show_long_text(const QString& text, const QString& title) {
    QDialog dialog(box_parent());
    dialog.setWindowTitle(title);
    auto* const column = new QVBoxLayout(&dialog);
    auto* const field = new QPlainTextEdit(text);
    field->setReadOnly(true);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    column->addWidget(field);
    column->addWidget(buttons);
    name_buttons(dialog);
    const QSize room = dialog.screen()->availableSize();
    dialog.resize(std::min(500, room.width() / 2), room.height() / 2);
    buttons->button(QDialogButtonBox::Ok)->setFocus();
    dialog.exec();
}

void message_box(const char* text, const char* title, MessageIcon icon) {
    const QString shown = text_in_language(text);
    if (is_too_long_for_box(shown)) return show_long_text(shown, text_in_language(title));
    QMessageBox box(box_parent());
    box.setIcon(box_icon(icon));
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);
    show_box(box, text, title, QMessageBox::Ok);
}

bool ask(const char* text, const char* title) {
    QMessageBox box(box_parent());
    box.setIcon(QMessageBox::Question);
    return show_box(box, text, title, QMessageBox::Ok | QMessageBox::Cancel) == QMessageBox::Ok;
}

bool choose_load_file(const char* title, std::string& path) {
    return choose_file_to_load(box_parent(), title, path);
}

bool choose_save_file(const char* title, std::string& path) {
    return choose_file_to_save(box_parent(), title, path);
}

int choose_game(const char* text, const PdnOffsets& offsets, int count, int selected) {
    return select_game_dialog(box_parent(), text, offsets, count, selected);
}

bool edit_headers(GameHeaders& headers) { return game_information_dialog(box_parent(), headers); }

bool read_clipboard(char* buffer, size_t size) {
    const QMimeData* const data = QGuiApplication::clipboard()->mimeData();
    if (!data || !data->hasText()) return false;
    copy_utf8(data->text().toStdString(), buffer, size);
    return true;
}

bool write_clipboard(const char* text) {
    const QString wanted = shown_text(text);
    QGuiApplication::clipboard()->setText(wanted);
    return QGuiApplication::clipboard()->text() == wanted;
}

void open_file(const char* path) {
    const std::string file = absolute_path(path);
    if (!open_document(file)) tell_cannot_open(file);
}

void show_posted_picture(int32_t picture) {
    if (main_window) show_search_picture(main_window->tool_bar(), static_cast<SearchPicture>(picture));
    tick_if_search_ended();
}

}  // namespace

Ui make_qt_ui() {
    return {
        .redraw_board = redraw_board,
        .set_side_button = set_side_button,
        .set_status_text = set_status_text,
        .set_title = set_title,
        .update_menu = show_menu,
        .set_pane_text = set_pane_text,
        .set_game_text = set_game_text,
        .append_dxp_text = append_dxp_text,
        .trim_dxp_text = trim_dxp_text,
        .message_box = message_box,
        .ask = ask,
        .choose_load_file = choose_load_file,
        .choose_save_file = choose_save_file,
        .choose_game = choose_game,
        .edit_headers = edit_headers,
        .read_clipboard = read_clipboard,
        .write_clipboard = write_clipboard,
        .open_file = open_file,
        .play_sound = play_sound_file,
        .pause = pause_interface,
        .post_search_picture = [](SearchPicture picture) { post_work(show_posted_picture, picture); },
        .post = post_work,
    };
}

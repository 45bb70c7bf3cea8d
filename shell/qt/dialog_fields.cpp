#include "shell/qt/dialog_fields.h"

#include <QDialogButtonBox>
#include <QPalette>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <charconv>
#include <limits>

#include "base/utf8.h"
#include "shell/menu.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"
#include "shell/qt/window_records.h"

namespace {

bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_sign(char c) { return c == '+' || c == '-'; }

std::string_view without_blanks(std::string_view text) {
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    return text;
}

size_t skip_digits(std::string_view text, size_t at) {
    while (at < text.size() && is_digit(text[at])) ++at;
    return at;
}

// How much of the text, which has no blanks in front, is a number; 0 if nothing is.
size_t number_length(std::string_view text) {
    const size_t start = !text.empty() && is_sign(text[0]) ? 1 : 0;
    size_t end = skip_digits(text, start);
    size_t digits = end - start;
    if (end < text.size() && text[end] == '.') {
        const size_t behind = skip_digits(text, end + 1);
        digits += behind - (end + 1);
        end = behind;
    }
    if (digits == 0) return 0;
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        const size_t exponent = end + 1 + (end + 1 < text.size() && is_sign(text[end + 1]) ? 1 : 0);
        const size_t behind = skip_digits(text, exponent);
        if (behind > exponent) end = behind;
    }
    return end;
}

void name_button(const QDialogButtonBox& box, QDialogButtonBox::StandardButton which, const QString& name,
                 const QString& text) {
    QPushButton* const button = box.button(which);
    if (!button) return;
    button->setObjectName(name);
    button->setText(text);
}

// What cannot be changed has the colour of the dialog.
void show_as_read_only(QLineEdit& edit) {
    QPalette palette = edit.palette();
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
    edit.setPalette(palette);
}

void move_item(QBoxLayout& from, QBoxLayout& to) {
    QLayoutItem* const item = from.takeAt(0);
    if (QLayout* const layout = item->layout()) return to.addLayout(layout);
    if (!item->widget()) return to.addItem(item);
    to.addWidget(item->widget());
    delete item;
}

// Puts all but the last row, which is that of the buttons, into an area that scrolls.
void let_scroll(QDialog& dialog) {
    auto* const rows = qobject_cast<QVBoxLayout*>(dialog.layout());
    if (!rows) return;
    QWidget* const focus = dialog.focusWidget();
    // Within the dialog from the start on, so that the order of its fields stays.
    auto* const area = new QScrollArea(&dialog);
    auto* const content = new QWidget(&dialog);
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins({});
    column->setSpacing(rows->spacing());
    while (rows->count() > 1) move_item(*rows, *column);
    area->setFocusPolicy(Qt::NoFocus);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(content);
    rows->insertWidget(0, area);
    rows->setSizeConstraint(QLayout::SetDefaultConstraint);
    if (focus) focus->setFocus();
}

}  // namespace

void name_buttons(QDialog& dialog) {
    const QDialogButtonBox* const box = dialog.findChild<QDialogButtonBox*>();
    if (!box) return;
    name_button(*box, QDialogButtonBox::Ok, QStringLiteral("id_1"), program_text(TEXT_OK));
    name_button(*box, QDialogButtonBox::Cancel, QStringLiteral("id_2"), program_text(TEXT_CANCEL));
}

void prepare_dialog(QDialog& dialog, int32_t number) {
    name_buttons(dialog);
    for (QLineEdit* const edit : dialog.findChildren<QLineEdit*>())
        if (edit->isReadOnly()) show_as_read_only(*edit);
    translate_dialog(dialog, number);
    fit_to_screen(dialog);
}

void fit_to_screen(QDialog& dialog) {
    dialog.ensurePolished();
    const QSize room = dialog.screen()->availableSize() - ASSUMED_DECORATION;
    if (dialog.testAttribute(Qt::WA_Resized)) return dialog.resize(dialog.size().boundedTo(room));
    const QSize wanted = dialog.sizeHint();
    if (wanted.boundedTo(room) == wanted) return;
    let_scroll(dialog);
    const int bar = dialog.style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &dialog);
    dialog.resize((wanted + QSize(bar, bar)).boundedTo(room));
}

void take_command_title(QDialog& dialog, int32_t command) {
    const MenuItem* const item = find_menu_item(main_menu, command);
    if (!item) return;
    QString title = shown_text(item->text).section(QLatin1Char('\t'), 0, 0);
    title.remove(QLatin1Char('&')).remove(QStringLiteral("..."));
    dialog.setWindowTitle(title);
}

int32_t read_integer(std::string_view text) {
    text = without_blanks(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    constexpr int64_t LARGEST = std::numeric_limits<int32_t>::max();
    int64_t number = 0;
    for (size_t i = 0; i < text.size() && is_digit(text[i]); ++i)
        number = std::min(number * 10 + (text[i] - '0'), LARGEST + 1);
    return static_cast<int32_t>(negative ? -number : std::min(number, LARGEST));
}

int32_t read_integer(const QLineEdit& edit) { return read_integer(edit.text().toStdString()); }

double read_number(std::string_view text) {
    text = without_blanks(text);
    text = text.substr(0, number_length(text));
    constexpr double LARGEST = std::numeric_limits<double>::max();
    // Qt reads it with a decimal point whatever the user's country, and what is too large as infinite.
    const double number = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())).toDouble();
    return std::clamp(number, -LARGEST, LARGEST);
}

double read_number(const QLineEdit& edit) { return read_number(edit.text().toStdString()); }

QString number_text(double number, int decimals) {
    char text[std::numeric_limits<double>::max_exponent10 + 40];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, decimals);
    return QString::fromLatin1(text, end.ptr - text);
}

void read_field(const QLineEdit& edit, char* field, size_t size) {
    if (edit.text() == shown_text(field)) return;
    copy_utf8(edit.text().toStdString(), field, size);
}

void add_entry(QComboBox& box, int32_t number, const QString& text) { box.addItem(text, number); }

void choose_entry(QComboBox& box, int32_t number) { box.setCurrentIndex(box.findData(number)); }

void read_entry(const QComboBox& box, int32_t& number) {
    if (box.currentIndex() >= 0) number = box.currentData().toInt();
}

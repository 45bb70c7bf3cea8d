// The dialog of the font of the panes. It offers what the settings can hold: families with names that fit,
// whole sizes, bold and italic.
#include <ui_dialog_font.h>

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <cmath>

#include "control/settings.h"
#include "shell/menu.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

bool can_be_stored(const QString& family) {
    return !family.isEmpty() && family.toUtf8().size() < static_cast<qsizetype>(sizeof settings.font_name);
}

double size_in_range() {
    return setting_number(double{settings.font_size}, LEAST_FONT_SIZE, LARGEST_FONT_SIZE);
}

int shown_size() { return static_cast<int>(std::lround(size_in_range())); }

// The family of the settings, or the one that stands in for it where the system does not have it.
QString stored_family() {
    const QString name = shown_text(setting_text(settings.font_name));
    return QFontDatabase::hasFamily(name) ? name : QFontInfo(QApplication::font()).family();
}

void show_font(const forms::Ui::Font& form) {
    for (const QString& family : QFontDatabase::families())
        if (!QFontDatabase::isPrivateFamily(family) && can_be_stored(family)) form.id_1070->addItem(family);
    const auto stored = form.id_1070->findItems(stored_family(), Qt::MatchFixedString);
    if (!stored.isEmpty()) form.id_1070->setCurrentItem(stored.first());
    form.id_1071->setRange(static_cast<int>(LEAST_FONT_SIZE), static_cast<int>(LARGEST_FONT_SIZE));
    form.id_1071->setValue(shown_size());
    form.id_1072->setChecked(settings.font_bold != 0);
    form.id_1073->setChecked(settings.font_italic != 0);
    form.id_1070->setFocus();
}

QString chosen_family(const forms::Ui::Font& form) {
    const QListWidgetItem* const item = form.id_1070->currentItem();
    return item ? item->text() : QString();
}

void show_sample(const forms::Ui::Font& form) {
    QFont font(chosen_family(form), form.id_1071->value());
    font.setBold(form.id_1072->isChecked());
    font.setItalic(form.id_1073->isChecked());
    form.id_1074->setFont(font);
}

// What was not changed stays to the bit, also a name or a size that the dialog cannot show as it is.
void read_font(const forms::Ui::Font& form) {
    const QString family = chosen_family(form);
    if (!family.isEmpty() && family.compare(stored_family(), Qt::CaseInsensitive) != 0)
        store_setting_text(settings.font_name, family.toStdString());
    const int size = form.id_1071->value();
    if (size != shown_size() || double{settings.font_size} != size_in_range())
        settings.font_size = static_cast<float>(size);
    settings.font_bold = form.id_1072->isChecked();
    settings.font_italic = form.id_1073->isChecked();
}

}  // namespace

bool font_dialog(QWidget* parent) {
    QDialog dialog(parent);
    forms::Ui::Font form;
    form.setupUi(&dialog);
    show_font(form);
    show_sample(form);
    take_command_title(dialog, COMMAND_FONT);
    prepare_dialog(dialog, DIALOG_FONT);
    const auto follow = [&form] { show_sample(form); };
    QObject::connect(form.id_1070, &QListWidget::currentRowChanged, &dialog, follow);
    QObject::connect(form.id_1070, &QListWidget::itemDoubleClicked, &dialog, &QDialog::accept);
    QObject::connect(form.id_1071, &QSpinBox::valueChanged, &dialog, follow);
    QObject::connect(form.id_1072, &QCheckBox::toggled, &dialog, follow);
    QObject::connect(form.id_1073, &QCheckBox::toggled, &dialog, follow);
    dialog.ensurePolished();
    dialog.layout()->activate();
    if (form.id_1070->currentItem())
        form.id_1070->scrollToItem(form.id_1070->currentItem(), QAbstractItemView::PositionAtCenter);
    if (dialog.exec() != QDialog::Accepted) return false;
    read_font(form);
    return true;
}

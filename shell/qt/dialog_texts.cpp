#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>

#include "shell/languages.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

void set_control_text(QWidget& control, const QString& text) {
    if (auto* const label = qobject_cast<QLabel*>(&control)) label->setText(text);
    if (auto* const button = qobject_cast<QAbstractButton*>(&control)) button->setText(text);
    if (auto* const group = qobject_cast<QGroupBox*>(&control)) group->setTitle(text);
}

void set_entry_text(const QWidget& window, int32_t id, const QString& text) {
    for (QComboBox* const box : window.findChildren<QComboBox*>()) {
        const QVariant first = box->property("first_entry_id");
        if (!first.isValid()) continue;
        const int64_t entry = int64_t{id} - first.toInt();
        if (entry >= 0 && entry < box->count()) box->setItemText(static_cast<int>(entry), text);
    }
}

}  // namespace

void translate_dialog(QWidget& window, int32_t dialog) {
    for (const auto& [id, text] : dialog_texts(dialog)) {
        const QString shown = shown_text(text);
        if (id == 0) {
            window.setWindowTitle(shown);
            continue;
        }
        if (auto* const control = window.findChild<QWidget*>(QStringLiteral("id_%1").arg(id)))
            set_control_text(*control, shown);
        else
            set_entry_text(window, id, shown);
    }
}

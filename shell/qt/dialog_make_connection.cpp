// The dialog that asks for the other side's computer.
#include <ui_dialog_make_connection.h>

#include "base/utf8.h"
#include "control/settings.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"

namespace {

constexpr size_t HOST_SIZE = 50;  // with the NUL
static_assert(HOST_SIZE <= sizeof settings.dxp_host);

}  // namespace

bool make_connection_dialog(QWidget* parent) {
    QDialog dialog(parent);
    forms::Ui::MakeConnection form;
    form.setupUi(&dialog);
    const QString before = shown_text(setting_text(settings.dxp_host));
    form.id_1000->setText(before);
    form.id_1000->setFocus();
    form.id_1000->selectAll();
    prepare_dialog(dialog, DIALOG_MAKE_CONNECTION);
    if (dialog.exec() != QDialog::Accepted) return false;
    const QString host = form.id_1000->text();
    if (host != before) copy_utf8(host.toStdString(), settings.dxp_host, HOST_SIZE);
    return true;
}

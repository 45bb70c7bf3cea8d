// The dialog that asks for the other side's computer.
#include <ui_dialog_make_connection.h>

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
    form.id_1000->setText(shown_text(setting_text(settings.dxp_host)));
    form.id_1000->setFocus();
    form.id_1000->selectAll();
    prepare_dialog(dialog, DIALOG_MAKE_CONNECTION);
    if (dialog.exec() != QDialog::Accepted) return false;
    read_field(*form.id_1000, settings.dxp_host, HOST_SIZE);
    return true;
}

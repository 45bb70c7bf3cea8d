// The box that tells which program this is.
#include <ui_about.h>

#include <QDate>
#include <QLocale>

#include "base/program_paths.h"
#include "shell/menu.h"
#include "shell/qt/art.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

constexpr int ICON_SIZE = 64;

// The day on which the compiler read this file, as it is written everywhere.
QString build_date() {
    const QString day = QString::fromLatin1(__DATE__).simplified();
    return QLocale::c().toDate(day, QStringLiteral("MMM d yyyy")).toString(Qt::ISODate);
}

}  // namespace

void about_box(QWidget* parent) {
    QDialog dialog(parent);
    forms::Ui::About form;
    form.setupUi(&dialog);
    form.program->setText(shown_text(program_paths.window_title));
    QFont large = form.program->font();
    large.setBold(true);
    large.setPointSizeF(large.pointSizeF() * 1.25);
    form.program->setFont(large);
    form.build->setText(program_text(TEXT_BUILD, build_date()));
    form.icon->setPixmap(program_icon().pixmap(QSize(ICON_SIZE, ICON_SIZE), dialog.devicePixelRatio()));
    take_command_title(dialog, COMMAND_ABOUT);
    name_buttons(dialog);
    dialog.exec();
}

// The dialog of the search threads. The choice is followed by the next search.
#include <ui_dialog_parallel_search.h>

#include "base/system_info.h"
#include "control/settings.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"

void parallel_search_dialog(QWidget* parent) {
    QDialog dialog(parent);
    forms::Ui::ParallelSearch form;
    form.setupUi(&dialog);
    form.id_1022->setText(QString::number(processor_count()));
    for (const int32_t threads : OFFERED_THREADS) add_entry(*form.id_1020, threads, QString::number(threads));
    choose_entry(*form.id_1020, settings.search_threads);
    form.id_1020->setFocus();
    prepare_dialog(dialog, DIALOG_PARALLEL_SEARCH);
    if (dialog.exec() == QDialog::Accepted) read_entry(*form.id_1020, settings.search_threads);
}

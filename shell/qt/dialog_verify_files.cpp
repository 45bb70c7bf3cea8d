// The dialog that checks the files of the open database. The check runs on a thread of its own, which posts
// each text to the dialog; it is told to stop when the dialog closes, and has ended before the dialog goes.
#include <ui_dialog_verify_files.h>

#include <QPushButton>
#include <atomic>
#include <string>
#include <system_error>
#include <thread>

#include "control/search_thread.h"
#include "egdb/egdb_state.h"
#include "shell/qt/dialog_fields.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"

namespace {

// The words in the current language, taken on the interface thread.
struct Words {
    std::string failed = in_language("CRC failed");
    std::string errors = in_language("errors");
    std::string no_errors = in_language("No errors");
    std::string unchecked = in_language("not checked, no checksum is known");

    static std::string in_language(const char* text) { return text_in_language(text).toStdString(); }
    VerifyTexts texts() const {
        return {failed.c_str(), "OK", errors.c_str(), no_errors.c_str(), unchecked.c_str()};
    }
};

struct Check {
    QDialog& dialog;
    forms::Ui::VerifyFiles& form;
    const Words words;
    std::atomic<bool> abort = false;
    std::thread worker;

    Check(QDialog& shown, forms::Ui::VerifyFiles& its_form) : dialog(shown), form(its_form) {}
    ~Check() {
        abort = true;
        if (worker.joinable()) worker.join();
    }
    Check(const Check&) = delete;
    Check& operator=(const Check&) = delete;
};

QPushButton& button(const Check& check, QDialogButtonBox::StandardButton which) {
    return *check.form.buttons->button(which);
}

void show_end(const Check& check) {
    button(check, QDialogButtonBox::Ok).setEnabled(true);
    button(check, QDialogButtonBox::Cancel).setEnabled(false);
}

// On the thread of the check; what is posted runs in order, and not at all once the dialog is gone.
template <typename Work>
void post(Check& check, const Work& work) {
    QMetaObject::invokeMethod(&check.dialog, work, Qt::QueuedConnection);
}

void post_text(void* context, const char* text) {
    Check& check = *static_cast<Check*>(context);
    post(check, [&check, line = std::string(text)] {
        QPlainTextEdit& field = *check.form.id_1035;
        field.moveCursor(QTextCursor::End);
        field.insertPlainText(shown_text(line));
        field.ensureCursorVisible();
    });
}

void run(Check& check) {
    verify_open_egdb({post_text, &check}, &check.abort, check.words.texts());
    post(check, [&check] { show_end(check); });
}

}  // namespace

bool can_verify_files() {
    const int32_t state = egdb_state.load(std::memory_order_acquire);
    return (state == EGDB_OPENED || state == EGDB_IN_USE) &&
           !search_thread.searching.load(std::memory_order_acquire);
}

void verify_files_dialog(QWidget* parent) {
    QDialog dialog(parent);
    forms::Ui::VerifyFiles form;
    form.setupUi(&dialog);
    prepare_dialog(dialog, DIALOG_VERIFY_FILES);
    Check check(dialog, form);
    button(check, QDialogButtonBox::Ok).setEnabled(false);
    try {
        check.worker = std::thread([&check] { run(check); });
    } catch (const std::system_error&) {
        show_end(check);
    }
    dialog.exec();
}

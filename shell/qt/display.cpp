#include "shell/qt/display.h"

#include <QString>
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>

namespace {

QtMessageHandler former_handler = nullptr;
QString first_complaint;

bool display_is_named() {
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (!qEnvironmentVariableIsEmpty(name)) return true;
    return false;
}

// Of all that is said on the way to the end, the first is the reason.
void tell_and_end(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (first_complaint.isEmpty()) first_complaint = text;
    if (type != QtFatalMsg) return;
    const QString reason =
        display_is_named() ? first_complaint : QStringLiteral("neither DISPLAY nor WAYLAND_DISPLAY is set");
    std::fprintf(stderr, "tessarin: there is no display to open a window on: %s\n", qPrintable(reason));
    std::fflush(nullptr);
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

void end_without_display() { former_handler = qInstallMessageHandler(tell_and_end); }

void display_found() {
    qInstallMessageHandler(former_handler);
    if (!first_complaint.isEmpty()) qWarning("%s", qPrintable(first_complaint));
}

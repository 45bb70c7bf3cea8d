// The desktop program.
#include <QApplication>
#include <clocale>

#include "shell/qt/desktop.h"
#include "shell/qt/display.h"
#include "shell/qt/termination.h"
#include "shell/startup.h"

int main(int argc, char** argv) {
    end_without_display();
    // Takes its own options off the command line.
    QApplication application(argc, argv);
    display_found();
    // Numbers have a point in them whatever the country of the user.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QStringLiteral("tessarin"));
    QApplication::setDesktopFileName(QStringLiteral("tessarin"));
    open_desktop(wants_server_mode(argc, argv));
    int status = start_desktop_engine();
    if (status == 0) {
        heed_termination();
        status = QApplication::exec();
    }
    if (!close_desktop()) std::_Exit(status);
    return status;
}

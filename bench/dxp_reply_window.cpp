// How long a move stays in the desktop program once its search has ended, as bench/reply_times.h has it.
//
//   dxp_reply_window [MOVES]
#include <QApplication>
#include <QTemporaryDir>
#include <clocale>
#include <cstdlib>
#include <thread>

#include "bench/reply_times.h"
#include "book/engine_book.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "dxp/connection.h"
#include "dxp/connection_thread.h"
#include "shell/qt/desktop.h"
#include "tests/dxp/scripted_peer.h"

namespace {

// What the window does with the pictures.
void (*show_picture)(SearchPicture picture) = nullptr;

void note_and_show(SearchPicture picture) {
    note_search_end(picture);
    show_picture(picture);
}

}  // namespace

int main(int argc, char** argv) {
    const QTemporaryDir home;
    for (const char* const name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME"})
        qputenv(name, home.path().toLocal8Bit());
    const int port = free_port();
    qputenv(DXP_PORT_VARIABLE, QByteArray::number(port));
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    open_desktop(false);
    if (start_desktop_engine() != 0) return 1;
    settings.pondering_on = 0;
    engine_book = no_book();
    show_picture = ui.post_search_picture;
    ui.post_search_picture = note_and_show;
    wait_for_connection_command();
    const std::jthread peer = start_timing_peer(port, argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 300);
    while (!timing_is_done()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (!close_desktop()) std::_Exit(1);
    return print_reply_times();
}

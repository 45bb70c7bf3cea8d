#include "shell/qt/desktop.h"

#include <QCoreApplication>

#include "control/game.h"
#include "control/game_commands.h"
#include "control/panes.h"
#include "control/program_flags.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "shell/languages.h"
#include "shell/menu.h"
#include "shell/qt/commands.h"
#include "shell/qt/dxp_commands.h"
#include "shell/qt/file_choice.h"
#include "shell/qt/interface_thread.h"
#include "shell/qt/main_window.h"
#include "shell/qt/qt_ui.h"
#include "shell/qt/sound.h"
#include "shell/qt/toolkit_texts.h"
#include "shell/settings_store.h"
#include "shell/startup.h"

namespace {

void read_main_window(Settings& record) {
    // A window that is closed was read before it was hidden.
    if (main_window && main_window->isVisible()) main_window->read_windows(record);
}

void make_main_menu() {
    main_menu = built_in_menu();
    for (const int32_t id : {COMMAND_TEST_EVAL, COMMAND_TEST_MOVE_GENERATOR, COMMAND_TEST_INDEXING})
        remove_menu_item(main_menu, id);
    if (!program_flags.autoconnect_enabled) remove_menu_item(main_menu, COMMAND_START_MATCH_AUTOCONNECT);
}

void begin_game() {
    reset_game();
    reset_panes();
    new_game();
    set_gui_mode(NORMAL_MODE);
    set_time_control(settings.time_menu_id);
    clear_highlights();
    reset_game_clock();
}

void show_window() {
    if (settings_were_reset)
        main_window->arrange();
    else
        main_window->place_windows();
    main_window->show();
    refresh_panes();
    ui.redraw_board();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace

void open_desktop(bool server_mode) {
    settings_hooks.forget_game_file = forget_chosen_file;
    settings_hooks.read_windows = read_main_window;
    StartupOptions options;
    options.server_mode = server_mode;
    options.load_languages = load_languages;
    begin_startup(options);
    make_main_menu();
    begin_interface_thread();
    new MainWindow;
    ui = make_qt_ui();
    begin_game();
    show_window();
}

int start_desktop_engine() {
    if (finish_startup() != ENGINE_STARTED) {
        ui.message_box("Engine init failed! See log file.", "Error!", ICON_ERROR);
        return 1;
    }
    start_search_thread();
    start_network_play();
    update_menu();
    if (settings2.language_id != ENGLISH_ID) post_work(run_command, settings2.language_id);
    start_ticks();
    return 0;
}

bool close_desktop() {
    const bool network_ended = end_network_play();
    if (!discard_search() || !network_ended) return false;
    end_interface_thread();
    end_sound();
    end_toolkit_language();
    delete main_window;
    ui = no_ui();
    settings_hooks.read_windows = no_settings_hooks().read_windows;
    settings_hooks.forget_game_file = no_settings_hooks().forget_game_file;
    return true;
}

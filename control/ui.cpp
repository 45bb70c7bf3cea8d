#include "control/ui.h"

Ui no_ui() {
    Ui none{};
    none.redraw_board = [] {};
    none.set_side_button = [](int) {};
    none.set_status_text = [](const char*) {};
    none.set_title = [](const char*) {};
    none.update_menu = [](const MenuState&) {};
    none.set_pane_text = [](ChildWindow, const char*) {};
    none.set_game_text = [](const char*, int, int) {};
    none.append_dxp_text = [](const char*, bool) {};
    none.trim_dxp_text = [](size_t, size_t) {};
    none.message_box = [](const char*, const char*, MessageIcon) {};
    none.ask = [](const char*, const char*) { return false; };
    none.choose_load_file = [](const char*, std::string&) { return false; };
    none.choose_save_file = [](const char*, std::string&) { return false; };
    none.choose_game = [](const char*, const PdnOffsets&, int, int) { return -1; };
    none.edit_headers = [](GameHeaders&) { return false; };
    none.read_clipboard = [](char*, size_t) { return false; };
    none.write_clipboard = [](const char*) { return false; };
    none.open_file = [](const char*) {};
    none.play_sound = [](const char*) {};
    none.pause = [](int) {};
    none.post_search_picture = [](SearchPicture) {};
    none.post = [](void (*)(int32_t), int32_t) {};
    return none;
}

Ui ui = no_ui();

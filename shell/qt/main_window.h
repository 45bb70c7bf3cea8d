// The frame: menu, toolbar and status line, and inside them the board and the five panes as child windows
// that can be moved, sized, hidden and remembered. What the commands do is told elsewhere. Interface thread
// only.
#pragma once

#include <QMainWindow>
#include <QMdiArea>
#include <array>

#include "control/modes.h"
#include "control/settings.h"
#include "shell/qt/board_window.h"
#include "shell/qt/child_style.h"
#include "shell/qt/menu_bar.h"
#include "shell/qt/pane_window.h"
#include "shell/qt/status_line.h"

class MainWindow : public QMainWindow {
    Q_OBJECT

  public:
    // With the menu `main_menu` as it is then.
    MainWindow();
    ~MainWindow() override;

    BoardWindow& board_window() { return *board_child; }
    PaneWindow& pane(ChildWindow which) { return *panes[which]; }
    QMdiArea& area() { return *mdi_area; }
    QToolBar& tool_bar() { return *buttons; }
    StatusLine& status_line() { return *line; }
    MenuBinding& menu() { return binding; }

    // The texts of menu, toolbar and panes in the current language.
    void follow_language();
    // Ticks and states of the commands; `state` is kept for the next time.
    void show_menu(const MenuState& state);
    void show_menu();
    // Font and background of the panes.
    void follow_pane_settings();

    // Puts all windows where the settings have them.
    void place_windows();
    // Puts the windows that are visible by the settings where they are when nobody has moved them, and makes
    // the frame as large as it takes.
    void arrange();
    // The present places into the record.
    void read_windows(Settings& record);
    // Shows a pane in front of the others, where it can be seen, or hides it; the settings follow.
    void show_pane(ChildWindow which, bool visible);

  protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

  private:
    QSize chrome();
    QRect screen_room();
    void set_inside(const QSize& inside);
    void keep_frame_on_screen();
    QRect normal_place() const;
    QPoint scroll_offset() const;
    void update_scroll_bars();
    void place_as_recorded(const WindowRecord& record);
    void show_panes_of_settings();
    void follow_colours();
    void name_board();
    void bring_into_view(PaneWindow& child);
    QRect free_place_for(const PaneWindow& child, const QSize& room) const;

    ChildStyle child_style;
    QMdiArea* mdi_area;
    QToolBar* buttons;
    StatusLine* line;
    BoardWindow* board_child;
    std::array<PaneWindow*, CHILD_WINDOWS> panes{};
    MenuBinding binding;
    MenuState menu_now;
    QPoint decoration;  // from the frame's corner to that of its inside, while it is not maximized
};

// The one main window, while it is there.
extern MainWindow* main_window;

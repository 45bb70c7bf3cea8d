// Whole stories with the desktop program as a user has it: it runs on a screen of its own (Xvfb with
// openbox), is moved by the mouse and the keyboard of that screen (xdotool), and is judged by what is to be
// seen there and by the files that it writes. Where one of these programs is missing the stories are skipped.
//
// Every wait is for a condition with a limit that a slow machine keeps too.
#pragma once

#include <QImage>
#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "base/child_process.h"

constexpr double PATIENCE = 120;  // seconds

// Waits until the condition holds; false if it does not within the time. Events of the test's own, such as
// another program asking for its clipboard, are served meanwhile.
bool wait_until(const std::function<bool()>& condition, double seconds = PATIENCE);

// The names of the programs that stories need and the system does not have; empty if all are there.
QString missing_tools();

// A screen with a window manager on it. Ends both when it goes.
struct Screen {
    ChildProcess server;
    ChildProcess manager;
    QTemporaryDir pixels;  // holds the server's picture
    QString name;          // as DISPLAY has it
    QSize size;

    ~Screen();
};

// Null if it does not come up. Needs no QApplication.
std::unique_ptr<Screen> open_screen(QSize size);

// The screen that the test's own QApplication is on.
extern Screen* test_screen;

// All of the screen as it is now.
QImage look(const Screen& screen);

// A user's computer: the program with its data in a folder of its own, the folders for settings and data, and
// a program that opens documents, which only notes what it is asked for.
struct Desk {
    Screen* screen = test_screen;
    QTemporaryDir folder;
    QProcess program;
    QStringList extra_environment;  // NAME=VALUE
    int scale = 1;                  // pixels of the screen to one of the program's
    QString window;                 // the number of the main window
    QPoint origin;                  // where its inside begins on the screen

    ~Desk();

    QString path(const QString& name) const { return folder.filePath(name); }
    QString program_folder() const { return path(QStringLiteral("program/")); }
    QString data_folder() const;
    QString settings_folder() const;
};

// Puts the program in its folder; starting it does so too.
void install(Desk& desk);

// Starts the program; `run` too waits until its main window is there and the board is painted.
void launch(Desk& desk);
bool run(Desk& desk);

// Waits until all that is shown is as it stays: the program, its screen and its window manager have had
// nothing to do for half a second, in which a machine that lets them wait does not count.
void wait_until_at_rest(const Desk& desk);

// Closes the main window as its button does. True if the program then ended with status 0.
bool close_program(Desk& desk);
// Waits for the end of the program; its exit status, or -1.
int exit_status(Desk& desk);

// Runs xdotool on the desk's screen and returns what it prints.
QString xdotool(const Desk& desk, const QStringList& arguments);

// Numbers of the program's windows that are shown; with a title those whose title is this.
QStringList windows(const Desk& desk, const QString& title = {});
// Waits for a window of the title. Empty if there is none in time.
QString wait_for_window(const Desk& desk, const QString& title);
bool wait_until_closed(const Desk& desk, const QString& window);
QString title_of(const Desk& desk, const QString& window);
// The inside of a window on the screen. Moves the mouse.
QRect place_of(const Desk& desk, const QString& window);

// Clicks in a window, by default the main one.
void click_in(const Desk& desk, QPoint at, int button = 1, const QString& window = {});
// Has the keys go to the window.
void take_keyboard(const Desk& desk, const QString& window);
// A key with the keyboard in the main window, or wherever it is.
void press(const Desk& desk, const QString& key);
void press_here(const Desk& desk, const QString& key);
void type_here(const Desk& desk, const QString& text);

// Chooses a command of the menu with the mouse; false if no pop-up opened in time.
bool choose(const Desk& desk, int32_t command);
// Opens a pop-up of the menu bar, from 0.
int menu_popups();
void open_popup(const Desk& desk, int popup);
// Clicks a button of the toolbar.
void click_button(const Desk& desk, int32_t command);
// The toolbar shows the picture of the number for the command.
bool button_shows(const Desk& desk, int32_t command, int picture);

// Around all stories, while there is a QApplication on their screen: the test's own knowledge of what the
// program looks like.
void begin_stories();
void end_stories();

// The language that the program is set to, by the id of its command: what the menu is looked for in.
void expect_language(int32_t id);
// The menu bar of the program is the one of that language.
bool menu_bar_is_right(const Desk& desk);

// What the clipboard of the test's own screen holds, with its carriage returns.
QString clipboard_of_screen();

// Answers the dialog for files: types the path and agrees.
bool answer_file_dialog(const Desk& desk, const QString& title, const QString& path);
// Agrees to the box of the title by Enter and waits until it is gone.
bool answer_box(const Desk& desk, const QString& title);

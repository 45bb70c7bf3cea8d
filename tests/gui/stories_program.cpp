#include <gtest/gtest.h>

#include <QClipboard>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcessEnvironment>
#include <QRegularExpression>

#include "tests/gui/stories.h"
#include "tests/gui/stories_board.h"

namespace {

constexpr int END_MS = 120000;
const QString MAIN_TITLE = QStringLiteral("Tessarin International(x64) 1.60b");
const QString USER_FOLDER = QStringLiteral("/Quillorn/Tessarin International/");
// Notes what is to be opened, a line each.
constexpr const char* OPENER = "#!/bin/sh\necho \"$1\" >> \"$HOME/opened\"\n";

bool write_file(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// The executable is copied, as the program looks for its data where that is; the data are linked to.
void install_program(const Desk& desk) {
    const QFileInfo built(QStringLiteral(TESSARIN_PROGRAM));
    QDir().mkpath(desk.program_folder());
    for (const QFileInfo& file : built.dir().entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
        const QString target = desk.program_folder() + file.fileName();
        if (file.fileName() == built.fileName())
            QFile::copy(file.filePath(), target);
        else if (file.isDir() || !file.isExecutable())
            QFile::link(file.filePath(), target);
    }
}

void install_opener(const Desk& desk) {
    const QString opener = desk.path(QStringLiteral("tools/xdg-open"));
    QDir().mkpath(desk.path(QStringLiteral("tools")));
    write_file(opener, OPENER);
    QFile::setPermissions(opener, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QProcessEnvironment environment_of(const Desk& desk) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* const name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "QT_SCALE_FACTOR",
                                   "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME", "XDG_CURRENT_DESKTOP"})
        environment.remove(QString::fromLatin1(name));
    const auto set = [&](const char* name, const QString& value) {
        environment.insert(QString::fromLatin1(name), value);
    };
    set("DISPLAY", desk.screen->name);
    set("HOME", desk.folder.path());
    set("LC_ALL", QStringLiteral("C.UTF-8"));
    set("PATH", desk.path(QStringLiteral("tools:")) + environment.value(QStringLiteral("PATH")));
    set("XDG_CONFIG_HOME", desk.path(QStringLiteral("config")));
    set("XDG_DATA_HOME", desk.path(QStringLiteral("data")));
    set("XDG_RUNTIME_DIR", desk.path(QStringLiteral("run")));
    for (const QString& entry : desk.extra_environment)
        environment.insert(entry.section(QLatin1Char('='), 0, 0), entry.section(QLatin1Char('='), 1));
    return environment;
}

// The process waits for something to come.
bool sleeps(qint64 process) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    return file.open(QIODevice::ReadOnly) && file.readAll().contains(") S ");
}

QStringList lines_of(const QString& text) { return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts); }

// Of the lines NAME=NUMBER.
int number_of(const QString& text, const QString& name) {
    const QRegularExpression line(QStringLiteral("(?:^|\n)%1=(-?\\d+)").arg(name));
    return line.match(text).captured(1).toInt();
}

// What the keyboard of the screen does not have is pasted.
void enter_text(const Desk& desk, const QString& text) {
    if (QString::fromLatin1(text.toLatin1()) == text && text.toUtf8().size() == text.size())
        return type_here(desk, text);
    QGuiApplication::clipboard()->setText(text);
    press_here(desk, QStringLiteral("ctrl+v"));
    // The program asks for the text now.
    wait_until_at_rest(desk);
}

}  // namespace

Desk::~Desk() {
    // What a story that failed looked like can be kept.
    const QString pictures = qEnvironmentVariable("TESSARIN_STORY_PICTURES");
    if (testing::Test::HasFailure() && !pictures.isEmpty() && screen) {
        const char* const story = testing::UnitTest::GetInstance()->current_test_info()->name();
        look(*screen).save(pictures + QLatin1Char('/') + QString::fromLatin1(story) + QStringLiteral(".png"));
    }
    if (program.state() == QProcess::NotRunning) return;
    program.kill();
    program.waitForFinished(END_MS);
}

QString Desk::data_folder() const { return path(QStringLiteral("data")) + USER_FOLDER; }

QString Desk::settings_folder() const { return path(QStringLiteral("config")) + USER_FOLDER; }

void install(Desk& desk) {
    if (QFileInfo::exists(desk.program_folder())) return;
    install_program(desk);
    install_opener(desk);
}

void launch(Desk& desk) {
    install(desk);
    // Until the window manager is up it is said to have no desktop. A window that comes while it starts can
    // be overlooked.
    wait_until([&] { return xdotool(desk, {QStringLiteral("get_num_desktops")}).toInt() > 0; });
    QDir().mkpath(desk.path(QStringLiteral("run")));
    QFile::setPermissions(desk.path(QStringLiteral("run")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    desk.program.setProcessEnvironment(environment_of(desk));
    desk.program.setProcessChannelMode(QProcess::MergedChannels);
    desk.program.start(desk.program_folder() + QStringLiteral("tessarin"), QStringList());
}

bool run(Desk& desk) {
    take_mouse_away(desk);
    launch(desk);
    desk.window.clear();
    const bool there = wait_until([&] {
        const QStringList found = windows(desk, MAIN_TITLE);
        if (!found.isEmpty()) desk.window = found.front();
        return !found.isEmpty() || desk.program.state() == QProcess::NotRunning;
    });
    if (!there || desk.window.isEmpty() ||
        !wait_until([&] { return find_board(desk, desk.scale).is_found(); })) {
        ADD_FAILURE() << (desk.window.isEmpty() ? "no window" : "no board")
                      << (desk.program.state() == QProcess::Running ? ", the program runs: " : ": ")
                      << desk.program.errorString().toStdString() << desk.program.readAll().toStdString();
        return false;
    }
    desk.origin = place_of(desk, desk.window).topLeft();
    take_mouse_away(desk);
    return true;
}

int exit_status(Desk& desk) {
    if (desk.program.state() != QProcess::NotRunning && !desk.program.waitForFinished(END_MS)) return -1;
    return desk.program.exitStatus() == QProcess::NormalExit ? desk.program.exitCode() : -1;
}

void wait_until_at_rest(const Desk& desk) {
    constexpr int LOOKS_AT_REST = 35;
    int looks = 0;
    wait_until([&] {
        if (desk.program.state() == QProcess::NotRunning) return true;
        looks += sleeps(desk.program.processId()) && sleeps(desk.screen->server.pid) &&
                 sleeps(desk.screen->manager.pid);
        return looks >= LOOKS_AT_REST;
    });
}

// The window manager loses the key while it is still about to give the window the keyboard. A second key
// while the first one waits in a busy program would have it ask whether the program is to be killed.
bool close_program(Desk& desk) {
    const auto has_ended = [&] { return desk.program.state() == QProcess::NotRunning; };
    for (int tries = 0; tries < 5 && !has_ended(); ++tries) {
        press(desk, QStringLiteral("alt+F4"));
        wait_until_at_rest(desk);
    }
    return wait_until(has_ended) && exit_status(desk) == 0;
}

QString xdotool(const Desk& desk, const QStringList& arguments) {
    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), desk.screen->name);
    tool.setProcessEnvironment(environment);
    tool.start(QStringLiteral("xdotool"), arguments);
    tool.waitForFinished(END_MS);
    return QString::fromUtf8(tool.readAllStandardOutput());
}

QStringList windows(const Desk& desk, const QString& title) {
    QStringList found = lines_of(xdotool(desk, {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                QStringLiteral("--class"), QStringLiteral("^tessarin$")}));
    if (!title.isEmpty())
        found.removeIf([&](const QString& window) { return title_of(desk, window) != title; });
    return found;
}

QString wait_for_window(const Desk& desk, const QString& title) {
    QStringList found;
    wait_until([&] { return !(found = windows(desk, title)).isEmpty(); });
    return found.isEmpty() ? QString() : found.front();
}

// A window that goes while the list is made can make it come out empty, so one look is not enough.
bool wait_until_closed(const Desk& desk, const QString& window) {
    int looks_without = 0;
    return wait_until([&] {
        looks_without = windows(desk).contains(window) ? 0 : looks_without + 1;
        return looks_without >= 3;
    });
}

QString title_of(const Desk& desk, const QString& window) {
    return xdotool(desk, {QStringLiteral("getwindowname"), window}).trimmed();
}

// What the tool says of the place of a window counts the frame twice with some window managers; where the
// mouse goes is right.
QRect place_of(const Desk& desk, const QString& window) {
    const QString size =
        xdotool(desk, {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window});
    const QString corner =
        xdotool(desk, {QStringLiteral("mousemove"), QStringLiteral("--window"), window, QStringLiteral("0"),
                       QStringLiteral("0"), QStringLiteral("getmouselocation"), QStringLiteral("--shell")});
    return {number_of(corner, QStringLiteral("X")), number_of(corner, QStringLiteral("Y")),
            number_of(size, QStringLiteral("WIDTH")), number_of(size, QStringLiteral("HEIGHT"))};
}

void click_in(const Desk& desk, QPoint at, int button, const QString& window) {
    xdotool(desk, {QStringLiteral("mousemove"), QStringLiteral("--window"),
                   window.isEmpty() ? desk.window : window, QString::number(at.x()), QString::number(at.y()),
                   QStringLiteral("click"), QString::number(button)});
}

void take_keyboard(const Desk& desk, const QString& window) {
    xdotool(desk, {QStringLiteral("windowactivate"), QStringLiteral("--sync"), window});
}

void press(const Desk& desk, const QString& key) {
    xdotool(desk, {QStringLiteral("windowactivate"), QStringLiteral("--sync"), desk.window,
                   QStringLiteral("key"), QStringLiteral("--clearmodifiers"), key});
}

void press_here(const Desk& desk, const QString& key) { xdotool(desk, {QStringLiteral("key"), key}); }

void type_here(const Desk& desk, const QString& text) {
    xdotool(desk, {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("2"), text});
}

QString clipboard_of_screen() {
    QCoreApplication::processEvents();
    return QGuiApplication::clipboard()->text();
}

bool answer_file_dialog(const Desk& desk, const QString& title, const QString& path) {
    const QString dialog = wait_for_window(desk, title);
    if (dialog.isEmpty()) return false;
    take_keyboard(desk, dialog);
    press_here(desk, QStringLiteral("ctrl+a"));
    enter_text(desk, path);
    press_here(desk, QStringLiteral("Return"));
    return wait_until_closed(desk, dialog);
}

bool answer_box(const Desk& desk, const QString& title) {
    const QString box = wait_for_window(desk, title);
    if (box.isEmpty()) return false;
    xdotool(desk, {QStringLiteral("windowactivate"), QStringLiteral("--sync"), box, QStringLiteral("key"),
                   QStringLiteral("Return")});
    return wait_until_closed(desk, box);
}

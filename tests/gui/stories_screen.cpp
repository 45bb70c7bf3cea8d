#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QThread>
#include <QtEndian>
#include <csignal>
#include <string>
#include <vector>

#include "tests/gui/stories.h"

namespace {

constexpr unsigned long LOOK_AGAIN_MS = 15;

// The header of the picture that the server keeps in a file, in words of 32 bits.
enum DumpWord { HEADER_SIZE = 0, WIDTH = 4, HEIGHT = 5, BITS_PER_PIXEL = 11, LINE_BYTES = 12, COLOURS = 19 };
constexpr qsizetype DUMP_WORDS = 25;
constexpr qsizetype COLOUR_BYTES = 12;

qsizetype dump_word(const QByteArray& dump, DumpWord word) {
    return static_cast<qsizetype>(qFromBigEndian<quint32>(dump.constData() + 4 * word));
}

void end_child(ChildProcess& child) {
    if (child.pid <= 0) return;
    kill(child.pid, SIGTERM);
    wait_for_child(child);
}

bool start(ChildProcess& child, const std::vector<std::string>& words) {
    const QString file = QStandardPaths::findExecutable(QString::fromStdString(words.front()));
    return start_child(child, file.toLocal8Bit().constData(), words) == 0;
}

bool start_server(Screen& screen, QSize size) {
    const std::string picture = std::to_string(size.width()) + "x" + std::to_string(size.height()) + "x24";
    // It ends with this program, even if that is killed; all others end with their display.
    const std::vector<std::string> words = {"setpriv",
                                            "--pdeathsig",
                                            "TERM",
                                            "Xvfb",
                                            "-displayfd",
                                            "1",
                                            "-screen",
                                            "0",
                                            picture,
                                            "-fbdir",
                                            screen.pixels.path().toStdString(),
                                            "-nolisten",
                                            "tcp",
                                            "-noreset"};
    std::string number;
    if (!start(screen.server, words) || read_line(screen.server, number) != 0) return false;
    screen.name = QLatin1Char(':') + QString::fromStdString(number);
    screen.size = size;
    return true;
}

}  // namespace

Screen* test_screen = nullptr;

bool wait_until(const std::function<bool()>& condition, double seconds) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (static_cast<double>(elapsed.elapsed()) > seconds * 1000) return false;
        QCoreApplication::processEvents();
        QThread::msleep(LOOK_AGAIN_MS);
    }
    return true;
}

QString missing_tools() {
    QStringList missing;
    for (const char* const tool : {"Xvfb", "openbox", "xdotool"})
        if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty())
            missing.append(QString::fromLatin1(tool));
    return missing.join(QStringLiteral(", "));
}

Screen::~Screen() {
    end_child(manager);
    end_child(server);
}

std::unique_ptr<Screen> open_screen(QSize size) {
    auto screen = std::make_unique<Screen>();
    if (!start_server(*screen, size)) return nullptr;
    const QByteArray former = qgetenv("DISPLAY");
    qputenv("DISPLAY", screen->name.toLocal8Bit());
    const bool managed = start(screen->manager, {"openbox", "--sm-disable"});
    qputenv("DISPLAY", former);
    return managed ? std::move(screen) : nullptr;
}

QImage look(const Screen& screen) {
    QFile file(screen.pixels.filePath(QStringLiteral("Xvfb_screen0")));
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray dump = file.readAll();
    if (dump.size() < 4 * DUMP_WORDS || dump_word(dump, BITS_PER_PIXEL) != 32) return {};
    const qsizetype start = dump_word(dump, HEADER_SIZE) + dump_word(dump, COLOURS) * COLOUR_BYTES;
    const qsizetype height = dump_word(dump, HEIGHT);
    const qsizetype line = dump_word(dump, LINE_BYTES);
    if (dump.size() < start + height * line) return {};
    const auto* const pixels = reinterpret_cast<const uchar*>(dump.constData() + start);
    const QImage seen(pixels, static_cast<int>(dump_word(dump, WIDTH)), static_cast<int>(height), line,
                      QImage::Format_RGB32);
    // The byte beside the colours may be anything.
    return seen.convertToFormat(QImage::Format_RGB888).convertToFormat(QImage::Format_RGB32);
}

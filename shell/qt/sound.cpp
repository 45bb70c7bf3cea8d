#include "shell/qt/sound.h"

#include <QFile>
#include <QSoundEffect>
#include <QThread>
#include <QUrl>
#include <memory>
#include <string>

#include "base/files.h"
#include "base/paths.h"

namespace {

constexpr unsigned long END_WAIT_MS = 200;

// The sound system is asked for its devices on a thread of its own, as the answer may take its time.
struct Player {
    QThread thread;
    QSoundEffect* effect = nullptr;  // of the thread
    QObject* place = nullptr;        // lives on the thread
};
std::unique_ptr<Player> player;

void begin_player() {
    player = std::make_unique<Player>();
    player->place = new QObject;
    player->place->moveToThread(&player->thread);
    QObject::connect(&player->thread, &QThread::finished, player->place, &QObject::deleteLater);
    player->thread.start(QThread::LowPriority);
}

// On the player's thread.
void play(Player& p, const QUrl& url) {
    if (!p.effect) p.effect = new QSoundEffect(p.place);
    if (p.effect->source() != url) p.effect->setSource(url);
    p.effect->play();
}

}  // namespace

void play_sound_file(const char* file) {
    const std::string path = absolute_path(file);
    if (!can_read_file(path)) return;
    if (!player) begin_player();
    const QUrl url = QUrl::fromLocalFile(QFile::decodeName(path.c_str()));
    QMetaObject::invokeMethod(
        player->place, [p = player.get(), url] { play(*p, url); }, Qt::QueuedConnection);
}

void end_sound() {
    if (!player) return;
    player->thread.quit();
    // A thread that hangs in the sound system is left to the end of the process.
    if (player->thread.wait(END_WAIT_MS))
        player.reset();
    else
        static_cast<void>(player.release());
}

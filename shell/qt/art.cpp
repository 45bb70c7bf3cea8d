#include "shell/qt/art.h"

#include <QCoreApplication>
#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "base/program_paths.h"
#include "shell/qt/art_plain.h"
#include "shell/qt/text.h"

namespace {

constexpr std::array<const char*, TILE_COUNT> TILE_NAMES = {"Bcheck", "Wcheck",  "Bking",
                                                            "Wking",  "Bsquare", "Wsquare"};

constexpr int TOOLBAR_PICTURES = 8;
constexpr QSize TOOLBAR_SIZE(16, 17);
constexpr std::array<double, 5> TOOLBAR_SCALES = {1, 1.5, 2, 3, 4};
constexpr std::array<int, 8> ICON_SIZES = {16, 24, 32, 48, 64, 96, 128, 256};

struct TileKey {
    Tile tile;
    int lay;
    int size;
    double scale;

    auto operator<=>(const TileKey&) const = default;  // NOLINT(modernize-use-nullptr): a false alarm
};

std::map<TileKey, QPixmap> tiles;

// Pictures must be gone before the connection to the screen is.
void forget_with_the_program() {
    static const bool registered = (qAddPostRoutine(forget_art), true);
    static_cast<void>(registered);
}

QImage empty_picture(QSize size) {
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    return picture;
}

// Draws the file over the whole picture; false if there is none that can be drawn.
bool draw_file(const QString& name, QImage& picture) {
    const QString path =
        shown_text(program_paths.program_folder) + QStringLiteral("art/") + name + QStringLiteral(".svg");
    if (!QFile::exists(path)) return false;
    QSvgRenderer file(path);
    if (!file.isValid()) return false;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    file.render(&painter, QRectF(picture.rect()));
    return true;
}

QPixmap render_tile(const TileKey& key) {
    const int pixels = std::max(1, static_cast<int>(std::ceil(key.size * key.scale)));
    QImage picture = empty_picture({pixels, pixels});
    if (!draw_file(shown_text(TILE_NAMES[static_cast<size_t>(key.tile)]), picture))
        draw_plain_tile(key.tile, picture);
    if (key.lay) picture = picture.mirrored((key.lay & 1) != 0, (key.lay & 2) != 0);
    picture.setDevicePixelRatio(key.scale);
    return QPixmap::fromImage(picture);
}

QPixmap toolbar_pixmap(int number, double scale) {
    QImage picture = empty_picture((QSizeF(TOOLBAR_SIZE) * scale).toSize());
    if (!draw_file(QStringLiteral("toolbar-%1").arg(number), picture)) draw_plain_button(number, picture);
    picture.setDevicePixelRatio(scale);
    return QPixmap::fromImage(picture);
}

}  // namespace

QPixmap board_tile(Tile tile, int size, double scale, int lay) {
    const TileKey key{tile, lay & (TILE_LAYS - 1), std::max(1, size), scale > 0 ? scale : 1};
    const auto kept = tiles.find(key);
    if (kept != tiles.end()) return kept->second;
    forget_with_the_program();
    if (kept_tiles() >= MAX_KEPT_TILES) tiles.clear();
    return tiles[key] = render_tile(key);
}

QIcon toolbar_picture(int number) {
    QIcon icon;
    if (number < 1 || number > TOOLBAR_PICTURES) return icon;
    for (const double scale : TOOLBAR_SCALES) icon.addPixmap(toolbar_pixmap(number, scale));
    return icon;
}

QIcon program_icon() {
    QIcon icon;
    for (const int size : ICON_SIZES) {
        QImage picture = empty_picture({size, size});
        if (!draw_file(QStringLiteral("tessarin"), picture)) draw_plain_icon(picture);
        icon.addPixmap(QPixmap::fromImage(picture));
    }
    return icon;
}

void forget_art() { tiles.clear(); }

int kept_tiles() { return static_cast<int>(tiles.size()); }

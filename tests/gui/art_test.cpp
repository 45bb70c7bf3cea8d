// The pictures: every file is there and can be drawn, plain ones stand in for those that are not, and what is
// rendered is kept within limits.
#include "shell/qt/art.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QtEndian>

#include "base/program_paths.h"

namespace {

const QString ART = QStringLiteral(PROJECT_FOLDER "/data/art/");
constexpr Tile PIECES[] = {Tile::Bcheck, Tile::Wcheck, Tile::Bking, Tile::Wking};
constexpr Tile TILES[] = {Tile::Bcheck, Tile::Wcheck, Tile::Bking, Tile::Wking, Tile::Bsquare, Tile::Wsquare};

class Art : public testing::Test {
  protected:
    void SetUp() override {
        program_paths.program_folder = PROJECT_FOLDER "/data/";
        forget_art();
    }
    void TearDown() override {
        forget_art();
        program_paths = ProgramPaths{};
    }
    void use_no_files() {
        program_paths.program_folder = (folder.path() + QStringLiteral("/")).toStdString();
        forget_art();
    }
    QTemporaryDir folder;
};

QImage tile_image(Tile tile, int size, double scale = 1, int lay = 0) {
    return board_tile(tile, size, scale, lay).toImage().convertToFormat(QImage::Format_ARGB32);
}

// The mean brightness of the inner half of a picture, 0 to 255.
double brightness(const QImage& picture) {
    double sum = 0;
    int count = 0;
    for (int y = picture.height() / 4; y < picture.height() * 3 / 4; ++y)
        for (int x = picture.width() / 4; x < picture.width() * 3 / 4; ++x, ++count)
            sum += qGray(picture.pixel(x, y));
    return sum / count;
}

int opaque_pixels(const QImage& picture) {
    int count = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) count += qAlpha(picture.pixel(x, y)) > 250;
    return count;
}

// How many pixels of two pictures of one size are clearly different.
int different_pixels(const QImage& a, const QImage& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            count += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) +
                         std::abs(qBlue(p) - qBlue(q)) + std::abs(qAlpha(p) - qAlpha(q)) >
                     60;
        }
    return count;
}

TEST_F(Art, EveryFileIsThereAndValid) {
    QStringList names;
    for (const char* name : {"Bcheck", "Wcheck", "Bking", "Wking", "Bsquare", "Wsquare", "tessarin"})
        names << QString::fromLatin1(name);
    for (int number = 1; number <= 8; ++number) names << QStringLiteral("toolbar-%1").arg(number);
    for (const QString& name : names) {
        QSvgRenderer file(ART + name + QStringLiteral(".svg"));
        EXPECT_TRUE(file.isValid()) << name.toStdString();
    }
    EXPECT_EQ(QDir(ART).entryList(QDir::Files).size(), names.size()) << "files that nobody draws";
}

TEST_F(Art, TilesHaveTheSizeAskedFor) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0})
        for (const int size : {20, 44, 45, 120}) {
            const QPixmap tile = board_tile(Tile::Wking, size, scale);
            EXPECT_EQ(tile.width(), static_cast<int>(std::ceil(size * scale)));
            EXPECT_EQ(tile.height(), tile.width());
            EXPECT_EQ(tile.devicePixelRatio(), scale);
        }
}

TEST_F(Art, ColoursAreWellApart) {
    for (const bool plain : {false, true}) {
        if (plain) use_no_files();
        for (const int size : {20, 44, 120}) {
            const double black = brightness(tile_image(Tile::Bcheck, size));
            const double white = brightness(tile_image(Tile::Wcheck, size));
            const double dark = brightness(tile_image(Tile::Bsquare, size));
            const double light = brightness(tile_image(Tile::Wsquare, size));
            EXPECT_GT(white - black, 130) << size;
            EXPECT_GT(light - dark, 80) << size;
            EXPECT_GT(dark - black, 30) << size;
            EXPECT_GT(white - dark, 80) << size;
        }
    }
}

TEST_F(Art, KingsAreTellableFromMenAtEverySize) {
    for (const bool plain : {false, true}) {
        if (plain) use_no_files();
        for (const int size : {20, 44, 120}) {
            EXPECT_GT(different_pixels(tile_image(Tile::Bking, size), tile_image(Tile::Bcheck, size)),
                      size * size / 16)
                << size << plain;
            EXPECT_GT(different_pixels(tile_image(Tile::Wking, size), tile_image(Tile::Wcheck, size)),
                      size * size / 16)
                << size << plain;
        }
    }
}

TEST_F(Art, PiecesAreTransparentAroundAndSquaresAreNot) {
    for (const bool plain : {false, true}) {
        if (plain) use_no_files();
        for (const Tile piece : PIECES) {
            const QImage picture = tile_image(piece, 80);
            for (const QPoint corner : {QPoint(0, 0), QPoint(79, 0), QPoint(0, 79), QPoint(79, 79)})
                EXPECT_EQ(qAlpha(picture.pixel(corner)), 0);
            EXPECT_GT(opaque_pixels(picture), 80 * 80 / 3);
        }
        for (const Tile square : {Tile::Bsquare, Tile::Wsquare})
            EXPECT_EQ(opaque_pixels(tile_image(square, 80)), 80 * 80);
    }
}

TEST_F(Art, LaysMirrorTheTile) {
    const QImage tile = tile_image(Tile::Bsquare, 44);
    EXPECT_EQ(tile_image(Tile::Bsquare, 44, 1, 1), tile.mirrored(true, false));
    EXPECT_EQ(tile_image(Tile::Bsquare, 44, 1, 2), tile.mirrored(false, true));
    EXPECT_EQ(tile_image(Tile::Bsquare, 44, 1, 3), tile.mirrored(true, true));
    EXPECT_NE(tile, tile.mirrored(true, false));
}

TEST_F(Art, PicturesAreTheSameEachTime) {
    for (const Tile tile : TILES) {
        const QImage once = tile_image(tile, 44);
        forget_art();
        EXPECT_EQ(tile_image(tile, 44), once);
    }
}

TEST_F(Art, RenderedTilesAreKeptWithinLimits) {
    const qint64 first = board_tile(Tile::Bking, 44, 1).cacheKey();
    EXPECT_EQ(board_tile(Tile::Bking, 44, 1).cacheKey(), first) << "rendered once";
    EXPECT_NE(board_tile(Tile::Bking, 44, 2).cacheKey(), first);
    for (int size = 1; size <= 100; ++size) {
        board_tile(Tile::Wcheck, size, 1);
        ASSERT_LE(kept_tiles(), MAX_KEPT_TILES);
    }
    EXPECT_GT(kept_tiles(), 0);
    forget_art();
    EXPECT_EQ(kept_tiles(), 0);
}

TEST_F(Art, MissingOrBrokenFileGivesAPlainPicture) {
    const QImage drawn = tile_image(Tile::Bking, 44);
    use_no_files();
    const QImage plain = tile_image(Tile::Bking, 44);
    EXPECT_NE(plain, drawn);
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("art")));
    QFile broken(folder.filePath(QStringLiteral("art/Bking.svg")));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("this is no picture");
    broken.close();
    forget_art();
    EXPECT_EQ(tile_image(Tile::Bking, 44), plain);
}

TEST_F(Art, NonsenseSizesAreBroughtIntoRange) {
    EXPECT_EQ(board_tile(Tile::Bcheck, 0, 1).width(), 1);
    EXPECT_EQ(board_tile(Tile::Bcheck, -7, 0).width(), 1);
    EXPECT_EQ(board_tile(Tile::Bcheck, 44, -2).width(), 44);
}

TEST_F(Art, ToolbarPicturesAreCrispAndDiffer) {
    for (const bool plain : {false, true}) {
        if (plain) use_no_files();
        std::vector<QImage> pictures;
        for (int number = 1; number <= 8; ++number) {
            const QIcon icon = toolbar_picture(number);
            EXPECT_EQ(icon.pixmap(QSize(16, 17), 1.0).size(), QSize(16, 17)) << number;
            EXPECT_EQ(icon.pixmap(QSize(16, 17), 2.0).size(), QSize(32, 34)) << number;
            pictures.push_back(icon.pixmap(QSize(16, 17), 1.0).toImage());
        }
        for (size_t a = 0; a < pictures.size(); ++a)
            for (size_t b = 0; b < a; ++b)
                EXPECT_GT(different_pixels(pictures[a], pictures[b]), 20) << a << b;
    }
    EXPECT_TRUE(toolbar_picture(0).isNull());
    EXPECT_TRUE(toolbar_picture(9).isNull());
}

// A picture can be read when enough of it stands out from what is behind it.
TEST_F(Art, ToolbarPicturesStandOutFromLightAndDark) {
    for (const QColor ground : {QColor(0xf0, 0xf0, 0xf0), QColor(0x2b, 0x2b, 0x2b)})
        for (int number = 1; number <= 8; ++number) {
            QImage shown(16, 17, QImage::Format_ARGB32);
            shown.fill(ground);
            const QImage bare = shown;
            QPainter painter(&shown);
            painter.drawPixmap(0, 0, toolbar_picture(number).pixmap(QSize(16, 17), 1.0));
            painter.end();
            EXPECT_GT(different_pixels(shown, bare), 40) << number;
        }
}

TEST_F(Art, IconHasAllSizes) {
    for (const bool plain : {false, true}) {
        if (plain) use_no_files();
        for (const int size : {16, 32, 48, 128, 256})
            EXPECT_EQ(program_icon().pixmap(QSize(size, size), 1.0).size(), QSize(size, size));
    }
}

TEST(StartSound, IsAShortWaveFile) {
    QFile file(QStringLiteral(PROJECT_FOLDER "/data/start.wav"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    ASSERT_GT(bytes.size(), 44);
    const auto number = [&](int at) { return qFromLittleEndian<quint32>(bytes.constData() + at); };
    EXPECT_TRUE(bytes.startsWith("RIFF"));
    EXPECT_EQ(bytes.mid(8, 8), QByteArray("WAVEfmt "));
    EXPECT_EQ(number(4), static_cast<quint32>(bytes.size() - 8));
    EXPECT_EQ(number(40), static_cast<quint32>(bytes.size() - 44));
    const quint32 bytes_a_second = number(28);
    EXPECT_LT(number(40), bytes_a_second / 2) << "longer than half a second";
    int loudest = 0;
    for (int at = 44; at + 1 < bytes.size(); at += 2)
        loudest = std::max(loudest, std::abs(int{qFromLittleEndian<qint16>(bytes.constData() + at)}));
    EXPECT_GT(loudest, 8000);
    EXPECT_LT(loudest, 26000);
}

}  // namespace

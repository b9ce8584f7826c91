// A picture that says which of many it is, and where: every piece of it that is large enough tells its number and its
// place, also after it went through a lossy encoder.
//
// It is made of tiles, 80 x 72 pixels each, in black, white and grey, because encoders halve the resolution of colours.
// A tile has a corner whose edges lie at known pixels, blocks of 8 pixels that hold the number, the tile's column and
// row and a checksum, and below them a lane in which a bar moves and, in some, the number can be read by people.
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <array>
#include <optional>
#include <vector>

namespace quenby::testing {

constexpr QSize patternTile(80, 72);
// A piece that is at least this large has a whole tile wherever it lies.
constexpr QSize leastPatternPiece(2 * 80 - 1, 2 * 72 - 1);
// Then they start again with 0.
constexpr int patternNumbers = 1 << 16;

// What the picture is painted of: all grey, then the white rectangles, then the black ones. They may reach beyond its
// edges.
struct PatternRectangles {
    std::vector<QRect> white;
    std::vector<QRect> black;
};
PatternRectangles patternRectangles(const QSize& size, int number);

constexpr QRgb patternGrey = 0xff808080;

QImage patternPicture(const QSize& size, int number);

struct PatternReading {
    int number = 0;
    QPoint offset;      // of the picture's upper left corner within the pattern, to the pixel
    int wholeTiles = 0; // that the picture has room for
    int readTiles = 0;  // of those, the ones that lie exactly where they should and say what all others say
    // Says another number, or lies elsewhere, though it is undamaged: two pictures in one.
    int contradictingTiles = 0;
};

// Nothing when no tile can be read, or when most of them cannot: what covers a few (a pointer) does no harm.
std::optional<PatternReading> readPattern(const QImage& picture);

} // namespace quenby::testing

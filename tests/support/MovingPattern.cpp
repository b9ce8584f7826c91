#include "tests/support/MovingPattern.h"

#include <QPainter>

namespace quenby::testing {
namespace {

// A tile in cells of 8 pixels: a black edge above and at the left, a white one within it, the code's cells, the lane.
constexpr int cell = 8; // pixels
constexpr int codeColumns = 8;
constexpr int codeRows = 5;
constexpr QPoint codeOrigin(2 * cell, 2 * cell);
constexpr int codeBits = codeColumns * codeRows;
constexpr QSize codeSize(codeOrigin.x() + codeColumns * cell, codeOrigin.y() + codeRows * cell);
constexpr int laneHeight = patternTile.height() - codeSize.height();
static_assert(codeSize.width() == patternTile.width() && laneHeight == 2 * cell);

constexpr int placeBits = 6; // of a column or row
constexpr int numberBits = 16;
constexpr int checkBits = 12;
static_assert(numberBits + 2 * placeBits + checkBits == codeBits && 1 << numberBits == patternNumbers);

struct TileCode {
    int number = 0;
    int column = 0;
    int row = 0;
};

quint64 encoded(const TileCode& code) {
    const quint32 value = static_cast<quint32>(code.number) << (2 * placeBits) |
                          static_cast<quint32>(code.column) << placeBits | static_cast<quint32>(code.row);
    // The upper bits of a product depend on all bits of its factors.
    const quint32 check = (value * 2'654'435'761U + 1'013'904'223U) >> (32 - checkBits);
    return quint64{value} << checkBits | check;
}

std::optional<TileCode> decoded(quint64 bits) {
    const auto value = static_cast<quint32>(bits >> checkBits);
    constexpr quint32 place = (1U << placeBits) - 1;
    const TileCode code{.number = static_cast<int>(value >> (2 * placeBits)),
                        .column = static_cast<int>(value >> placeBits & place),
                        .row = static_cast<int>(value & place)};
    if (encoded(code) != bits)
        return {};
    return code;
}

// --- Painting -------------------------------------------------------------------------------------------------------

void addCode(const QPoint& tile, const TileCode& code, PatternRectangles& rectangles) {
    rectangles.white.emplace_back(tile, codeSize);
    rectangles.black.emplace_back(tile, QSize(codeSize.width(), cell));
    rectangles.black.emplace_back(tile, QSize(cell, codeSize.height()));
    const quint64 bits = encoded(code);
    for (int i = 0; i < codeBits; ++i) {
        if (bits >> i & 1)
            rectangles.black.emplace_back(tile + codeOrigin + cell * QPoint(i % codeColumns, i / codeColumns),
                                          QSize(cell, cell));
    }
}

// Seven strokes, as on a pocket calculator: above, at the upper left and right, across, at the lower left and right,
// below. A digit's lowest bit is the first of them.
constexpr std::array<int, 10> strokesOfDigits{0x77, 0x24, 0x5d, 0x6d, 0x2e, 0x6b, 0x7b, 0x25, 0x7f, 0x6f};
constexpr std::array<QRect, 7> strokes{QRect(0, 0, 7, 2), QRect(0, 0, 2, 7), QRect(5, 0, 2, 7), QRect(0, 5, 7, 2),
                                       QRect(0, 5, 2, 7), QRect(5, 5, 2, 7), QRect(0, 10, 7, 2)};

void addDigits(QPoint place, int number, PatternRectangles& rectangles) {
    constexpr int advance = 10;
    place.rx() += 4 * advance;
    for (int digit = 0; digit < 5; ++digit, number /= 10, place.rx() -= advance) {
        for (size_t i = 0; i < strokes.size(); ++i) {
            if (strokesOfDigits[static_cast<size_t>(number % 10)] >> i & 1)
                rectangles.black.push_back(strokes[i].translated(place));
        }
    }
}

// --- Reading --------------------------------------------------------------------------------------------------------

class Reader {
public:
    explicit Reader(const QImage& picture)
        : grey_(picture.convertToFormat(QImage::Format_Grayscale8)) {}

    std::optional<PatternReading> read() const {
        const int lastX = grey_.width() - patternTile.width();
        const int lastY = grey_.height() - patternTile.height();
        for (int y = 0; y <= lastY; ++y) {
            for (int x = 0; x <= lastX; ++x) {
                const auto code = codeAt({x, y});
                if (!code)
                    continue;
                const PatternReading reading = readingFrom({x, y}, *code);
                if (2 * reading.readTiles > reading.wholeTiles)
                    return reading;
            }
        }
        return {};
    }

private:
    int grey(const QPoint& pixel) const { return grey_.constScanLine(pixel.y())[pixel.x()]; }
    // An encoder leaves black and white well beyond these; where two pictures are mixed, or one lies between pixels,
    // there is something in between.
    bool isBlack(const QPoint& pixel) const { return grey(pixel) < 100; }
    bool isWhite(const QPoint& pixel) const { return grey(pixel) > 155; }

    // The corner's edges, from both sides: one pixel off, and one of them is on the wrong side.
    bool hasCorner(const QPoint& tile) const {
        for (int i = cell; i < patternTile.width(); ++i) {
            if (!isBlack(tile + QPoint(i, cell - 1)) || !isWhite(tile + QPoint(i, cell)))
                return false;
        }
        for (int i = cell; i < codeSize.height(); ++i) {
            if (!isBlack(tile + QPoint(cell - 1, i)) || !isWhite(tile + QPoint(cell, i)))
                return false;
        }
        return true;
    }

    std::optional<TileCode> codeAt(const QPoint& tile) const {
        if (!hasCorner(tile))
            return {};
        quint64 bits = 0;
        for (int i = 0; i < codeBits; ++i) {
            const QPoint middle =
                tile + codeOrigin + cell * QPoint(i % codeColumns, i / codeColumns) + QPoint(cell / 2, cell / 2);
            if (isBlack(middle))
                bits |= quint64{1} << i;
            else if (!isWhite(middle))
                return {};
        }
        return decoded(bits);
    }

    // What all tiles say, when the one at this place is right.
    PatternReading readingFrom(const QPoint& tile, const TileCode& code) const {
        PatternReading reading;
        reading.number = code.number;
        reading.offset = QPoint(code.column * patternTile.width(), code.row * patternTile.height()) - tile;
        const int left = tile.x() % patternTile.width();
        const int top = tile.y() % patternTile.height();
        for (int y = top; y + patternTile.height() <= grey_.height(); y += patternTile.height()) {
            for (int x = left; x + patternTile.width() <= grey_.width(); x += patternTile.width()) {
                ++reading.wholeTiles;
                const auto found = codeAt({x, y});
                if (!found)
                    continue;
                const QPoint place(found->column * patternTile.width(), found->row * patternTile.height());
                const bool agrees = found->number == code.number && place == reading.offset + QPoint(x, y);
                ++(agrees ? reading.readTiles : reading.contradictingTiles);
            }
        }
        return reading;
    }

    const QImage grey_;
};

} // namespace

PatternRectangles patternRectangles(const QSize& size, int number) {
    constexpr int barWidth = 24;
    constexpr int barStep = 8;
    PatternRectangles rectangles;
    const int barLeft = number * barStep % size.width();
    for (int row = 0; row * patternTile.height() < size.height(); ++row) {
        const int lane = row * patternTile.height() + codeSize.height();
        rectangles.white.emplace_back(barLeft, lane, barWidth, laneHeight);
        for (int column = 0; column * patternTile.width() < size.width(); ++column) {
            const QPoint tile(column * patternTile.width(), row * patternTile.height());
            addCode(tile, {number, column, row}, rectangles);
            if (column % 4 == row % 4)
                addDigits({tile.x() + cell, lane + 2}, number, rectangles);
        }
    }
    return rectangles;
}

QImage patternPicture(const QSize& size, int number) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(patternGrey);
    QPainter painter(&picture);
    const PatternRectangles rectangles = patternRectangles(size, number);
    for (const QRect& rectangle : rectangles.white)
        painter.fillRect(rectangle, Qt::white);
    for (const QRect& rectangle : rectangles.black)
        painter.fillRect(rectangle, Qt::black);
    return picture;
}

std::optional<PatternReading> readPattern(const QImage& picture) { return Reader(picture).read(); }

} // namespace quenby::testing

#include "localdrive/server/web/Drawing.h"

#include "localdrive/server/web/Png.h"
#include "localdrive/store/NativeTypes.h"

#include <QHash>
#include <QRandomGenerator>

namespace quenby::localdrive {
namespace {

constexpr int side = 32; // pixels

struct Colour {
    quint8 red, green, blue;
};

Colour colourOf(const QString& name) {
    static const QHash<QString, Colour> colours{
        {QStringLiteral("folder"), {0x8f, 0x98, 0xa8}},      {QStringLiteral("document"), {0x3f, 0x74, 0xd9}},
        {QStringLiteral("spreadsheet"), {0x2c, 0x97, 0x5d}}, {QStringLiteral("presentation"), {0xe0, 0xa0, 0x24}},
        {QStringLiteral("drawing"), {0xc9, 0x50, 0x46}},     {QStringLiteral("image"), {0xb0, 0x4a, 0x96}},
        {QStringLiteral("video"), {0x7a, 0x4f, 0xc4}},       {QStringLiteral("audio"), {0x2a, 0x93, 0xa8}},
        {QStringLiteral("text"), {0x5b, 0x6d, 0x85}},        {QStringLiteral("pdf"), {0xc2, 0x36, 0x36}},
        {QStringLiteral("archive"), {0x8a, 0x6a, 0x45}},
    };
    return colours.value(name, {0x7c, 0x85, 0x92});
}

bool isFolderPixel(int x, int y) { return x >= 3 && x < 29 && (y >= 9 ? y < 27 : y >= 6 && x < 14); }

// A sheet with its upper right corner cut off.
bool isSheetPixel(int x, int y) { return x >= 6 && x < 26 && y >= 3 && y < 29 && x - y < 16; }

// Lines of writing on the sheet.
bool isInk(int x, int y) { return x >= 10 && x < 22 && y >= 12 && y < 25 && y % 4 == 0; }

void append(QByteArray& pixels, Colour colour, quint8 alpha = 0xff) {
    for (const quint8 sample : {colour.red, colour.green, colour.blue, alpha})
        pixels.append(static_cast<char>(sample));
}

// From one colour to the other, `part` of `whole` of the way.
Colour between(Colour one, Colour other, int part, int whole) {
    const auto mixed = [=](int from, int to) { return static_cast<quint8>(from + (to - from) * part / whole); };
    return {mixed(one.red, other.red), mixed(one.green, other.green), mixed(one.blue, other.blue)};
}

// A hill's height at this column: a parabola around its middle.
int hillHeight(int x, int middle, int height, int width) {
    return height - height * (x - middle) * (x - middle) / (width * width);
}

} // namespace

std::optional<QByteArray> iconPng(const QString& name) {
    if (!iconNames().contains(name))
        return std::nullopt;
    const Colour colour = colourOf(name);
    const bool isFolder = name == QLatin1String("folder");
    QByteArray pixels;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const bool isFilled = isFolder ? isFolderPixel(x, y) : isSheetPixel(x, y);
            const bool isWhite = isFilled && !isFolder && isInk(x, y);
            append(pixels, isWhite ? Colour{0xff, 0xff, 0xff} : colour, isFilled ? 0xff : 0);
        }
    }
    return encodedPng(side, side, pixels);
}

QByteArray landscapePng(quint32 seed) {
    constexpr int width = 320;
    constexpr int height = 220;
    QRandomGenerator random(seed);
    const auto colour = [&random](int least, int most) {
        const auto sample = [&] { return static_cast<quint8>(random.bounded(least, most)); };
        return Colour{sample(), sample(), sample()};
    };
    const Colour zenith = colour(30, 160);
    const Colour horizon = colour(170, 256);
    const Colour sun{0xff, static_cast<quint8>(random.bounded(160, 256)), 0x90};
    const Colour hills[] = {colour(40, 120), colour(20, 80)};
    const int middles[] = {random.bounded(width), random.bounded(width)};
    const int sunX = random.bounded(40, width - 40);
    const int sunY = random.bounded(30, height / 2);
    constexpr int sunRadius = 18;

    QByteArray pixels;
    pixels.reserve(4 * width * height);
    for (int y = 0; y < height; ++y) {
        const Colour sky = between(zenith, horizon, y, height);
        for (int x = 0; x < width; ++x) {
            const int fromSun = (x - sunX) * (x - sunX) + (y - sunY) * (y - sunY);
            if (height - y < hillHeight(x, middles[1], height / 4, width))
                append(pixels, hills[1]);
            else if (height - y < hillHeight(x, middles[0], height / 2, width))
                append(pixels, hills[0]);
            else
                append(pixels, fromSun < sunRadius * sunRadius ? sun : sky);
        }
    }
    return encodedPng(width, height, pixels);
}

} // namespace quenby::localdrive

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

// Somebody on a square whose sides are 1 long.
class Portrait {
public:
    explicit Portrait(quint32 seed)
        : random_(seed)
        , wall_(colour(120, 210))
        , shirt_(colour(40, 170))
        , hair_(hairColours[random_.bounded(4)])
        , skin_(skinColours[random_.bounded(4)])
        , fringe_(0.30 + 0.08 * random_.generateDouble())
        , hairLength_(0.40 + 0.25 * random_.generateDouble()) {}

    Colour at(double x, double y) const {
        const bool isBesideNose = isIn(x, y, 0.42, 0.46, 0.022, 0.022) || isIn(x, y, 0.58, 0.46, 0.022, 0.022);
        const bool isMouth = isIn(x, y, 0.5, 0.56, 0.07, 0.035) && y > 0.565;
        if (isBesideNose || isMouth)
            return {0x3a, 0x2a, 0x28};
        if (isIn(x, y, 0.5, 0.46, 0.17, 0.22) && y > fringe_)
            return skin_;
        if (isIn(x, y, 0.5, 0.42, 0.23, 0.25) && y < hairLength_)
            return hair_;
        if (x > 0.43 && x < 0.57 && y > 0.6 && y < 0.74)
            return skin_;
        return isIn(x, y, 0.5, 1.02, 0.38, 0.33) ? shirt_ : wall_;
    }

private:
    static constexpr Colour hairColours[] = {
        {0x2b, 0x21, 0x1c}, {0x5a, 0x3a, 0x22}, {0xc7, 0x9a, 0x4e}, {0x8c, 0x8c, 0x8c}};
    static constexpr Colour skinColours[] = {
        {0xf3, 0xd0, 0xb5}, {0xdc, 0xab, 0x83}, {0xa8, 0x74, 0x4c}, {0x70, 0x48, 0x30}};

    static bool isIn(double x, double y, double middleX, double middleY, double halfWidth, double halfHeight) {
        const double across = (x - middleX) / halfWidth;
        const double down = (y - middleY) / halfHeight;
        return across * across + down * down < 1;
    }
    Colour colour(int least, int most) {
        const auto sample = [&] { return static_cast<quint8>(random_.bounded(least, most)); };
        return {sample(), sample(), sample()};
    }

    QRandomGenerator random_;
    const Colour wall_;
    const Colour shirt_;
    const Colour hair_;
    const Colour skin_;
    const double fringe_;     // where the face begins below the hair
    const double hairLength_; // where it ends
};

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

QByteArray facePng(quint32 seed) {
    constexpr int pixelsAcross = 128;
    constexpr int samples = 3; // in each direction, for smooth edges
    const Portrait portrait(seed);
    QByteArray pixels;
    pixels.reserve(4 * pixelsAcross * pixelsAcross);
    for (int y = 0; y < pixelsAcross; ++y) {
        for (int x = 0; x < pixelsAcross; ++x) {
            int red = 0;
            int green = 0;
            int blue = 0;
            for (int sample = 0; sample < samples * samples; ++sample) {
                const Colour colour = portrait.at((x + (sample % samples + 0.5) / samples) / pixelsAcross,
                                                  (y + (sample / samples + 0.5) / samples) / pixelsAcross);
                red += colour.red;
                green += colour.green;
                blue += colour.blue;
            }
            const auto mean = [](int sum) { return static_cast<quint8>(sum / (samples * samples)); };
            append(pixels, {mean(red), mean(green), mean(blue)});
        }
    }
    return encodedPng(pixelsAcross, pixelsAcross, pixels);
}

} // namespace quenby::localdrive

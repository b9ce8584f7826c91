#include "localdrive/server/web/Drawing.h"

#include "localdrive/store/NativeTypes.h"

#include <QHash>
#include <QtEndian>

#include <zlib.h>

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

// PNG, section 5.3: length, type, data and a checksum of type and data.
QByteArray chunk(const QByteArray& type, const QByteArray& data) {
    const QByteArray checked = type + data;
    const auto* bytes = reinterpret_cast<const Bytef*>(checked.constData());
    const auto sum = static_cast<quint32>(::crc32(0, bytes, static_cast<uInt>(checked.size())));
    QByteArray ends(8, '\0');
    qToBigEndian(static_cast<quint32>(data.size()), ends.data());
    qToBigEndian(sum, ends.data() + 4);
    return ends.first(4) + checked + ends.last(4);
}

QByteArray header() {
    QByteArray data(13, '\0');
    qToBigEndian<quint32>(side, data.data());
    qToBigEndian<quint32>(side, data.data() + 4);
    data[8] = 8; // bits a sample
    data[9] = 6; // red, green, blue, alpha
    return data;
}

} // namespace

std::optional<QByteArray> iconPng(const QString& name) {
    if (!iconNames().contains(name))
        return std::nullopt;
    const Colour colour = colourOf(name);
    const bool isFolder = name == QLatin1String("folder");
    QByteArray rows;
    for (int y = 0; y < side; ++y) {
        rows.append('\0'); // no filter
        for (int x = 0; x < side; ++x) {
            const bool isFilled = isFolder ? isFolderPixel(x, y) : isSheetPixel(x, y);
            const bool isWhite = isFilled && !isFolder && isInk(x, y);
            for (const quint8 sample : {colour.red, colour.green, colour.blue})
                rows.append(static_cast<char>(isWhite ? 0xff : sample));
            rows.append(static_cast<char>(isFilled ? 0xff : 0));
        }
    }
    constexpr int lengthPrefix = 4; // that qCompress puts before the zlib stream
    return QByteArray("\x89PNG\r\n\x1a\n") + chunk("IHDR", header()) +
           chunk("IDAT", qCompress(rows).mid(lengthPrefix)) + chunk("IEND", {});
}

} // namespace quenby::localdrive

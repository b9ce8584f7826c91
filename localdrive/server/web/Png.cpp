#include "localdrive/server/web/Png.h"

#include <QtEndian>

#include <zlib.h>

namespace quenby::localdrive {
namespace {

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

QByteArray header(int width, int height) {
    QByteArray data(13, '\0');
    qToBigEndian(static_cast<quint32>(width), data.data());
    qToBigEndian(static_cast<quint32>(height), data.data() + 4);
    data[8] = 8; // bits a sample
    data[9] = 6; // red, green, blue, alpha
    return data;
}

} // namespace

QByteArray encodedPng(int width, int height, const QByteArray& pixels) {
    const qsizetype rowSize = qsizetype{4} * width;
    QByteArray rows;
    rows.reserve(pixels.size() + height);
    for (int y = 0; y < height; ++y)
        rows.append('\0').append(pixels.sliced(y * rowSize, rowSize)); // 0: no filter
    constexpr int lengthPrefix = 4;                                    // that qCompress puts before the zlib stream
    return QByteArray("\x89PNG\r\n\x1a\n") + chunk("IHDR", header(width, height)) +
           chunk("IDAT", qCompress(rows).mid(lengthPrefix)) + chunk("IEND", {});
}

} // namespace quenby::localdrive

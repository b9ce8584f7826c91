#include "app/pictures/PictureFormat.h"

#include <QtEndian>

#include <algorithm>
#include <iterator>

namespace quenby {
namespace {

bool leavesItToTheDecoder(QByteArrayView) { return true; }

quint32 littleEndian(QByteArrayView bytes, qsizetype offset) {
    return qFromLittleEndian<quint32>(bytes.data() + offset);
}

constexpr QByteArrayView pngSignature("\x89PNG\r\n\x1a\n");

bool beginsPng(QByteArrayView bytes) { return bytes.startsWith(pngSignature); }

// Calls with each chunk, from its length to its checksum; the last one may be cut off.
template <typename Use>
void forEachPngChunk(QByteArrayView bytes, Use use) {
    constexpr qsizetype frame = 12; // length, name and checksum
    qsizetype at = pngSignature.size();
    while (bytes.size() - at >= frame) {
        const qint64 length = qFromBigEndian<quint32>(bytes.data() + at) + qint64{frame};
        const QByteArrayView chunk = bytes.sliced(at, std::min<qint64>(length, bytes.size() - at));
        use(chunk.sliced(4, 4), chunk);
        at += chunk.size();
    }
}

bool isWholePng(QByteArrayView bytes) {
    bool hasEnd = false;
    forEachPngChunk(bytes, [&hasEnd](QByteArrayView name, QByteArrayView) { hasEnd = hasEnd || name == "IEND"; });
    return hasEnd;
}

// The chunks without which there is no picture. Texts, profiles and the like are left out: each may unpack to
// megabytes, and there may be thousands of them.
QByteArray pngEssence(QByteArrayView bytes) {
    static const QByteArrayView needed[] = {"IHDR", "PLTE", "tRNS", "IDAT", "IEND"};
    QByteArray essence = pngSignature.toByteArray();
    forEachPngChunk(bytes, [&essence](QByteArrayView name, QByteArrayView chunk) {
        if (std::find(std::begin(needed), std::end(needed), name) != std::end(needed))
            essence.append(chunk);
    });
    return essence;
}

bool beginsJpeg(QByteArrayView bytes) { return bytes.startsWith("\xff\xd8\xff"); }

// Where the scans begin: behind the segments, one of which may hold a whole picture of its own. -1 when they don't.
qsizetype jpegScans(QByteArrayView bytes) {
    constexpr qsizetype markerSize = 2;
    constexpr char startOfScan = '\xda';
    qsizetype at = markerSize;
    while (at + 2 * markerSize <= bytes.size() && bytes[at] == '\xff') {
        if (bytes[at + 1] == startOfScan)
            return at;
        at += bytes[at + 1] == '\xff' ? 1 : markerSize + qFromBigEndian<quint16>(bytes.data() + at + markerSize);
    }
    return -1;
}

// The end marker can't be among the picture's data. Something else may follow it.
bool isWholeJpeg(QByteArrayView bytes) {
    const qsizetype scans = jpegScans(bytes);
    return scans > 0 && bytes.indexOf(QByteArrayView("\xff\xd9"), scans) > 0;
}

bool beginsGif(QByteArrayView bytes) { return bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"); }

bool isWholeGif(QByteArrayView bytes) {
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    return bytes.endsWith(';');
}

bool beginsWebp(QByteArrayView bytes) {
    constexpr qsizetype head = 12; // "RIFF", the length of what follows, "WEBP"
    return bytes.size() > head && bytes.startsWith("RIFF") && bytes.sliced(8).startsWith("WEBP");
}

bool isWholeWebp(QByteArrayView bytes) { return littleEndian(bytes, 4) + qint64{8} <= bytes.size(); }

bool beginsBmp(QByteArrayView bytes) {
    constexpr qsizetype head = 14; // "BM", the length of the file, and where the pixels begin
    return bytes.size() > head && bytes.startsWith("BM");
}

bool isWholeBmp(QByteArrayView bytes) { return littleEndian(bytes, 2) <= bytes.size(); }

bool beginsTiff(QByteArrayView bytes) {
    return bytes.startsWith(QByteArrayView("II*\0", 4)) || bytes.startsWith(QByteArrayView("MM\0*", 4));
}

constexpr PictureFormat formats[] = {
    {"png", beginsPng, isWholePng, pngEssence}, {"jpeg", beginsJpeg, isWholeJpeg, nullptr},
    {"gif", beginsGif, isWholeGif, nullptr},    {"webp", beginsWebp, isWholeWebp, nullptr},
    {"bmp", beginsBmp, isWholeBmp, nullptr},    {"tiff", beginsTiff, leavesItToTheDecoder, nullptr},
};

} // namespace

const PictureFormat* pictureFormatOf(QByteArrayView bytes) {
    const auto* found = std::find_if(std::begin(formats), std::end(formats),
                                     [bytes](const PictureFormat& format) { return format.begins(bytes); });
    return found == std::end(formats) ? nullptr : found;
}

} // namespace quenby

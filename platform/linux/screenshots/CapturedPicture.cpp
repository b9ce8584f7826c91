#include "platform/linux/screenshots/CapturedPicture.h"

#include <QtEndian>

#include <optional>

#include <unistd.h>

namespace quenby {
namespace {

using State = CapturedPicture::State;

constexpr qint64 longestText = 4096; // bytes of a text that are looked at
constexpr int mostTexts = 64;        // nobody writes more in good faith
constexpr int mostParts = 200'000;   // a picture of 8K has some ten thousand

// Reads at any place of a file that may shrink meanwhile.
class FileParts {
public:
    FileParts(int descriptor, qint64 size)
        : descriptor_(descriptor)
        , size_(size) {}

    qint64 size() const { return size_; }

    // Null when the file ends before.
    QByteArray read(qint64 offset, qint64 length) const {
        if (offset < 0 || length < 0 || offset > size_ - length)
            return {};
        QByteArray bytes(length, Qt::Uninitialized);
        qint64 done = 0;
        while (done < length) {
            const ssize_t got = ::pread(descriptor_, bytes.data() + done, static_cast<size_t>(length - done),
                                        static_cast<off_t>(offset + done));
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                return {};
            done += got;
        }
        return bytes;
    }

private:
    int descriptor_;
    qint64 size_;
};

quint32 bigEndian32(const QByteArray& bytes, qsizetype at) { return qFromBigEndian<quint32>(bytes.constData() + at); }
quint16 bigEndian16(const QByteArray& bytes, qsizetype at) { return qFromBigEndian<quint16>(bytes.constData() + at); }
quint32 littleEndian32(const QByteArray& bytes, qsizetype at) {
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}
quint32 littleEndian24(const QByteArray& bytes, qsizetype at) {
    return quint32(uchar(bytes.at(at))) | quint32(uchar(bytes.at(at + 1))) << 8 |
           quint32(uchar(bytes.at(at + 2))) << 16;
}

CapturedPicture strange() { return {State::strange, {}, {}}; }

// False when there are too many.
bool addText(CapturedPicture& picture, const QByteArray& key, const QByteArray& value = {}) {
    picture.texts.append({key, value});
    return picture.texts.size() <= mostTexts;
}

// --- PNG ------------------------------------------------------------------------------------------------------------

constexpr QByteArrayView pngSignature("\x89PNG\r\n\x1a\n", 8);

bool addPngText(CapturedPicture& picture, const QByteArray& type, const QByteArray& bytes) {
    if (type == "tIME" || type == "eXIf")
        return addText(picture, type);
    const qsizetype end = bytes.indexOf('\0');
    const QByteArray key = end < 0 ? bytes : bytes.left(end);
    if (type == "tEXt" && end >= 0)
        return addText(picture, key, bytes.mid(end + 1));
    // Compression flag, its method, a language tag and the translated key come before this one's text.
    if (type == "iTXt" && end >= 0 && bytes.size() > end + 3 && bytes.at(end + 1) == 0) {
        const qsizetype language = bytes.indexOf('\0', end + 3);
        const qsizetype translated = language < 0 ? -1 : bytes.indexOf('\0', language + 1);
        return addText(picture, key, translated < 0 ? QByteArray() : bytes.mid(translated + 1));
    }
    return addText(picture, key);
}

bool holdsPngText(const QByteArray& type) {
    return type == "tEXt" || type == "iTXt" || type == "zTXt" || type == "tIME" || type == "eXIf";
}

CapturedPicture inspectPng(const FileParts& file) {
    constexpr qint64 frame = 12; // length, type and checksum of a part
    CapturedPicture picture;
    qint64 offset = pngSignature.size();
    for (int count = 0; count < mostParts; ++count) {
        const QByteArray head = file.read(offset, 8);
        if (head.isNull())
            return picture;
        const qint64 length = bigEndian32(head, 0);
        const QByteArray type = head.mid(4);
        if (offset + frame + length > file.size())
            return picture;
        if (count == 0) {
            const QByteArray header = file.read(offset + 8, 8);
            if (type != "IHDR" || length != 13 || header.isNull())
                return strange();
            picture.size = QSize(int(bigEndian32(header, 0) & 0x7fffffff), int(bigEndian32(header, 4) & 0x7fffffff));
        }
        if (holdsPngText(type)) {
            const QByteArray text = file.read(offset + 8, qMin(length, longestText));
            if (!addPngText(picture, type, text))
                return strange();
        }
        offset += frame + length;
        if (type == "IEND") {
            picture.state = offset == file.size() ? State::whole : State::strange;
            return picture;
        }
    }
    return strange();
}

// --- JPEG -----------------------------------------------------------------------------------------------------------

bool isJpegFrame(uchar marker) {
    return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

// The segment's name when it says something about the picture; null for those without which there is no picture.
const char* jpegText(uchar marker) {
    switch (marker) {
    case 0xe1:
        return "eXIf"; // or XMP
    case 0xed:
        return "IPTC";
    case 0xfe:
        return "Comment";
    default:
        return nullptr;
    }
}

CapturedPicture inspectJpeg(const FileParts& file) {
    constexpr uchar startOfScan = 0xda;
    CapturedPicture picture;
    qint64 offset = 2;
    for (int count = 0; count < mostParts; ++count) {
        const QByteArray head = file.read(offset, 4);
        if (head.isNull())
            return picture;
        const auto marker = static_cast<uchar>(head.at(1));
        if (uchar(head.at(0)) != 0xff)
            return strange();
        if (marker == 0xff) { // padding
            ++offset;
            continue;
        }
        if (marker == startOfScan) {
            picture.state = file.read(file.size() - 2, 2) == "\xff\xd9" ? State::whole : State::partial;
            return picture;
        }
        const qint64 length = bigEndian16(head, 2);
        if (isJpegFrame(marker)) {
            const QByteArray dimensions = file.read(offset + 5, 4);
            if (dimensions.isNull())
                return picture;
            picture.size = QSize(bigEndian16(dimensions, 2), bigEndian16(dimensions, 0));
        }
        if (const char* const key = jpegText(marker);
            key && !addText(picture, key, file.read(offset + 4, qMax<qint64>(0, qMin(length - 2, longestText)))))
            return strange();
        offset += 2 + length;
    }
    return strange();
}

// --- WebP -----------------------------------------------------------------------------------------------------------

QSize webpSize(const QByteArray& type, const QByteArray& bytes) {
    if (type == "VP8X" && bytes.size() >= 10)
        return QSize(int(littleEndian24(bytes, 4)) + 1, int(littleEndian24(bytes, 7)) + 1);
    if (type == "VP8L" && bytes.size() >= 5) {
        const quint32 bits = littleEndian32(bytes, 1);
        return QSize(int(bits & 0x3fff) + 1, int(bits >> 14 & 0x3fff) + 1);
    }
    if (type == "VP8 " && bytes.size() >= 10)
        return QSize(int(littleEndian32(bytes, 6) & 0x3fff), int(littleEndian32(bytes, 6) >> 16 & 0x3fff));
    return {};
}

CapturedPicture inspectWebp(const FileParts& file) {
    const qint64 end = 8 + qint64(littleEndian32(file.read(0, 12), 4));
    CapturedPicture picture;
    if (end > file.size())
        return picture;
    if (end < file.size())
        return strange();
    qint64 offset = 12;
    for (int count = 0; count < mostParts && offset < end; ++count) {
        const QByteArray head = file.read(offset, 8);
        if (head.isNull())
            return strange();
        const QByteArray type = head.left(4);
        const qint64 length = littleEndian32(head, 4);
        if (picture.size.isEmpty())
            picture.size = webpSize(type, file.read(offset + 8, qMin<qint64>(length, 10)));
        if (type == "ANIM" || ((type == "EXIF" || type == "XMP ") && !addText(picture, "eXIf")))
            return strange();
        offset += 8 + length + length % 2;
    }
    picture.state = picture.size.isEmpty() ? State::strange : State::whole;
    return picture;
}

} // namespace

CapturedPicture inspectPicture(int descriptor, qint64 size) {
    constexpr qint64 shortestHead = 12;
    const FileParts file(descriptor, size);
    const QByteArray head = file.read(0, shortestHead);
    if (head.isNull())
        return {};
    if (head.startsWith(pngSignature))
        return inspectPng(file);
    if (head.startsWith("\xff\xd8\xff"))
        return inspectJpeg(file);
    if (head.startsWith("RIFF") && head.endsWith("WEBP"))
        return inspectWebp(file);
    return strange();
}

} // namespace quenby

#include "localdrive/server/docs/ZipWriter.h"

#include <QtEndian>

#include <algorithm>
#include <limits>

#include <zlib.h>

namespace quenby::localdrive {
namespace {

template <typename Number>
QByteArray little(Number number) {
    QByteArray bytes(sizeof number, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

constexpr quint16 versionNeeded = 20;
constexpr quint16 versionForLarge = 45;
constexpr quint16 madeOnUnix = 3 << 8;
constexpr quint16 utf8Names = 1 << 11;
constexpr quint16 sizesFollow = 1 << 3; // in a record behind the member
constexpr quint16 stored = 0;
constexpr quint16 deflated = 8;
constexpr quint16 largeTag = 1; // of the extra field with sizes of 64 bits
constexpr quint32 most32 = std::numeric_limits<quint32>::max();
constexpr quint16 most16 = std::numeric_limits<quint16>::max();
// Deflating may make a member a little longer than it was.
constexpr qint64 surelySmall = qint64{0xf0000000};

constexpr quint32 fileMode = 0100644;
constexpr quint32 folderMode = 040755;

// The format counts years from 1980 and seconds in pairs.
quint32 dosDate(const QDateTime& date) {
    if (!date.isValid() || date.date().year() < 1980 || date.date().year() > 2107)
        return ((1 << 5) | 1) << 16;
    const QDate day = date.date();
    const QTime time = date.time();
    const int days = ((day.year() - 1980) << 9) | (day.month() << 5) | day.day();
    const int seconds = (time.hour() << 11) | (time.minute() << 5) | (time.second() / 2);
    return static_cast<quint32>(days) << 16 | static_cast<quint32>(seconds);
}

quint32 checksum(quint32 before, QByteArrayView bytes) {
    return static_cast<quint32>(
        ::crc32_z(before, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<size_t>(bytes.size())));
}

quint32 atMost32(quint64 number) { return static_cast<quint32>(std::min<quint64>(number, most32)); }

} // namespace

ZipWriter::ZipWriter(Sink sink)
    : sink_(std::move(sink)) {}

ZipWriter::~ZipWriter() {
    if (packer_)
        deflateEnd(packer_.get());
}

bool ZipWriter::put(const QByteArray& bytes) {
    // To some sinks an empty piece is the end.
    isBroken_ = isBroken_ || (!bytes.isEmpty() && !sink_(bytes));
    written_ += static_cast<quint64>(bytes.size());
    return !isBroken_;
}

bool ZipWriter::putHeader(const Member& member) {
    // While the sizes follow, the extra field only tells that they will have 64 bits.
    const bool isLater = member.flags & sizesFollow;
    const quint32 size = member.isLarge ? most32 : isLater ? 0 : atMost32(member.size);
    const QByteArray extra =
        member.isLarge ? little(largeTag) + little<quint16>(16) + QByteArray(16, '\0') : QByteArray();
    return put("PK\x03\x04" + little(member.isLarge ? versionForLarge : versionNeeded) + little(member.flags) +
               little(member.method) + little(dosDate(member.modified)) + little(isLater ? 0u : member.checksum) +
               little(size) + little(size) + little(static_cast<quint16>(member.name.size())) +
               little(static_cast<quint16>(extra.size())) + member.name + extra);
}

QByteArray ZipWriter::directoryEntry(const Member& member) {
    const bool isLarge = member.isLarge || member.offset >= most32;
    QByteArray extra;
    if (isLarge)
        extra = little(largeTag) + little<quint16>(24) + little(member.size) + little(member.packedSize) +
                little(member.offset);
    const quint32 mode = member.name.endsWith('/') ? folderMode : fileMode;
    return "PK\x01\x02" + little<quint16>(madeOnUnix | versionForLarge) +
           little(isLarge ? versionForLarge : versionNeeded) + little(member.flags) + little(member.method) +
           little(dosDate(member.modified)) + little(member.checksum) +
           little(isLarge ? most32 : atMost32(member.packedSize)) + little(isLarge ? most32 : atMost32(member.size)) +
           little(static_cast<quint16>(member.name.size())) + little(static_cast<quint16>(extra.size())) +
           little<quint16>(0) + little<quint16>(0) + little<quint16>(0) + little(mode << 16) +
           little(isLarge ? most32 : atMost32(member.offset)) + member.name + extra;
}

bool ZipWriter::add(const QByteArray& name, QByteArrayView content, const QDateTime& modified) {
    Member member;
    member.name = name;
    member.modified = modified;
    member.flags = utf8Names;
    member.method = stored;
    member.size = member.packedSize = static_cast<quint64>(content.size());
    member.checksum = checksum(0, content);
    member.offset = written_;
    directory_ += directoryEntry(member);
    ++count_;
    return putHeader(member) && put(QByteArray::fromRawData(content.data(), content.size()));
}

bool ZipWriter::begin(const QByteArray& name, qint64 expectedSize, const QDateTime& modified, bool isCompressed) {
    current_ = Member();
    current_.name = name;
    current_.modified = modified;
    current_.flags = utf8Names | sizesFollow;
    current_.method = deflated;
    current_.offset = written_;
    current_.isLarge = expectedSize >= surelySmall;
    packer_ = std::make_unique<z_stream_s>();
    constexpr int rawStream = -15; // the largest window, without the library's own head
    constexpr int usualMemory = 8;
    // Without compression it is still this method, the one that readers of streams can follow without a length.
    if (deflateInit2(packer_.get(), isCompressed ? 6 : 0, Z_DEFLATED, rawStream, usualMemory, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        packer_.reset();
        isBroken_ = true;
        return false;
    }
    return putHeader(current_);
}

bool ZipWriter::deflatePiece(QByteArrayView piece, bool isLast) {
    if (isBroken_)
        return false;
    packer_->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
    packer_->avail_in = static_cast<uInt>(piece.size());
    QByteArray packed(64 * 1024, Qt::Uninitialized);
    do {
        packer_->next_out = reinterpret_cast<Bytef*>(packed.data());
        packer_->avail_out = static_cast<uInt>(packed.size());
        deflate(packer_.get(), isLast ? Z_FINISH : Z_NO_FLUSH);
        const qsizetype length = packed.size() - static_cast<qsizetype>(packer_->avail_out);
        current_.packedSize += static_cast<quint64>(length);
        if (length > 0 && !put(packed.first(length)))
            return false;
    } while (packer_->avail_out == 0);
    return true;
}

bool ZipWriter::write(QByteArrayView piece) {
    current_.checksum = checksum(current_.checksum, piece);
    current_.size += static_cast<quint64>(piece.size());
    return deflatePiece(piece, false);
}

bool ZipWriter::end() {
    const bool isWritten = deflatePiece({}, true);
    deflateEnd(packer_.get());
    packer_.reset();
    directory_ += directoryEntry(current_);
    ++count_;
    const QByteArray sizes = current_.isLarge ? little(current_.packedSize) + little(current_.size)
                                              : little(atMost32(current_.packedSize)) + little(atMost32(current_.size));
    return isWritten && put("PK\x07\x08" + little(current_.checksum) + sizes);
}

bool ZipWriter::finish() {
    const quint64 start = written_;
    const auto size = static_cast<quint64>(directory_.size());
    if (!put(directory_))
        return false;
    if (count_ >= most16 || start >= most32 || size >= most32) {
        const QByteArray record = "PK\x06\x06" + little<quint64>(44) + little<quint16>(madeOnUnix | versionForLarge) +
                                  little(versionForLarge) + little<quint32>(0) + little<quint32>(0) + little(count_) +
                                  little(count_) + little(size) + little(start);
        const QByteArray locator = "PK\x06\x07" + little<quint32>(0) + little(start + size) + little<quint32>(1);
        if (!put(record + locator))
            return false;
    }
    const auto count = static_cast<quint16>(std::min<quint64>(count_, most16));
    return put("PK\x05\x06" + little<quint32>(0) + little(count) + little(count) + little(atMost32(size)) +
               little(atMost32(start)) + little<quint16>(0));
}

} // namespace quenby::localdrive

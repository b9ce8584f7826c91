// Reads a ZIP archive back, as a stranger's program would.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QtEndian>

#include <optional>

#include <zlib.h>

namespace quenby::testing {

inline std::optional<QByteArray> inflated(QByteArray packed, qint64 size) {
    QByteArray whole(size + 1, '\0');
    z_stream stream{};
    constexpr int rawStream = -15;
    if (inflateInit2(&stream, rawStream) != Z_OK)
        return std::nullopt;
    stream.next_in = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(whole.data());
    stream.avail_out = static_cast<uInt>(whole.size());
    const bool isWhole = inflate(&stream, Z_FINISH) == Z_STREAM_END && stream.total_out == static_cast<uLong>(size);
    inflateEnd(&stream);
    return isWhole ? std::optional(whole.first(size)) : std::nullopt;
}

// Name to content, by the archive's directory. Empty when anything is wrong: a checksum, a size, a place.
inline QMap<QString, QByteArray> unzipped(const QByteArray& archive) {
    const auto at16 = [&](qsizetype place) { return qFromLittleEndian<quint16>(archive.constData() + place); };
    const auto at32 = [&](qsizetype place) { return qFromLittleEndian<quint32>(archive.constData() + place); };
    const qsizetype end = archive.lastIndexOf("PK\x05\x06");
    if (end < 0 || end + 22 != archive.size())
        return {};
    QMap<QString, QByteArray> members;
    qsizetype entry = at32(end + 16);
    for (int left = at16(end + 10); left > 0; --left) {
        if (entry + 46 > end || archive.mid(entry, 4) != "PK\x01\x02")
            return {};
        const qint64 packedSize = at32(entry + 20);
        const qint64 size = at32(entry + 24);
        const QString name = QString::fromUtf8(archive.mid(entry + 46, at16(entry + 28)));
        const qsizetype head = at32(entry + 42);
        if (archive.mid(head, 4) != "PK\x03\x04" || QString::fromUtf8(archive.mid(head + 30, at16(head + 26))) != name)
            return {};
        const QByteArray packed = archive.mid(head + 30 + at16(head + 26) + at16(head + 28), packedSize);
        const auto content = at16(entry + 10) == 0 ? std::optional(packed) : inflated(packed, size);
        const auto* bytes = reinterpret_cast<const Bytef*>(content ? content->constData() : "");
        if (!content || content->size() != size || crc32_z(0, bytes, static_cast<size_t>(size)) != at32(entry + 16) ||
            members.contains(name))
            return {};
        members.insert(name, *content);
        entry += 46 + at16(entry + 28) + at16(entry + 30) + at16(entry + 32);
    }
    return members;
}

} // namespace quenby::testing

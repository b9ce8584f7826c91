// Writes a ZIP archive piece by piece (APPNOTE 6.3.3), to wherever the bytes go.
//
// Members and archives beyond 4 GiB, and more than 65535 members, get the 64-bit records; others do without, for the
// sake of old readers.
#pragma once

#include <QByteArray>
#include <QDateTime>

#include <functional>
#include <memory>

struct z_stream_s;

namespace quenby::localdrive {

// Threads: one at a time. Calls are false once the sink has refused bytes.
class ZipWriter {
public:
    using Sink = std::function<bool(QByteArrayView)>;

    explicit ZipWriter(Sink sink);
    ~ZipWriter();
    ZipWriter(const ZipWriter&) = delete;
    ZipWriter& operator=(const ZipWriter&) = delete;

    // A whole member, stored as it is. Names are UTF-8 and separate folders by "/".
    bool add(const QByteArray& name, QByteArrayView content, const QDateTime& modified = {});
    // An empty folder; the name ends with "/".
    bool addFolder(const QByteArray& name, const QDateTime& modified) { return add(name, {}, modified); }

    // A member of about so many bytes that arrive in pieces: begin, write as often as it takes, end.
    bool begin(const QByteArray& name, qint64 expectedSize, const QDateTime& modified, bool isCompressed);
    bool write(QByteArrayView piece);
    bool end();

    // The directory; nothing comes after it.
    bool finish();

private:
    struct Member {
        QByteArray name;
        QDateTime modified;
        quint16 flags = 0;
        quint16 method = 0;
        quint32 checksum = 0;
        quint64 packedSize = 0;
        quint64 size = 0;
        quint64 offset = 0;
        bool isLarge = false; // its sizes have 64 bits
    };

    bool put(const QByteArray& bytes);
    bool putHeader(const Member& member);
    bool deflatePiece(QByteArrayView piece, bool isLast);
    static QByteArray directoryEntry(const Member& member);

    Sink sink_;
    QByteArray directory_;
    quint64 count_ = 0;
    quint64 written_ = 0;
    bool isBroken_ = false;
    Member current_;
    std::unique_ptr<z_stream_s> packer_; // of the current member
};

} // namespace quenby::localdrive

// The two header fields by which a resumable upload and its server agree where the next bytes belong: "Content-Range"
// on the way up (RFC 9110, section 14.4) and "Range" on the way down. Pure functions; every number is 64 bits wide
// and none overflows.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

#include <optional>

namespace quenby {

// A remainder shorter than this is sent along with the chunk before it.
inline constexpr quint64 minimumLastChunkLength = 2500;

// How many bytes the chunk at the offset has: chunkSize, or everything that is left when that is hardly more.
quint64 lengthOfChunk(quint64 offset, quint64 chunkSize, quint64 fullLength);

// "bytes 0-499999/1000000". Both the length and the offset lie within the full length, and the length is above 0.
QByteArray contentRangeOfChunk(quint64 offset, quint64 length, quint64 fullLength);
// "bytes */1000000": asks how much the server holds; with 0 it also completes an empty upload.
QByteArray contentRangeOfStatusQuery(quint64 fullLength);

struct ByteRange {
    quint64 first = 0;
    quint64 last = 0; // inclusive

    friend bool operator==(const ByteRange&, const ByteRange&) = default;
};

// "bytes=0-262143", with white space around it allowed and the unit in any case. Nothing when it is anything else: a
// list of ranges, an open range, signs, or an end before its beginning. A number beyond 64 bits counts as the largest,
// so that it is still seen to lie beyond every file.
std::optional<ByteRange> scanRange(QByteArrayView header);

} // namespace quenby

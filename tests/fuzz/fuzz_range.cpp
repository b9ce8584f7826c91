// The server's Range header: a scan never accepts what it cannot mean, and what a chunk says of itself adds up.

#include "http/ContentRange.h"
#include "tests/fuzz/FuzzSupport.h"

#include <QString>

#include <cstring>

using namespace quenby;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray header = fuzzBytes(data, size);
    if (const auto range = scanRange(header)) {
        require(range->first <= range->last, "a range ends at or after its beginning");
        const QByteArray plain =
            QByteArray("bytes=") + QByteArray::number(range->first) + '-' + QByteArray::number(range->last);
        require(scanRange(plain) == range, "a scanned range, written plainly, scans the same");
    }
    quint64 numbers[3];
    if (size >= sizeof numbers) {
        std::memcpy(numbers, data, sizeof numbers);
        const quint64 full = numbers[0];
        const quint64 offset = full == 0 ? 0 : numbers[1] % full;
        const quint64 chunk = std::max<quint64>(numbers[2], 1);
        if (full > 0) {
            const quint64 length = lengthOfChunk(offset, chunk, full);
            require(length > 0 && length <= full - offset, "a chunk lies within the file");
            const quint64 left = full - offset - length;
            require(left == 0 || left >= minimumLastChunkLength, "no crumb is left for the last chunk");
            require(!contentRangeOfChunk(offset, length, full).contains("--"), "numbers are not negative");
        }
    }
    return 0;
}

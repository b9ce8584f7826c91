#include "platform/linux/media/engine/capture/MoviePieces.h"

#include <QByteArray>
#include <QtEndian>

#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr qint64 shortHeader = 8; // length (32 bits), type (4 characters); the length counts the header
constexpr qint64 longHeader = 16; // length 1, type, length (64 bits)

struct Box {
    qint64 length = 0; // 0: not known yet, it is the last one
    QByteArray type;
};

// Without a type at the end of the file, and where it is damaged.
Box boxAt(int descriptor, qint64 place) {
    char header[longHeader]{};
    const qint64 got = ::pread(descriptor, header, sizeof header, place);
    if (got < shortHeader)
        return {};
    qint64 length = qFromBigEndian<quint32>(header);
    if (length == 1) {
        if (got < longHeader)
            return {};
        length = static_cast<qint64>(qFromBigEndian<quint64>(header + shortHeader));
    }
    if (length != 0 && length < shortHeader)
        return {};
    return {length, QByteArray(header + 4, 4)};
}

} // namespace

qint64 playableLength(int descriptor) {
    struct stat state {};
    if (::fstat(descriptor, &state) != 0)
        return 0;
    qint64 playable = 0;
    qint64 place = 0;
    while (place < state.st_size) {
        const Box box = boxAt(descriptor, place);
        if (box.type.isEmpty() || box.length == 0 || box.length > state.st_size - place)
            break;
        place += box.length;
        // The samples stand before their description.
        if (box.type == "moov" || box.type == "moof")
            playable = place;
    }
    return playable;
}

} // namespace quenby

#include "platform/linux/media/engine/player/MovieFile.h"

#include <QFile>

#include <algorithm>
#include <array>

namespace quenby {

bool isQuickTimeMovie(const QByteArray& path) {
    // Each part of such a file is its length in four bytes, its kind in four more, and what it holds.
    constexpr int beginning = 8;
    constexpr std::array<const char*, 7> kinds{"ftyp", "moov", "mdat", "wide", "free", "skip", "pnot"};
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    const QByteArray kind = file.read(beginning).mid(4);
    return std::any_of(kinds.begin(), kinds.end(), [&kind](const char* known) { return kind == known; });
}

} // namespace quenby

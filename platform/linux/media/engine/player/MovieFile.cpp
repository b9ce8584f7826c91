#include "platform/linux/media/engine/player/MovieFile.h"

#include <algorithm>
#include <array>

#include <fcntl.h>
#include <unistd.h>

namespace quenby {

bool isQuickTimeMovie(const QByteArray& path) {
    // Each part of such a file is its length in four bytes, its kind in four more, and what it holds.
    constexpr int beginning = 8;
    constexpr std::array<const char*, 7> kinds{"ftyp", "moov", "mdat", "wide", "free", "skip", "pnot"};
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return false;
    QByteArray start(beginning, '\0');
    const bool isRead = ::read(descriptor, start.data(), beginning) == beginning;
    ::close(descriptor);
    const QByteArray kind = isRead ? start.mid(4) : QByteArray();
    return std::any_of(kinds.begin(), kinds.end(), [&kind](const char* known) { return kind == known; });
}

} // namespace quenby

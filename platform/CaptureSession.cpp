#include "platform/CaptureSession.h"

namespace quenby {

QByteArray unfinishedMoviePath(const QByteArray& path) {
    const qsizetype name = path.lastIndexOf('/') + 1;
    return path.first(name) + '.' + path.sliced(name) + ".part";
}

} // namespace quenby

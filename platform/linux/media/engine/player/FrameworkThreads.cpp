#include "platform/linux/media/engine/player/FrameworkThreads.h"

#include <QThreadPool>

namespace quenby {

QThreadPool& frameworkThreads() {
    static QThreadPool threads;
    return threads;
}

} // namespace quenby

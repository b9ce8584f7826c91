#include "platform/linux/session/PosixSessionEnd.h"

#include <QGuiApplication>

namespace quenby {

// A terminal that closes sends SIGHUP more than once, and a service manager sends SIGTERM as often as it likes: only
// the second Ctrl-C means that somebody has lost patience.
PosixSessionEnd::PosixSessionEnd(QObject* parent)
    : signals_({{SIGTERM}, {SIGHUP}, {SIGINT, true}}, [this](int) { Q_EMIT endRequested(); }) {
    setParent(parent);
    if (auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        connect(application, &QGuiApplication::commitDataRequest, this, &SessionEnd::endRequested,
                Qt::DirectConnection);
}

} // namespace quenby

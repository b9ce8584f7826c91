// Addresses and the endpoints that they are asked of.
#pragma once

#include "core/Endpoints.h"

#include <QString>

namespace quenby::testing {

inline const QString localBase = QStringLiteral("http://127.0.0.1:4711");

// A path is one of the local Drive's.
inline QUrl addressOf(const QString& text) { return QUrl(text.startsWith(QLatin1Char('/')) ? localBase + text : text); }

// An address of the local Drive, or one that looks like it, is asked of the local Drive's; all others of the
// provider's.
inline Endpoints endpointsFor(const QString& text) {
    const bool isLocal = text.startsWith(QLatin1Char('/')) || text.contains(QLatin1String("127.0.0.1"));
    return isLocal ? Endpoints::localDrive(QUrl(localBase)) : Endpoints::provider();
}

} // namespace quenby::testing

// Where Quenby's makers are to be found, and their program's parts' licences.
#pragma once

#include <QString>
#include <QUrl>

namespace quenby::makerPages {

inline const QUrl forum(QStringLiteral("https://quenby.org/forum"));
inline const QUrl news(QStringLiteral("https://quenby.org/news"));
inline const QUrl community(QStringLiteral("https://quenby.org/community"));
inline const QUrl webSite(QStringLiteral("https://quenby.org/"));

// The page on one licence, by its SPDX identifier.
inline QUrl licence(const QString& identifier) {
    return QUrl(QStringLiteral("https://spdx.org/licenses/%1.html").arg(identifier));
}

} // namespace quenby::makerPages

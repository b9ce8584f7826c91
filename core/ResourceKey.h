// The key that a file which is shared by link may have: whoever has only the link needs it in the address.
#pragma once

#include <QString>
#include <QUrl>

namespace quenby {

// "resourcekey=KEY", as a query has it; empty without a key.
inline QString resourceKeyItem(const QString& key) {
    return key.isEmpty() ? QString()
                         : QString(QStringLiteral("resourcekey=") + QString::fromLatin1(QUrl::toPercentEncoding(key)));
}

// Of an address that has a query already.
inline QString addressWithResourceKey(const QString& address, const QString& key) {
    return key.isEmpty() ? address : QString(address + QLatin1Char('&') + resourceKeyItem(key));
}

} // namespace quenby

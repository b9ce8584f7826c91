#include "localdrive/store/Account.h"

#include <QCryptographicHash>
#include <QtEndian>

namespace quenby::localdrive {

QString Account::permissionId() const {
    const QByteArray digest =
        QCryptographicHash::hash(emailAddress.toCaseFolded().toUtf8(), QCryptographicHash::Sha256);
    return QString::number(qFromBigEndian<quint64>(digest.constData())).rightJustified(20, QLatin1Char('0'));
}

Account Account::standard() { return {QStringLiteral("Robin Hale"), QStringLiteral("robin.hale@example.com")}; }

} // namespace quenby::localdrive

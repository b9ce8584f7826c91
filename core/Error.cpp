#include "core/Error.h"

#include "core/Redaction.h"

namespace quenby {

Error::Error(QString domain, qint64 code, QVariantMap details)
    : domain_(std::move(domain))
    , code_(code)
    , details_(std::move(details)) {}

Error::Error(FetcherErrorCode code, QVariantMap details)
    : Error(errorDomain::fetcher, static_cast<qint64>(code), std::move(details)) {}

Error::Error(URLErrorCode code, QVariantMap details)
    : Error(errorDomain::url, static_cast<qint64>(code), std::move(details)) {}

QString Error::description() const {
    const QString name = domain_.section(QLatin1Char('.'), -1);
    const QString where = name + QLatin1Char(' ') + QString::number(code_);
    QString reason = details_.value(errorKey::reason).toString();
    if (reason.isEmpty())
        reason = details_.value(errorKey::error).toString();
    if (reason.isEmpty())
        return where;
    return redaction::text(reason) + QStringLiteral(" (") + where + QLatin1Char(')');
}

Error Error::withDetail(const QString& key, const QVariant& value) const {
    QVariantMap details = details_;
    details.insert(key, value);
    return Error(domain_, code_, std::move(details));
}

} // namespace quenby

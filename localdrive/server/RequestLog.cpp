#include "localdrive/server/RequestLog.h"

#include "core/Redaction.h"

#include <QDateTime>
#include <QUrl>

#include <cstdio>

namespace quenby::localdrive {

void logRequest(const httplib::Request& request, const httplib::Response& response) {
    const QUrl target = QUrl::fromEncoded(QByteArray::fromStdString(request.target));
    const QString line = QStringLiteral("%1 %2 %3 %4\n")
                             .arg(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs),
                                  QString::fromStdString(request.method), redaction::url(target))
                             .arg(response.status);
    std::fputs(line.toUtf8().constData(), stderr);
}

} // namespace quenby::localdrive

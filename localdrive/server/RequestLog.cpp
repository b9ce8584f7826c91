#include "localdrive/server/RequestLog.h"

#include "core/Redaction.h"

#include <QDateTime>
#include <QUrl>

#include <cstdio>

namespace quenby::localdrive {
namespace {

void writeLine(const QString& text) {
    const QString line =
        QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs) + QLatin1Char(' ') + text + QLatin1Char('\n');
    std::fputs(line.toUtf8().constData(), stderr);
}

} // namespace

void logRequest(const httplib::Request& request, const httplib::Response& response) {
    const QUrl target = QUrl::fromEncoded(QByteArray::fromStdString(request.target));
    // All at once: an address is full of percent signs.
    writeLine(
        QStringLiteral("%1 %2 %3")
            .arg(QString::fromStdString(request.method), redaction::url(target), QString::number(response.status)));
}

void logEvent(const QString& event) { writeLine(event); }

} // namespace quenby::localdrive

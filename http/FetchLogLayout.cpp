// The two shapes in which an entry of the fetch log is written: plain text and a block of the page.
#include "http/FetchLogEntry.h"

namespace quenby {
namespace {

QString textOfMessage(const ShownMessage& message) {
    QString text;
    for (const auto& [name, value] : message.headers)
        text += name + QStringLiteral(": ") + value + QLatin1Char('\n');
    if (!message.body.text.isEmpty())
        text += QLatin1Char('\n') + message.body.text + QLatin1Char('\n');
    else if (message.bodyLength > 0)
        text += QStringLiteral("\n<%1 bytes>\n").arg(message.bodyLength);
    return text;
}

QString highlighted(const QString& html) {
    return QStringLiteral("<span style=\"background:#fcc\">%1</span>").arg(html);
}

QString note(QLatin1String text) { return QStringLiteral(" <i>%1</i>").arg(text); }

QString noteIf(bool condition, const char* text) { return condition ? note(QLatin1String(text)) : QString(); }

QString sizes(const ShownMessage& message) {
    QString text = QStringLiteral(" &mdash; %1 headers").arg(message.headers.size());
    if (message.bodyLength > 0)
        text += QStringLiteral(", %1 bytes").arg(message.bodyLength);
    return text;
}

QString link(const QString& fileName, const QString& html) {
    return QStringLiteral("<a href=\"%1\">%2</a>").arg(fileName.toHtmlEscaped(), html);
}

QString heading(const FetchLogEntry& entry) {
    QString html = QStringLiteral("<p><b>%1</b> %2 ").arg(entry.comment.toHtmlEscaped(), entry.time.toHtmlEscaped());
    html += link(entry.textFileName(), QStringLiteral("request/response log"));
    if (!entry.redirectedFrom.isEmpty())
        html += QStringLiteral("<br>redirected from %1").arg(entry.redirectedFrom.toHtmlEscaped());
    return html + QLatin1Char('\n');
}

QString requestLine(const FetchLogEntry& entry) {
    const ShownMessage& request = entry.request;
    QString html =
        QStringLiteral("<br>request: %1 <code>%2</code>").arg(entry.method.toHtmlEscaped(), entry.url.toHtmlEscaped());
    if (request.hasHeader(QLatin1String("Authorization")))
        html += entry.isSecure ? note(QLatin1String("authorized"))
                               : QString(QStringLiteral(" &#9888;") + note(QLatin1String("authorized, non-SSL")));
    html += noteIf(request.hasHeader(QLatin1String("Cookie")), "cookies");
    html += noteIf(request.hasHeader(QLatin1String("If-Match")), "if-match");
    html += noteIf(request.hasHeader(QLatin1String("If-None-Match")), "if-none-match");
    return html + sizes(request) + QLatin1Char('\n');
}

QString responseFile(const FetchLogEntry& entry) {
    const QString name = entry.responseFileName();
    if (name.isEmpty())
        return {};
    const QString picture =
        QStringLiteral("<img src=\"%1\" height=\"32\" style=\"vertical-align:middle\">").arg(name.toHtmlEscaped());
    return QLatin1Char(' ') + link(name, entry.response.body.isImage ? picture : QStringLiteral("response body"));
}

QString responseLine(const FetchLogEntry& entry) {
    if (!entry.status)
        return {};
    QString status = QString::number(*entry.status);
    if (!entry.jsonError.isEmpty())
        status += QStringLiteral(" %1").arg(entry.jsonError.toHtmlEscaped());
    QString html = QStringLiteral("<br>response: status ") + (entry.signalsError() ? highlighted(status) : status);
    html += noteIf(entry.response.hasHeader(QLatin1String("Set-Cookie")), "sets cookies");
    html += noteIf(entry.response.hasHeader(QLatin1String("Location")), "redirects");
    return html + sizes(entry.response) + responseFile(entry) + QLatin1Char('\n');
}

QString errorLine(const FetchLogEntry& entry) {
    QString html;
    if (!entry.error.isEmpty())
        html += QStringLiteral("<br>") + highlighted(QStringLiteral("Error: %1").arg(entry.error.toHtmlEscaped()));
    return html + noteIf(entry.willRetry, "will be retried");
}

} // namespace

QString textOf(const FetchLogEntry& entry) {
    QString text = entry.comment + QLatin1Char('\n') + entry.time + QLatin1Char('\n');
    if (!entry.redirectedFrom.isEmpty())
        text += QStringLiteral("redirected from %1\n").arg(entry.redirectedFrom);
    text += QStringLiteral("\nrequest: %1 %2\n").arg(entry.method, entry.url);
    text += textOfMessage(entry.request);
    if (entry.status) {
        text += QStringLiteral("\nresponse: status %1\n").arg(*entry.status);
        text += textOfMessage(entry.response);
    }
    if (!entry.error.isEmpty())
        text += QStringLiteral("\nError: %1\n").arg(entry.error);
    return text;
}

QString htmlOf(const FetchLogEntry& entry) {
    return heading(entry) + requestLine(entry) + responseLine(entry) + errorLine(entry) + QStringLiteral("</p>\n");
}

} // namespace quenby

#include "http/FetchLogEntry.h"

#include "core/Redaction.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace quenby {
namespace {

// Knows the addresses of this attempt that must not be shown, and cuts them out of every text: a server's error page
// may well quote the upload location.
class Scrubber {
public:
    explicit Scrubber(const FetchRecord& record)
        : isURLSecret_(record.isURLSecret)
        , isLocationSecret_(record.isURLSecret || record.request.headers.contains("X-Upload-Content-Length")) {
        if (isURLSecret_) {
            learn(record.request.url);
            learn(record.originalURL);
        }
        if (isLocationSecret_ && record.response)
            learn(QUrl::fromEncoded(record.response->headers.value("Location")));
    }

    QString url(const QUrl& url) const { return isURLSecret_ ? redaction::secretURL(url) : redaction::url(url); }

    QString text(QString text) const {
        for (const QString& secret : secrets_)
            text.replace(secret, QLatin1String(redaction::snip));
        return redaction::text(text);
    }

    std::pair<QString, QString> header(const HeaderFields::Field& field) const {
        const auto& [name, value] = field;
        const bool isLocation = isLocationSecret_ && name.compare("Location", Qt::CaseInsensitive) == 0;
        const QString shown = isLocation ? redaction::secretURL(QUrl::fromEncoded(value))
                                         : QString::fromUtf8(redaction::headerValue(name, value));
        return {QString::fromLatin1(name), text(shown)};
    }

    ShownBody body(ShownBody body) const {
        body.text = text(body.text);
        for (const QString& secret : secrets_)
            body.file.replace(secret.toUtf8(), redaction::snip);
        return body;
    }

private:
    // Whole, without its host, and its query alone; percent-encoded or not.
    void learn(const QUrl& url) {
        for (const auto form : {QUrl::FullyEncoded, QUrl::FullyDecoded}) {
            const QString query = url.query(form);
            const QString path = query.isEmpty() ? url.path(form) : QString(url.path(form) + QLatin1Char('?') + query);
            for (const QString& part : {path, query}) {
                if (part.size() > 1 && !secrets_.contains(part))
                    secrets_.append(part);
            }
        }
    }

    bool isURLSecret_;
    bool isLocationSecret_;
    QStringList secrets_; // longer ones before the parts of them
};

ShownMessage message(const HeaderFields& headers, const Scrubber& scrubber) {
    ShownMessage shown;
    std::transform(headers.begin(), headers.end(), std::back_inserter(shown.headers),
                   [&scrubber](const HeaderFields::Field& field) { return scrubber.header(field); });
    return shown;
}

QByteArray mediaType(const HeaderFields& headers) {
    return headers.value("Content-Type").split(';').constFirst().trimmed().toLower();
}

QString jsonErrorIn(const QByteArray& body, const Scrubber& scrubber) {
    const QJsonObject error = QJsonDocument::fromJson(body).object().value(QLatin1String("error")).toObject();
    if (error.isEmpty())
        return {};
    const QString code = error.value(QLatin1String("code")).toVariant().toString();
    const QString message = error.value(QLatin1String("message")).toString();
    return scrubber.text(QString(code + QStringLiteral(": ") + message));
}

void describeRequest(FetchLogEntry& entry, const FetchRecord& record, const SentBody& sent, const Scrubber& scrubber,
                     const FetchLogBodyFormatter& bodies) {
    entry.comment = scrubber.text(record.comment);
    entry.time = QString(record.started.toLocalTime().toString(Qt::ISODateWithMs) + QStringLiteral(", ") +
                         QString::number(record.duration.count()) + QStringLiteral(" ms"));
    entry.method =
        QString::fromLatin1(record.request.httpMethod.isEmpty() ? QByteArray("GET") : record.request.httpMethod);
    entry.url = scrubber.url(record.request.url);
    if (record.originalURL.isValid() && record.originalURL != record.request.url)
        entry.redirectedFrom = scrubber.url(record.originalURL);
    entry.isSecure = record.request.url.scheme() == QLatin1String("https");
    entry.request = message(record.request.headers, scrubber);
    entry.request.bodyLength = sent.length;
    entry.request.body = scrubber.body(bodies.show(sent.bytes, mediaType(record.request.headers)));
    if (sent.isBeginningOnly && !entry.request.body.text.isEmpty())
        entry.request.body.text += QStringLiteral("\n(the first %1 bytes)").arg(sent.bytes.size());
}

void describeResponse(FetchLogEntry& entry, const FetchRecord& record, const Scrubber& scrubber,
                      const FetchLogBodyFormatter& bodies) {
    if (record.response) {
        entry.status = record.response->statusCode;
        entry.response = message(record.response->headers, scrubber);
        entry.response.bodyLength = record.responseLength;
        entry.response.body = scrubber.body(bodies.show(record.responseBody, mediaType(record.response->headers)));
        entry.jsonError = jsonErrorIn(record.responseBody, scrubber);
    }
    if (record.error)
        entry.error = scrubber.text(record.error->description());
    entry.willRetry = record.willRetry;
}

} // namespace

bool ShownMessage::hasHeader(QLatin1String name) const {
    return std::any_of(headers.begin(), headers.end(),
                       [name](const auto& field) { return field.first.compare(name, Qt::CaseInsensitive) == 0; });
}

QString FetchLogEntry::textFileName() const { return QStringLiteral("fetch_%1.txt").arg(number); }

QString FetchLogEntry::responseFileName() const {
    if (response.body.file.isEmpty())
        return {};
    return QStringLiteral("fetch_%1_response").arg(number) + response.body.extension;
}

FetchLogEntry makeFetchLogEntry(const FetchRecord& record, const SentBody& sent, int number,
                                const FetchLogBodyFormatter& bodies) {
    const Scrubber scrubber(record);
    FetchLogEntry entry;
    entry.number = number;
    describeRequest(entry, record, sent, scrubber, bodies);
    describeResponse(entry, record, scrubber, bodies);
    return entry;
}

} // namespace quenby

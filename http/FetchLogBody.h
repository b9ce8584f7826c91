// How the fetch log shows a body: as redacted, readable text when it is text of any kind, else as a file beside the
// page.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby {

// A request's body as the log got hold of it.
struct SentBody {
    QByteArray bytes; // all of it, or the beginning of a stream
    qint64 length = 0;
    bool isBeginningOnly = false;
};

struct ShownBody {
    QString text;         // empty when the body is binary
    QByteArray file;      // what belongs into a file of its own, empty when nothing does
    QString extension;    // of that file, with its dot; may be empty
    bool isImage = false; // the file can be shown as a picture
};

// Threads: one at a time. Text in XML is laid out by a child process, which is waited for.
class FetchLogBodyFormatter {
public:
    // The layout tool is used when it is there, which is looked up once.
    explicit FetchLogBodyFormatter(const QString& xmllint = QStringLiteral("/usr/bin/xmllint"));

    ShownBody show(const QByteArray& body, const QByteArray& mimeType) const;

    // The extension of the file for a response of that type, with its dot.
    static QString extensionFor(const QByteArray& mimeType);

private:
    QByteArray laidOutXML(const QByteArray& xml) const;

    QString xmllint_; // empty when it is not there
};

} // namespace quenby

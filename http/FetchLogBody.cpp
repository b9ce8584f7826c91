#include "http/FetchLogBody.h"

#include "core/Redaction.h"

#include <QFileInfo>
#include <QProcess>
#include <QStringDecoder>

#include <algorithm>
#include <chrono>
#include <optional>

namespace quenby {
namespace {

constexpr qsizetype shortestJSON = 6; // less holds no member
constexpr auto layoutLimit = std::chrono::seconds(5);

bool isXML(const QByteArray& mimeType) {
    return mimeType == "application/atom+xml" || mimeType.contains("/xml") || mimeType.endsWith("+xml");
}

bool isJSON(const QByteArray& mimeType, const QByteArray& body) {
    if (body.size() < shortestJSON)
        return false;
    const QByteArrayView text = QByteArrayView(body).trimmed(); // may be empty
    return mimeType == "application/json" || mimeType.endsWith("+json") || text.startsWith('{') || text.startsWith('[');
}

// Control characters that do not occur in text.
bool isBinaryControl(char c) {
    const auto code = static_cast<unsigned char>(c);
    return code < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f' && c != '\x1b';
}

// The text, whatever the content type says; nothing when the bytes are binary.
std::optional<QString> decodedText(const QByteArray& body) {
    if (const auto marked = QStringConverter::encodingForData(body))
        return QStringDecoder(*marked).decode(body);
    if (std::any_of(body.begin(), body.end(), isBinaryControl))
        return std::nullopt;
    QStringDecoder utf8(QStringConverter::Utf8);
    const QString text = utf8.decode(body);
    return utf8.hasError() ? QString::fromLatin1(body) : text;
}

// A secret inside binary data is recognised by the text around it.
QByteArray redactedBinary(const QByteArray& body) { return redaction::text(QString::fromLatin1(body)).toLatin1(); }

} // namespace

FetchLogBodyFormatter::FetchLogBodyFormatter(const QString& xmllint)
    : xmllint_(QFileInfo(xmllint).isExecutable() ? xmllint : QString()) {}

ShownBody FetchLogBodyFormatter::show(const QByteArray& body, const QByteArray& mimeType) const {
    if (body.isEmpty())
        return {};
    const auto text = decodedText(body);
    if (!text)
        return {{}, redactedBinary(body), extensionFor(mimeType), mimeType.startsWith("image/")};
    const QByteArray utf8 = text->toUtf8();
    if (mimeType == "application/x-www-form-urlencoded")
        return {redaction::text(QString::fromUtf8(redaction::formBody(utf8))), {}, {}, false};
    if (isJSON(mimeType, utf8))
        return {QString::fromUtf8(redaction::jsonBody(utf8)), {}, {}, false};
    if (!isXML(mimeType))
        return {redaction::text(*text), {}, {}, false};
    const QString xml = redaction::text(QString::fromUtf8(laidOutXML(utf8)));
    return {xml, xml.toUtf8(), extensionFor(mimeType), false};
}

QString FetchLogBodyFormatter::extensionFor(const QByteArray& mimeType) {
    if (isXML(mimeType))
        return QStringLiteral(".xml");
    if (mimeType == "image/jpeg")
        return QStringLiteral(".jpg");
    if (mimeType == "image/gif")
        return QStringLiteral(".gif");
    if (mimeType == "image/png")
        return QStringLiteral(".png");
    return {};
}

QByteArray FetchLogBodyFormatter::laidOutXML(const QByteArray& xml) const {
    if (xmllint_.isEmpty())
        return xml;
    QProcess tool;
    tool.start(xmllint_, {QStringLiteral("--format"), QStringLiteral("-")});
    tool.write(xml);
    tool.closeWriteChannel();
    const bool ended = tool.waitForFinished(static_cast<int>(std::chrono::milliseconds(layoutLimit).count()));
    const QByteArray formatted = tool.readAllStandardOutput();
    return ended && tool.exitCode() == 0 && !formatted.isEmpty() ? formatted : xml;
}

} // namespace quenby

#include "app/uploads/UploadRequest.h"

#include "app/cli/DisplayText.h"
#include "app/cli/Folders.h"
#include "app/uploads/transfer/InsertQuery.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/GTLQueryDrive.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>

namespace quenby {
namespace {

// Members of a line.
const QString pathKey = QStringLiteral("path"); // percent-encoded: a path's bytes need not be text
const QString typeKey = QStringLiteral("typeUpload");
const QString folderKey = QStringLiteral("folder");
const QString shareKey = QStringLiteral("needToShare");
const QString goneKey = QStringLiteral("mayBeGone");
const QString captureKey = QStringLiteral("isCapture");
const QString removeKey = QStringLiteral("removeSource");
const QString fileKey = QStringLiteral("file");             // the prepared insert's metadata
const QString parametersKey = QStringLiteral("parameters"); // and its parameters

QJsonObject jsonOf(const JSONValue& value) {
    return QJsonDocument::fromJson(GTLJSONParser::dataWithObject(value)).object();
}

JSONDictionaryPtr dictionaryFrom(const QJsonObject& json) {
    const auto value = GTLJSONParser::objectWithData(QJsonDocument(json).toJson(QJsonDocument::Compact));
    return value ? value->dictionary() : nullptr;
}

std::shared_ptr<GTLQueryDrive> queryFrom(const QByteArray& path, const QJsonObject& json) {
    if (!json.contains(fileKey))
        return nullptr;
    const auto query = insertQueryForPath(path, {});
    const auto file = GTLDriveFile::object();
    file->setJSON(dictionaryFrom(json.value(fileKey).toObject()));
    query->setBodyObject(file);
    if (json.contains(parametersKey))
        query->setJSON(dictionaryFrom(json.value(parametersKey).toObject()));
    return query;
}

} // namespace

QByteArray lineFromRequest(const UploadRequest& request) {
    QJsonObject json{{pathKey, QString::fromLatin1(request.path.toPercentEncoding("/"))},
                     {typeKey, request.typeUpload},
                     {shareKey, request.needToShare},
                     {removeKey, request.removeSource}};
    if (request.mayBeGone)
        json.insert(goneKey, true);
    if (request.isCapture)
        json.insert(captureKey, true);
    if (!request.folderName.isEmpty()) {
        json.insert(folderKey, request.folderName);
    } else if (request.query && request.query->bodyObject()) {
        json.insert(fileKey, jsonOf(request.query->bodyObject()->JSON()));
        if (request.query->hasJSON())
            json.insert(parametersKey, jsonOf(request.query->JSON()));
    }
    return QJsonDocument(json).toJson(QJsonDocument::Compact);
}

std::optional<UploadRequest> requestFromLine(const QByteArray& line) {
    const QJsonObject json = QJsonDocument::fromJson(line).object();
    UploadRequest request;
    request.path = QByteArray::fromPercentEncoding(json.value(pathKey).toString().toLatin1());
    if (!request.path.startsWith('/') || !json.value(typeKey).isString())
        return std::nullopt;
    request.typeUpload = json.value(typeKey).toString();
    request.folderName = json.value(folderKey).toString();
    request.needToShare = json.value(shareKey).toBool();
    request.removeSource = json.value(removeKey).toBool();
    request.mayBeGone = json.value(goneKey).toBool();
    request.isCapture = json.value(captureKey).toBool();
    request.query = queryFrom(request.path, json);
    return request;
}

QString nameForPeople(const QByteArray& path) {
    const QByteArray name = lastComponent(path);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(name);
    if (decoder.hasError())
        return printablePath(name);
    return textForPeople(text);
}

QString textForPeople(const QString& text) {
    QString shown;
    QString part;
    for (const QChar character : text) {
        const bool isJoiner = character == QChar(0x200C) || character == QChar(0x200D);
        if (!isJoiner) {
            part += character;
            continue;
        }
        shown += printableText(part) + character;
        part.clear();
    }
    return shown + printableText(part);
}

} // namespace quenby

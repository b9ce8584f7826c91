// The Drive's own kinds of files: folders, and documents that have no bytes of their own but can be exported.
#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace quenby::localdrive {

inline const QString folderMimeType = QStringLiteral("application/vnd.google-apps.folder");

// Folders, documents and whatever else the Drive keeps without content: their types begin alike.
bool isNativeType(const QString& mimeType);

// The four kinds that can be edited and exported.
QStringList documentTypes();
// The types that a document of the kind is exported as; empty for others.
QStringList exportTypes(const QString& mimeType);
// MIME type to the address that exports the document as it; empty for others.
QJsonObject exportLinks(const QUrl& base, const QString& mimeType, const QString& id);
// The page on which a document of the kind is edited; empty for others.
QString editLink(const QUrl& base, const QString& mimeType, const QString& id);

// The name of the picture for a type, such as "folder" or "image": one of iconNames().
QString iconName(const QString& mimeType);
QStringList iconNames();

} // namespace quenby::localdrive

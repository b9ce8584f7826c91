// The Drive's own kinds of files: folders, and documents that have no bytes of their own but can be edited and
// exported.
#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <vector>

namespace quenby::localdrive {

inline const QString folderMimeType = QStringLiteral("application/vnd.google-apps.folder");

// Folders, documents and whatever else the Drive keeps without content: their types begin alike.
bool isNativeType(const QString& mimeType);

struct ExportFormat {
    QString name; // in addresses, and the extension of what comes out
    QString mimeType;
};

struct NativeKind {
    QString mimeType;
    QString path; // first part of its pages' paths below /docs/
    QString icon;
    QList<ExportFormat> formats; // the first is the one to take when nobody is asked; forms have none
};

// The five kinds that have a page on which they are edited.
const std::vector<NativeKind>& nativeKinds();
// The kind of that type; null for others.
const NativeKind* nativeKind(const QString& mimeType);

// The kinds that can be exported.
QStringList documentTypes();
// The types that a document of the kind is exported as; empty for others.
QStringList exportTypes(const QString& mimeType);
// The address that exports the document in a format of its kind.
QString exportLink(const QUrl& base, const NativeKind& kind, const QString& id, const QString& format);
// MIME type to the address that exports the document as it; empty for others.
QJsonObject exportLinks(const QUrl& base, const QString& mimeType, const QString& id);
// The page on which a document of the kind is edited; empty for others.
QString editLink(const QUrl& base, const QString& mimeType, const QString& id);

// The name of the picture for a type, such as "folder" or "image": one of iconNames().
QString iconName(const QString& mimeType);
QStringList iconNames();

} // namespace quenby::localdrive

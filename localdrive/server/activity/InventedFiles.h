// Files that nobody wrote: titles and contents for a Drive that should look lived in.
#pragma once

#include <QByteArray>
#include <QList>
#include <QRandomGenerator>
#include <QString>

namespace quenby::localdrive {

struct InventedFile {
    QString title;
    QString mimeType;
    QByteArray content; // null for folders and native documents
};

// The same random numbers make the same file.
InventedFile inventedFile(QRandomGenerator& random);
// Another content for a file of this type and title; null for types that have none.
QByteArray inventedContent(const QString& mimeType, const QString& title, QRandomGenerator& random);

// What a new Drive begins with, oldest first; the first is a folder that the others lie in.
QList<InventedFile> inventedStart();

} // namespace quenby::localdrive

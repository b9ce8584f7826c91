// Names that the store makes up.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby::localdrive {

// A file's id: 44 letters, digits, "-" and "_", not to be guessed.
QString newFileId();
// Whether a client's own choice could be a file's id.
bool isPlausibleFileId(const QString& id);
// The root folder's: shorter and beginning with "0A", so that people recognise it.
QString newRootFolderId();
// Of contents, revisions, comments, replies and channels: 28 characters like a file's.
QString newItemId();
// A key for signatures.
QByteArray newKey();

// An entity tag, with its quotes, that changes when the text changes.
QString entityTag(const QByteArray& text);

} // namespace quenby::localdrive

// The addresses that resources name. The HTTP side serves each of them.
#pragma once

#include "localdrive/store/FileRecord.h"

#include <QString>
#include <QUrl>

namespace quenby::localdrive::links {

// Below BASE/drive/v2/, for example api(base, {"files", ID}).
QString api(const QUrl& base, const QStringList& path);
// BASE/drive/v2/files/ID?alt=media, with &revisionId=... when one is given.
QString download(const QUrl& base, const QString& fileId, const QString& revisionId = {});
// The page for people: BASE/file/d/ID/view, BASE/drive/folders/ID, or where a document is edited.
QString page(const QUrl& base, const FileRecord& file);
// BASE/icons/NAME.png, NAME being one of iconNames().
QString icon(const QUrl& base, const QString& mimeType);
// BASE/faces/PERMISSIONID.png, a picture of somebody.
QString face(const QUrl& base, const QString& permissionId);
// BASE/thumbnails/ID?revision=..., for files whose content is a picture of at most 4 MiB and no drawing; empty for
// others.
QString thumbnail(const QUrl& base, const FileRecord& file);

} // namespace quenby::localdrive::links

// What files are called and how their facts read on pages.
#pragma once

#include "localdrive/store/FileRecord.h"

#include <QList>
#include <QString>

namespace quenby::localdrive {

// The picture for a type: a file of that name lies in pages/icons/.
QString typeIcon(const QString& mimeType);
// For example "Folder", "Picture" or "PDF".
QString typeText(const QString& mimeType);

// For example "1.5 MB".
QString bytesText(qint64 bytes);
// The size of a file with content; a dash for others.
QString sizeText(const FileRecord& file);

// Both in the computer's time zone, of milliseconds since 1970. The short one is what a list has room for: the time
// today, the day this year, or the date.
QString shortDateText(qint64 date, const QDateTime& now);
QString longDateText(qint64 date);

struct ExportChoice {
    QString name; // of the format, for people
    QString link; // path and query
};

// The formats in which a native document can be had; empty for other files.
QList<ExportChoice> exportChoices(const FileRecord& file);

} // namespace quenby::localdrive

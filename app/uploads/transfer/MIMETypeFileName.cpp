#include "app/uploads/transfer/MIMETypeFileName.h"

#include <QMimeDatabase>

namespace quenby {

QString MIMETypeFileName(const QString& fileName, const QString& defaultType) {
    // A leading dot hides a file; it does not begin an extension.
    if (fileName.lastIndexOf(QLatin1Char('.')) < 1)
        return defaultType;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(fileName, QMimeDatabase::MatchExtension);
    return type.isDefault() || !type.isValid() ? defaultType : type.name();
}

} // namespace quenby

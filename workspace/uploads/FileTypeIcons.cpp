#include "workspace/uploads/FileTypeIcons.h"

#include <QFileIconProvider>
#include <QMimeType>

namespace quenby {

QIcon FileTypeIcons::icon(const QString& fileName) {
    if (const QIcon* known = byFileName_.object(fileName))
        return *known;
    const QIcon icon = iconOfType(types_.mimeTypeForFile(fileName, QMimeDatabase::MatchExtension));
    byFileName_.insert(fileName, new QIcon(icon));
    return icon;
}

QIcon FileTypeIcons::iconOfType(const QMimeType& type) {
    QIcon& icon = byType_[type.name()];
    if (icon.isNull())
        icon = QIcon::fromTheme(type.iconName());
    if (icon.isNull())
        icon = QIcon::fromTheme(type.genericIconName());
    if (icon.isNull())
        icon = QFileIconProvider().icon(QFileIconProvider::File);
    return icon;
}

} // namespace quenby

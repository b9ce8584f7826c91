#include "app/statusitem/ApplicationIcon.h"

namespace quenby {

QIcon applicationIcon() {
    QIcon carried;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
        carried.addFile(QStringLiteral(":/quenby/icons/hicolor/%1x%1/apps/quenby.png").arg(size), QSize(size, size));
    return QIcon::fromTheme(QStringLiteral("quenby"), carried);
}

} // namespace quenby

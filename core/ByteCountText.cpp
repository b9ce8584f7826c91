#include "core/ByteCountText.h"

#include <QLocale>

namespace quenby {

QString byteCountText(qint64 bytes) {
    if (bytes == 1)
        return QStringLiteral("1 byte");
    QString text = QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
    return text.replace(QStringLiteral(".0 "), QStringLiteral(" "));
}

} // namespace quenby

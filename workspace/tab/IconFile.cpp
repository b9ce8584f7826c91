#include "workspace/tab/IconFile.h"

#include "workspace/tab/TabLog.h"

#include <QBuffer>
#include <QDir>
#include <QImageWriter>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QThreadPool>

#include <limits>

namespace quenby {
namespace {

constexpr int mostNumbersTried = 16; // of two thousand million
constexpr qsizetype mostIconsOfTab = 16;

QByteArray tiffData(const QImage& icon) {
    constexpr int lzw = 1; // how the TIFF writer calls lossless compression
    QBuffer buffer;
    QImageWriter writer(&buffer, "tiff");
    writer.setCompression(lzw);
    return writer.write(icon) ? buffer.data() : QByteArray();
}

QString freePath(const QDir& folder, const std::function<quint32()>& nextNumber) {
    for (int tried = 0; tried < mostNumbersTried; ++tried) {
        const QString path = folder.filePath(QStringLiteral("%1.png").arg(nextNumber()));
        if (const QFileInfo info(path); !info.exists() && !info.isSymLink())
            return path;
    }
    return {};
}

quint32 randomNumber() {
    return QRandomGenerator::global()->bounded(static_cast<quint32>(std::numeric_limits<qint32>::max()));
}

} // namespace

bool writeIconFile(const QString& folder, const QImage& icon, const std::function<quint32()>& nextNumber) {
    if (!QFileInfo(folder).isDir()) // whoever has no such folder wants none
        return false;
    const QByteArray bytes = tiffData(icon);
    if (bytes.isEmpty()) {
        qCWarning(tabLog, "A page's icon cannot be written as TIFF data");
        return false;
    }
    QSaveFile file(freePath(QDir(folder), nextNumber));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        qCWarning(tabLog, "A page's icon was not kept: %s", qUtf8Printable(file.errorString()));
        return false;
    }
    return true;
}

void IconKeeper::keep(const QImage& icon) {
    if (folder_.isEmpty() || icon.isNull() || kept_.size() == mostIconsOfTab)
        return;
    const QImage pixels = icon.convertToFormat(QImage::Format_ARGB32); // without gaps between the lines
    const size_t content = qHashBits(pixels.constBits(), static_cast<size_t>(pixels.sizeInBytes()));
    if (kept_.contains(content))
        return;
    kept_.insert(content);
    QThreadPool::globalInstance()->start([folder = folder_, icon] { writeIconFile(folder, icon, randomNumber); });
}

} // namespace quenby

#include "tests/faults/storm/StormFiles.h"

#include "driveapi/GTLServiceSettings.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>

#include <algorithm>

namespace quenby::testing {
namespace {

constexpr qint64 chunk = restUploadChunkUnit;
constexpr qint64 edges[] = {0, 0, 1, chunk - 1, chunk, chunk + 1, 2 * chunk};
constexpr double smallest = 1000; // bytes, of the others
constexpr double largest = 3e6;

qint64 sizeOf(QRandomGenerator& random) {
    if (random.bounded(10) == 0)
        return edges[random.bounded(int(std::size(edges)))];
    const double place = 1 - random.generateDouble();
    return qint64(std::min(smallest / (place * place), largest)); // one in sixteen is larger than a chunk
}

QByteArray contentOf(qint64 size, QRandomGenerator& random) {
    QByteArray content((size + 3) / 4 * 4, Qt::Uninitialized);
    random.fillRange(reinterpret_cast<quint32*>(content.data()), content.size() / 4);
    content.truncate(size);
    return content;
}

} // namespace

StormFiles::StormFiles(int count, quint32 seed) {
    for (int number = 0; number < count; ++number) {
        QRandomGenerator random(seed + quint32(number) * 2654435761U);
        StormFile made;
        made.title = QStringLiteral("storm %1.bin").arg(number, 5, 10, QLatin1Char('0'));
        made.path = QFile::encodeName(folder_.filePath(made.title));
        made.size = sizeOf(random);
        const QByteArray content = contentOf(made.size, random);
        made.md5 = QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex());
        QFile file(QFile::decodeName(made.path));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            files_.clear();
            return;
        }
        bytes_ += made.size;
        files_.append(made);
    }
}

QList<QByteArray> StormFiles::paths() const {
    QList<QByteArray> paths;
    for (const StormFile& file : files_)
        paths.append(file.path);
    return paths;
}

} // namespace quenby::testing

// Pictures as tools write them, and names that tell a moment.
#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QImage>
#include <QImageWriter>

namespace quenby::testing {

// With the texts "key: value", and shown in no more detail than a test needs.
inline QByteArray picture(const QSize& size, const QList<std::pair<QString, QString>>& texts = {},
                          const QByteArray& format = "png") {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QBuffer buffer;
    QImageWriter writer(&buffer, format);
    for (const auto& [key, value] : texts)
        writer.setText(key, value);
    if (!writer.write(image))
        qFatal("the picture cannot be written: %s", qPrintable(writer.errorString()));
    return buffer.data();
}

// As the file manager and the panel of one desktop name them, in local time.
inline QByteArray nameOfShot(const QDateTime& moment, const QString& ending = QStringLiteral(".png")) {
    return (moment.toLocalTime().toString(QStringLiteral("'Screenshot_'yyyy-MM-dd'_'HH-mm-ss")) + ending).toUtf8();
}

inline void writeFile(const QByteArray& path, const QByteArray& bytes) {
    QFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        qFatal("%s cannot be written", path.constData());
}

} // namespace quenby::testing

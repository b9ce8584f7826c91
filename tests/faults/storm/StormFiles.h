// Many files of mixed sizes, the same ones for the same seed: some empty, some at the edges of a chunk, most small, a
// few of some megabytes.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTemporaryDir>

namespace quenby::testing {

struct StormFile {
    QString title;
    QByteArray path;
    qint64 size = 0; // bytes
    QString md5;
};

class StormFiles {
public:
    StormFiles(int count, quint32 seed);

    // Empty when they could not be written.
    const QList<StormFile>& all() const { return files_; }
    QList<QByteArray> paths() const;
    qint64 bytes() const { return bytes_; }

private:
    QTemporaryDir folder_;
    QList<StormFile> files_;
    qint64 bytes_ = 0;
};

} // namespace quenby::testing

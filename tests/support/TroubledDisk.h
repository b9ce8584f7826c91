// Disks that are full when a test wants them to be.
#pragma once

#include <QFile>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <csignal>

#include <sys/mount.h>
#include <sys/resource.h>

namespace quenby::testing {

// Until it is destroyed, no file grows beyond so many bytes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }

private:
    rlimit before_{};
};

// A disk of so many MiB; only the administrator gets one.
class SmallDisk {
public:
    explicit SmallDisk(int size) {
        const QByteArray options = "size=" + QByteArray::number(size) + 'm';
        isThere_ = ::mount("none", QFile::encodeName(folder_.path()).constData(), "tmpfs", 0, options.constData()) == 0;
    }
    ~SmallDisk() {
        if (isThere_)
            ::umount(QFile::encodeName(folder_.path()).constData());
    }
    bool isThere() const { return isThere_; }
    QString path() const { return folder_.path(); }
    QString filePath(const QString& name) const { return folder_.filePath(name); }
    void fill(qint64 left) const {
        QFile file(filePath(QStringLiteral("filler")));
        if (file.open(QIODevice::WriteOnly))
            file.write(QByteArray(QStorageInfo(folder_.path()).bytesAvailable() - left, 'x'));
    }

private:
    QTemporaryDir folder_;
    bool isThere_ = false;
};

} // namespace quenby::testing

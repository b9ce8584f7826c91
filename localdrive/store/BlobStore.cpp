#include "localdrive/store/BlobStore.h"

#include "localdrive/store/Identifiers.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace quenby::localdrive {
namespace {

Error failure(const QString& action) {
    const int code = errno;
    return Error(errorDomain::posix, code,
                 {{errorKey::reason, QStringLiteral("%1: %2. Check the data folder and the disk's free space.")
                                         .arg(action, qt_error_string(code))}});
}

// Puts a folder's entries on disk, so that a linked file is found under its new name after a power failure.
bool syncFolder(const QString& folder) {
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

bool isPartName(const QString& name) {
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [](QChar c) {
        return c.unicode() < 128 && (c.isLetterOrNumber() || c == QLatin1Char('-') || c == QLatin1Char('_'));
    });
}

} // namespace

BlobStore::BlobStore(const QString& dataFolder)
    : blobs_(dataFolder + QStringLiteral("/blobs"))
    , incoming_(dataFolder + QStringLiteral("/incoming")) {}

Result<std::unique_ptr<BlobStore>> BlobStore::open(const QString& dataFolder) {
    std::unique_ptr<BlobStore> store(new BlobStore(dataFolder));
    for (const QString& folder : {store->blobs_, store->incoming_})
        if (!QDir().mkpath(folder))
            return failure(QStringLiteral("The folder %1 can't be created").arg(folder));
    return store;
}

QString BlobStore::incomingPath(const QString& name) const { return incoming_ + QLatin1Char('/') + name; }

Result<std::unique_ptr<IncomingBlob>> BlobStore::incoming(const QString& name) {
    if (!isPartName(name))
        return Error(errorDomain::posix, EINVAL,
                     {{errorKey::reason, QStringLiteral("A part file's name has letters, digits, - and _ only.")}});
    std::unique_ptr<IncomingBlob> blob(new IncomingBlob(incomingPath(name)));
    if (const Result<void> opened = blob->open(); !opened)
        return opened.error();
    return blob;
}

void BlobStore::discardIncoming(const QString& name) {
    if (isPartName(name))
        QFile::remove(incomingPath(name));
}

void BlobStore::sweepIncoming(const QSet<QString>& keep) {
    QDirIterator parts(incoming_, QDir::Files);
    while (parts.hasNext()) {
        parts.next();
        if (!keep.contains(parts.fileName()))
            QFile::remove(parts.filePath());
    }
}

// Contents are spread over folders by the last character of their random ids, which keeps each folder small.
QString BlobStore::path(const QString& id) const {
    return blobs_ + QLatin1Char('/') + id.right(1) + QLatin1Char('/') + id;
}

Result<QString> BlobStore::adopt(const StagedBlob& staged) {
    const QString id = newItemId();
    const QString place = path(id);
    const QString folder = place.section(QLatin1Char('/'), 0, -2);
    if (!QDir().exists(folder) && !(QDir().mkpath(folder) && syncFolder(blobs_)))
        return failure(QStringLiteral("The folder %1 can't be created").arg(folder));
    if (::link(QFile::encodeName(staged.path).constData(), QFile::encodeName(place).constData()) != 0 ||
        !syncFolder(folder)) {
        const Error error = failure(QStringLiteral("A content can't be linked to its place"));
        remove(id);
        return error;
    }
    return id;
}

void BlobStore::discard(const StagedBlob& staged) { QFile::remove(staged.path); }

void BlobStore::remove(const QString& id) { QFile::remove(path(id)); }

qint64 BlobStore::sweep(const QSet<QString>& known) {
    qint64 removed = 0;
    QDirIterator contents(blobs_, QDir::Files, QDirIterator::Subdirectories);
    while (contents.hasNext()) {
        contents.next();
        if (!known.contains(contents.fileName()) && QFile::remove(contents.filePath()))
            ++removed;
    }
    return removed;
}

} // namespace quenby::localdrive

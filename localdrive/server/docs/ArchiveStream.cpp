#include "localdrive/server/docs/ArchiveStream.h"

#include "localdrive/server/docs/Export.h"
#include "localdrive/server/docs/FileNames.h"
#include "localdrive/server/share/ShareState.h"
#include "localdrive/store/NativeTypes.h"

#include <QJsonArray>

namespace quenby::localdrive {
namespace {

constexpr qint64 pieceSize = 256 * 1024;

// A folder may lie in several others, so that a few of them can be walked through in very many ways.
constexpr qint64 mostEntries = 200'000;

// Pictures, films and archives are compressed already.
bool isWorthCompressing(const QString& mimeType) {
    static const QStringList worth{QStringLiteral("application/json"),  QStringLiteral("application/xml"),
                                   QStringLiteral("application/x-tar"), QStringLiteral("application/rtf"),
                                   QStringLiteral("image/svg+xml"),     QStringLiteral("image/bmp")};
    return mimeType.startsWith(QLatin1String("text/")) || worth.contains(mimeType);
}

QString nameOf(const QJsonObject& file) {
    const NativeKind* kind = nativeKind(file[QLatin1String("mimeType")].toString());
    const QString extension = kind ? QLatin1Char('.') + usualFormat(*kind) : QString();
    return fileName(file[QLatin1String("title")].toString(), extension);
}

// Some file systems take "A" and "a" for the same.
QString freeName(const QString& wanted, QSet<QString>& taken) {
    QString name = wanted;
    for (int number = 1; taken.contains(name.toCaseFolded()); ++number)
        name = numbered(wanted, number);
    taken.insert(name.toCaseFolded());
    return name;
}

} // namespace

ArchiveStream::ArchiveStream(DriveStore& store, const RpcMethods& methods, Caller caller,
                             const QList<QJsonObject>& files)
    : store_(store)
    , methods_(methods)
    , caller_(std::move(caller))
    , writer_([this](QByteArrayView piece) { return (*sink_)(piece); }) {
    enqueue(files, {});
}

void ArchiveStream::enqueue(const QList<QJsonObject>& files, const QString& folderPath) {
    QSet<QString> taken;
    std::deque<Entry> entries;
    for (const QJsonObject& file : files) {
        const auto modified = QDateTime::fromString(file[QLatin1String("modifiedDate")].toString(), Qt::ISODateWithMs);
        entries.push_back({file[QLatin1String("id")].toString(), file[QLatin1String("mimeType")].toString(),
                           folderPath + freeName(nameOf(file), taken), modified.toLocalTime()});
    }
    pending_.insert(pending_.begin(), entries.begin(), entries.end());
}

ArchiveStream::Step ArchiveStream::next(const ZipWriter::Sink& sink) {
    sink_ = &sink;
    if (current_)
        return continueFile() ? Step::more : Step::failed;
    if (pending_.empty())
        return writer_.finish() ? Step::done : Step::failed;
    if (++count_ > mostEntries)
        return Step::failed;
    const Entry entry = std::move(pending_.front());
    pending_.pop_front();
    return begin(entry) ? Step::more : Step::failed;
}

bool ArchiveStream::begin(const Entry& entry) {
    if (entry.mimeType == folderMimeType)
        return addFolder(entry);
    return isNativeType(entry.mimeType) ? addDocument(entry) : beginFile(entry);
}

bool ArchiveStream::beginFile(const Entry& entry) {
    auto content = store_.content(caller_, entry.id);
    if (!content)
        return content.error().code() < 500;
    current_ = std::move(content->file);
    return writer_.begin(entry.path.toUtf8(), content->size, entry.modified, isWorthCompressing(entry.mimeType));
}

bool ArchiveStream::continueFile() {
    const QByteArray piece = current_->read(pieceSize);
    if (!piece.isEmpty())
        return writer_.write(piece);
    const bool isWhole = current_->error() == QFileDevice::NoError && current_->atEnd();
    current_.reset();
    return isWhole && writer_.end();
}

bool ArchiveStream::addDocument(const Entry& entry) {
    const NativeKind* kind = nativeKind(entry.mimeType);
    const auto document = documents::read(store_, caller_, entry.id);
    if (!kind || !document)
        return !kind || document.error().code() < 500;
    const auto made = exportDocument(*document, usualFormat(*kind));
    return made && writer_.add(entry.path.toUtf8(), made->bytes, entry.modified);
}

bool ArchiveStream::addFolder(const Entry& entry) {
    QList<QJsonObject> files;
    QString page;
    do {
        const QString q = QStringLiteral("'%1' in parents and trashed = false").arg(entry.id);
        const auto list = sharing::call(
            methods_, QStringLiteral("drive.files.list"),
            {{QStringLiteral("q"), q},
             {QStringLiteral("maxResults"), 1000},
             {QStringLiteral("pageToken"), page},
             {QStringLiteral("fields"), QStringLiteral("nextPageToken,items(id,title,mimeType,modifiedDate)")}},
            caller_);
        if (!list)
            return list.error().code() < 500;
        for (const QJsonValue file : (*list)[QLatin1String("items")].toArray())
            files.append(file.toObject());
        page = (*list)[QLatin1String("nextPageToken")].toString();
    } while (!page.isEmpty() && files.size() < mostEntries);
    const QString path = entry.path + QLatin1Char('/');
    enqueue(files, path);
    return writer_.addFolder(path.toUtf8(), entry.modified);
}

} // namespace quenby::localdrive

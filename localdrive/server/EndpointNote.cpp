#include "localdrive/server/EndpointNote.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cerrno>

namespace quenby::localdrive {
namespace {

QString fileIn(const QString& folder) { return QDir(folder).filePath(QStringLiteral("endpoint.json")); }

} // namespace

Result<void> EndpointNote::write(const QString& folder) const {
    const QJsonObject object{{QStringLiteral("url"), url.toString()}, {QStringLiteral("pid"), pid}};
    QSaveFile file(fileIn(folder));
    if (file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(object).toJson()) > 0 && file.commit())
        return {};
    return Error(
        errorDomain::posix, EIO,
        {{errorKey::reason, QStringLiteral("%1 can't be written: %2. Free some space or choose another folder.")
                                .arg(file.fileName(), file.errorString())}});
}

std::optional<EndpointNote> EndpointNote::read(const QString& folder) {
    QFile file(fileIn(folder));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    EndpointNote note{QUrl(object.value(QStringLiteral("url")).toString()),
                      object.value(QStringLiteral("pid")).toInteger()};
    if (!note.url.isValid() || note.url.port() <= 0)
        return std::nullopt;
    return note;
}

} // namespace quenby::localdrive

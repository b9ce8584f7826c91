// The query that puts a local file into the Drive.
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace quenby {

class GTLQueryDrive;

// Titled with the path's last component, of the media type that fits it, and in the folder of this identifier; empty:
// at the top of the Drive. Nothing is opened: the query's media is a null file until the upload's turn has come.
std::shared_ptr<GTLQueryDrive> insertQueryForPath(const QByteArray& path, const QString& parentId);

} // namespace quenby

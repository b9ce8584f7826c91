// File addresses as the desktop hands them over (RFC 8089, RFC 2483), and the local paths in them. A path is bytes: a
// file's name need not be UTF-8.
#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

namespace quenby {

// Empty when the address names no file of this computer.
QByteArray localPath(const QByteArray& encodedAddress);
QByteArray localPath(const QUrl& url);

// The local paths of a text/uri-list, in order.
QList<QByteArray> localPathsOfList(const QByteArray& uriList);

} // namespace quenby

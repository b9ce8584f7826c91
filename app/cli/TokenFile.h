// The sign-in to the local Drive, kept between runs in a file that only its owner may read. Losing power while it is
// saved leaves either the old sign-in or the new one.
//
// The content is GTMOAuth2Authentication::persistenceResponseString() and is a secret: no error here repeats any of it.
#pragma once

#include "core/Result.h"

#include <QByteArray>
#include <QString>

namespace quenby {

class TokenFile {
public:
    explicit TokenFile(QByteArray path);

    // Empty when there is none. A file that others could read is closed to them first; a file that is no regular
    // file of this user, cannot be read or holds no sign-in is an error.
    Result<QString> load() const;
    // Makes the folder when it is missing.
    Result<void> save(const QString& persistenceString) const;

    const QByteArray& path() const { return path_; }

private:
    QByteArray path_;
};

} // namespace quenby

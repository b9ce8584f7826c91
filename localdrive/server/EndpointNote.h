// endpoint.json in the data folder: where the server of this folder listens, or last listened.
#pragma once

#include "core/Result.h"

#include <QUrl>

#include <optional>

namespace quenby::localdrive {

struct EndpointNote {
    QUrl url;
    qint64 pid = 0;

    // The file is replaced as a whole: a reader sees the former note or this one.
    Result<void> write(const QString& folder) const;
    // Nothing when there is none that makes sense.
    static std::optional<EndpointNote> read(const QString& folder);
};

} // namespace quenby::localdrive

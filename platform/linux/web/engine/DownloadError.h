// Why the engine gave a download up, as one of our errors.
#pragma once

#include "core/Error.h"

#include <QWebEngineDownloadRequest>

namespace quenby {

// errorDomain::posix for this computer's files and errorDomain::url for the rest, with a sentence for people that holds
// no address but the host.
Error downloadError(QWebEngineDownloadRequest::DownloadInterruptReason reason, const QString& host);

} // namespace quenby

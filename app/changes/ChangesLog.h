// The change feed's lines in the process log.
#pragma once

#include <QLoggingCategory>
#include <QString>

namespace quenby {

Q_DECLARE_LOGGING_CATEGORY(changesLog)

// A file's title as a log may hold it: one line of bearable length, without what looks like a secret.
QByteArray titleForLog(const QString& title);

} // namespace quenby

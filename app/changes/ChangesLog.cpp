#include "app/changes/ChangesLog.h"

#include "app/cli/DisplayText.h"
#include "core/Redaction.h"

namespace quenby {

Q_LOGGING_CATEGORY(changesLog, "quenby.changes", QtInfoMsg)

QByteArray titleForLog(const QString& title) {
    constexpr int mostColumns = 200;
    return elidedInTheMiddle(printableText(redaction::text(title)), mostColumns).toUtf8();
}

} // namespace quenby

#include "workspace/tab/TabLog.h"

#include "core/Redaction.h"

namespace quenby {

Q_LOGGING_CATEGORY(tabLog, "quenby.tab", QtInfoMsg)
Q_LOGGING_CATEGORY(tabConsoleLog, "quenby.tab.console", QtInfoMsg)

void consoleLog(const QString& message) {
    constexpr qsizetype longest = 4096; // characters; a page may write what it likes
    qCInfo(tabConsoleLog, "JSLog: %s", qUtf8Printable(redaction::text(message.left(longest))));
}

} // namespace quenby

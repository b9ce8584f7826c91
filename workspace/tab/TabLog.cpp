#include "workspace/tab/TabLog.h"

#include "core/Redaction.h"

namespace quenby {

Q_LOGGING_CATEGORY(tabLog, "quenby.tab", QtInfoMsg)
Q_LOGGING_CATEGORY(tabConsoleLog, "quenby.tab.console", QtInfoMsg)

// A page may write what it likes, also what would look like another line of the log, or clear a terminal.
void consoleLog(const QString& message) {
    constexpr qsizetype longest = 4096; // characters
    QString line = redaction::text(message.left(longest));
    for (QChar& character : line) {
        if (character.category() == QChar::Other_Control)
            character = QLatin1Char(' ');
    }
    qCInfo(tabConsoleLog, "JSLog: %s", qUtf8Printable(line));
}

} // namespace quenby

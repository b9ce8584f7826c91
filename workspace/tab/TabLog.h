// The tabs' part of the process log. Addresses of pages may carry what nobody else should know: only hosts go there.
#pragma once

#include <QLoggingCategory>

namespace quenby {

Q_DECLARE_LOGGING_CATEGORY(tabLog)
Q_DECLARE_LOGGING_CATEGORY(tabConsoleLog)

// What a page writes to its console. The engine hands that over by itself: no object of the program's is put into the
// page, so that there is nothing of it that a page could call.
void consoleLog(const QString& message);

} // namespace quenby

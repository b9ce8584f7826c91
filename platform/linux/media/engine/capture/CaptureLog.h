// What recordings log: "quenby.capture".
#pragma once

#include <QLoggingCategory>

namespace quenby {

Q_DECLARE_LOGGING_CATEGORY(captureLog)

} // namespace quenby

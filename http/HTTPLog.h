// The transport's log category, "quenby.http". Addresses go through core/Redaction.h before they are written to it.
#pragma once

#include <QLoggingCategory>

namespace quenby {

Q_DECLARE_LOGGING_CATEGORY(httpLog)

} // namespace quenby

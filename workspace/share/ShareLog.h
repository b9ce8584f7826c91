// The share windows' part of the process log. Addresses of sharing pages carry a token and never go there.
#pragma once

#include <QLoggingCategory>

namespace quenby {

Q_DECLARE_LOGGING_CATEGORY(shareLog)

} // namespace quenby

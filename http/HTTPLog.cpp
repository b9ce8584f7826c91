#include "http/HTTPLog.h"

namespace quenby {

Q_LOGGING_CATEGORY(httpLog, "quenby.http", QtInfoMsg)

} // namespace quenby

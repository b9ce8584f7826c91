#include "workspace/share/ShareLog.h"

namespace quenby {

Q_LOGGING_CATEGORY(shareLog, "quenby.share", QtInfoMsg)

} // namespace quenby

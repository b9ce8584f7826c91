#include "platform/linux/media/engine/capture/CaptureLog.h"

namespace quenby {

Q_LOGGING_CATEGORY(captureLog, "quenby.capture", QtInfoMsg)

} // namespace quenby

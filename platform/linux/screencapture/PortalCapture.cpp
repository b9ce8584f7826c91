#include "platform/linux/screencapture/PortalCapture.h"

#include "platform/linux/portal/ScreenshotPortal.h"
#include "platform/linux/screencapture/ReplacingFile.h"

namespace quenby {

void captureByPortal(const QByteArray& path, QObject* context, std::function<void(const MaybeError& error)> ended) {
    takeInteractiveScreenshot(context, [path, ended = std::move(ended)](const Result<QByteArray>& taken) {
        if (!taken)
            ended(taken.error());
        else
            ended(taken->isEmpty() ? MaybeError() : moveOver(*taken, path));
    });
}

} // namespace quenby

#include "platform/linux/desktop/DesktopOpener.h"

#include <QDesktopServices>

namespace quenby {

bool DesktopOpener::openURL(const QUrl& url) {
    // Addresses come from servers: anything but a web page could start any program.
    const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return isWeb && url.isValid() && !url.host().isEmpty() && QDesktopServices::openUrl(url);
}

} // namespace quenby

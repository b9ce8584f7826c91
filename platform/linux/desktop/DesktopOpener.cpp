#include "platform/linux/desktop/DesktopOpener.h"

#include <QDesktopServices>

#include <sys/stat.h>

namespace quenby {

bool DesktopOpener::openURL(const QUrl& url) {
    // Addresses come from servers: anything but a web page could start any program.
    const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return isWeb && url.isValid() && !url.host().isEmpty() && QDesktopServices::openUrl(url);
}

bool DesktopOpener::openFile(const QByteArray& path) {
    struct stat status {};
    if (!path.startsWith('/') || ::stat(path.constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    // The bytes as they are: a name need not be text in any encoding.
    return QDesktopServices::openUrl(QUrl::fromEncoded("file://" + path.toPercentEncoding("/")));
}

} // namespace quenby

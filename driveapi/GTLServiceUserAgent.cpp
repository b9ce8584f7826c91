#include "driveapi/GTLServiceUserAgent.h"

namespace quenby {
namespace {

const QString clientLibrary = QStringLiteral("quenby-drive-client");
constexpr int clientLibraryMajorVersion = 2;
constexpr int clientLibraryMinorVersion = 0;

} // namespace

QByteArray composeUserAgent(const QString& identifier, const QString& systemVersion, const QString& addition) {
    if (identifier.contains(clientLibrary, Qt::CaseInsensitive))
        return identifier.toUtf8();
    const QString version = QStringLiteral("%1.%2").arg(clientLibraryMajorVersion).arg(clientLibraryMinorVersion);
    const QString appended = addition.isEmpty() ? QString() : QString(QLatin1Char(' ') + addition);
    return QStringLiteral("%1 %2/%3 %4%5 (gzip)")
        .arg(identifier, clientLibrary, version, systemVersion, appended)
        .toUtf8();
}

} // namespace quenby

#include "http/UserAgent.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace quenby::userAgent {

QString cleaned(const QString& text) {
    static const QRegularExpression separators(QStringLiteral("[\\s()<>@;:\\\\/\\[\\]?={}\"]"),
                                               QRegularExpression::UseUnicodePropertiesOption);
    QString result = text;
    result.replace(QLatin1Char(' '), QLatin1Char('_'));
    result.replace(QLatin1Char(','), QLatin1Char('_'));
    return result.remove(separators);
}

QString systemVersionString() {
    static const QString text = systemVersionString(QStringLiteral("/System/Library/CoreServices/SystemVersion.plist"));
    return text;
}

QString systemVersionString(const QString& versionFile) {
    static const QRegularExpression entry(QStringLiteral("<key>ProductVersion</key>\\s*<string>([^<]+)</string>"));
    QFile file(versionFile);
    const QString properties = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    const QString version = entry.match(properties).captured(1);
    return QStringLiteral("MacOSX/") + (version.isEmpty() ? QStringLiteral("10.?.?") : version);
}

Application Application::current() {
    Application application;
    QStringList reversed = QCoreApplication::organizationDomain().split(QLatin1Char('.'), Qt::SkipEmptyParts);
    std::reverse(reversed.begin(), reversed.end());
    if (!reversed.isEmpty())
        application.identifier = (reversed << QCoreApplication::applicationName()).join(QLatin1Char('.'));
    application.processName = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    application.version = QCoreApplication::applicationVersion();
    return application;
}

QString applicationIdentifier(const Application& application) {
    QString name = application.userAgentID.isEmpty() ? application.identifier : application.userAgentID;
    if (name.isEmpty())
        name = QStringLiteral("proc_") + application.processName;
    const QString version =
        cleaned(application.shortVersion.isEmpty() ? application.version : application.shortVersion);
    return cleaned(name) + (version.isEmpty() ? QString() : QString(QLatin1Char('/') + version));
}

} // namespace quenby::userAgent

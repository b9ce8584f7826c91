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
    static const QString text = systemVersionString(QStringLiteral("/etc/os-release"));
    return text;
}

QString systemVersionString(const QString& osReleasePath) {
    QString name = QStringLiteral("Linux");
    QString version = QStringLiteral("?");
    QFile file(osReleasePath);
    if (file.open(QIODevice::ReadOnly)) {
        static const QRegularExpression line(QStringLiteral("^(ID|VERSION_ID)=[\"']?([^\"'\\n]+)"),
                                             QRegularExpression::MultilineOption);
        for (auto match = line.globalMatch(QString::fromUtf8(file.readAll())); match.hasNext();) {
            const auto found = match.next();
            (found.captured(1) == QLatin1String("ID") ? name : version) = cleaned(found.captured(2));
        }
        if (!name.isEmpty())
            name[0] = name[0].toUpper();
    }
    return name + QLatin1Char('/') + version;
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

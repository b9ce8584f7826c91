#include "app/account/EnvironmentProxies.h"

#include <QHostAddress>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <algorithm>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(proxyLog, "quenby.proxy")

// The first that is set to something.
QString variable(std::initializer_list<const char*> names) {
    for (const char* const name : names) {
        if (const QString value = qEnvironmentVariable(name).trimmed(); !value.isEmpty())
            return value;
    }
    return {};
}

QString proxyVariable(const QString& scheme) {
    QString value;
    if (scheme == QLatin1String("http"))
        value = variable({"http_proxy"});
    else if (scheme == QLatin1String("https"))
        value = variable({"https_proxy", "HTTPS_PROXY"});
    return value.isEmpty() ? variable({"all_proxy", "ALL_PROXY"}) : value;
}

// Absent for other schemes, such as that of a script, which the system's own library understands.
std::optional<QUrl> proxyAddress(const QString& value) {
    QUrl url(value.contains(QLatin1String("://")) ? value : QString(QLatin1String("http://") + value));
    const QString scheme = url.scheme();
    if (scheme == QLatin1String("socks") || scheme == QLatin1String("socks5"))
        url.setScheme(QStringLiteral("socks5h")); // names are not shown to the network that the proxy is to avoid
    static const QStringList known{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("socks4"),
                                   QStringLiteral("socks4a"), QStringLiteral("socks5h")};
    if (!url.isValid() || url.host().isEmpty() || !known.contains(url.scheme()))
        return std::nullopt;
    return url;
}

QString withoutBrackets(QString host) {
    return host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')) ? host.sliced(1).chopped(1) : host;
}

bool isNameOrBelow(const QString& host, QString name) {
    while (name.startsWith(QLatin1Char('.')) || name.startsWith(QLatin1String("*.")))
        name = name.sliced(name.indexOf(QLatin1Char('.')) + 1);
    return !name.isEmpty() && (host == name || host.endsWith(QLatin1Char('.') + name));
}

bool isExceptedBy(const QUrl& url, const QString& entry) {
    if (entry == QLatin1String("*"))
        return true;
    const QString host = url.host(QUrl::FullyEncoded).toLower();
    const QHostAddress address(host);
    if (entry.contains(QLatin1Char('/')))
        return !address.isNull() && address.isInSubnet(QHostAddress::parseSubnet(withoutBrackets(entry)));
    if (!address.isNull() && address == QHostAddress(withoutBrackets(entry)))
        return true;
    static const QRegularExpression withPort(QStringLiteral("^(.+):(\\d+)$"));
    const auto match = withPort.match(entry);
    if (!match.hasMatch() || QHostAddress(entry).protocol() == QAbstractSocket::IPv6Protocol)
        return isNameOrBelow(host, entry);
    const int port = url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
    return match.captured(2).toInt() == port && isNameOrBelow(host, withoutBrackets(match.captured(1)));
}

} // namespace

bool isLoopbackHost(const QString& host) {
    const QString name = withoutBrackets(host.toLower());
    return name == QLatin1String("localhost") || name.endsWith(QLatin1String(".localhost")) ||
           QHostAddress(name).isLoopback();
}

bool isExceptedFromProxies(const QUrl& url, const QString& list) {
    static const QRegularExpression separator(QStringLiteral("[,\\s]+"));
    const QStringList entries = list.toLower().split(separator, Qt::SkipEmptyParts);
    return std::any_of(entries.begin(), entries.end(), [&](const QString& entry) { return isExceptedBy(url, entry); });
}

std::optional<ProxyChoice> environmentProxies(const QUrl& url) {
    if (isExceptedFromProxies(url, variable({"no_proxy", "NO_PROXY"})))
        return ProxyChoice{};
    const QString value = proxyVariable(url.scheme().toLower());
    if (value.isEmpty())
        return std::nullopt;
    if (const auto proxy = proxyAddress(value))
        return ProxyChoice{{*proxy}};
    qCInfo(proxyLog, "the environment's proxy for %s is left to the system", qUtf8Printable(url.scheme()));
    return std::nullopt;
}

} // namespace quenby

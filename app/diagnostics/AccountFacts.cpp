#include "app/diagnostics/AccountFacts.h"

#include "app/account/AccountSummary.h"
#include "app/account/DriveConnection.h"
#include "app/session/AccountDetails.h"
#include "app/session/AccountSession.h"
#include "core/ByteCountText.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLDriveAbout.h"
#include "platform/Defaults.h"

#include <QCoreApplication>
#include <QNetworkInformation>
#include <QTimeZone>
#include <QUrl>

#include <sys/timex.h>

#include <cmath>

namespace quenby {
namespace {

// A difference of the clocks that the way of the answer and the date's whole seconds explain.
constexpr qint64 sameTimeMs = 2000;

QString yesNo(bool isYes) { return isYes ? QStringLiteral("yes") : QStringLiteral("no"); }

QString percentText(qint64 part, qint64 whole) {
    return QString::number(std::lround(100.0 * static_cast<double>(part) / static_cast<double>(whole))) +
           QLatin1Char('%');
}

QString shareText(qint64 bytes, qint64 total) {
    return total > 0 ? QStringLiteral("%1 (%2)").arg(percentText(bytes, total), byteCountText(bytes))
                     : byteCountText(bytes);
}

// "Drive" for "DRIVE".
QString serviceLabel(const QString& name) { return name.left(1).toUpper() + name.mid(1).toLower(); }

// As the desktop's own clock settings judge it: the kernel was told the time, and not too long ago.
QString synchronizationText() {
    constexpr long trustedErrorUs = 16'000'000;
    timex state{};
    if (adjtimex(&state) < 0)
        return QStringLiteral("not known");
    return yesNo(state.maxerror < trustedErrorUs);
}

QString reachabilityText() {
    const QNetworkInformation* const network = QNetworkInformation::instance();
    if (!network)
        return QStringLiteral("not known");
    if (network->isBehindCaptivePortal())
        return QStringLiteral("behind a page that asks for a sign-in");
    switch (network->reachability()) {
    case QNetworkInformation::Reachability::Online:
        return QStringLiteral("online");
    case QNetworkInformation::Reachability::Site:
        return QStringLiteral("this site only");
    case QNetworkInformation::Reachability::Local:
        return QStringLiteral("this computer's own network only");
    case QNetworkInformation::Reachability::Disconnected:
        return QStringLiteral("disconnected");
    case QNetworkInformation::Reachability::Unknown:
        break;
    }
    return QStringLiteral("not known");
}

// Of which kind, and never where or as whom. A proxy without a scheme is one of HTTP.
QString proxyKind(const QString& proxy) {
    if (proxy.isEmpty())
        return QStringLiteral("empty");
    const qsizetype scheme = proxy.indexOf(QLatin1String("://"));
    static const QStringList kinds{QStringLiteral("http"),   QStringLiteral("https"),   QStringLiteral("socks"),
                                   QStringLiteral("socks4"), QStringLiteral("socks4a"), QStringLiteral("socks5"),
                                   QStringLiteral("socks5h")};
    const QString kind = scheme < 0 ? kinds.first() : proxy.first(scheme).toLower();
    return kinds.contains(kind) ? kind : QStringLiteral("of an unknown kind");
}

QString systemProxyText() {
    QStringList found;
    for (const char* name : {"https_proxy", "HTTPS_PROXY", "http_proxy", "all_proxy", "ALL_PROXY"}) {
        if (qEnvironmentVariableIsSet(name))
            found.append(QString::fromLatin1(name) + QStringLiteral(" is ") + proxyKind(qEnvironmentVariable(name)));
    }
    for (const char* name : {"no_proxy", "NO_PROXY"}) {
        if (qEnvironmentVariableIsSet(name))
            found.append(QString::fromLatin1(name) + QStringLiteral(" is set"));
    }
    return found.isEmpty() ? QStringLiteral("none in the environment") : found.join(QStringLiteral(", "));
}

QString minutesText(qint64 seconds) {
    const qint64 minutes = (seconds + 30) / 60;
    return minutes == 1 ? QStringLiteral("1 minute") : QStringLiteral("%1 minutes").arg(minutes);
}

} // namespace

DiagnosticsSection accountSection(const AccountSession& session, const DriveConnection& drive) {
    DiagnosticsSection section{QStringLiteral("Account"), {}};
    section.lines.append({QStringLiteral("Drive"), drive.endpoints().isLocal ? QStringLiteral("of this computer")
                                                                             : QStringLiteral("the provider's")});
    section.lines.append({QStringLiteral("Signed in"), yesNo(session.isSignedIn())});
    if (const auto facts = session.credentialFacts()) {
        section.lines.append({QStringLiteral("Can be renewed"), yesNo(facts->canBeRenewed)});
        section.lines.append({QStringLiteral("Access"), expiryText(*facts, drive.timeSource()->now())});
        section.lines.append({QStringLiteral("Scopes"), QString::number(facts->scopes)});
    }
    const bool isOwnClient = drive.identity().clientID != ClientIdentity::ofTheProgram().clientID;
    section.lines.append(
        {QStringLiteral("Client"), isOwnClient ? QStringLiteral("the user's own") : QStringLiteral("the program's")});
    return section;
}

QString expiryText(const CredentialFacts& facts, const QDateTime& now) {
    if (!facts.hasAccessToken)
        return QStringLiteral("none yet");
    if (!facts.expirationDate)
        return QStringLiteral("there, its end is not known");
    const qint64 left = now.secsTo(*facts.expirationDate);
    return left > 0 ? QStringLiteral("expires in %1").arg(minutesText(left))
                    : QStringLiteral("expired %1 ago").arg(minutesText(-left));
}

DiagnosticsSection quotaSection(const GTLDriveAbout* about) {
    DiagnosticsSection section{QStringLiteral("Quota"), {}};
    if (!about) {
        section.lines.append({QStringLiteral("Storage"), QStringLiteral("not known")});
        return section;
    }
    const qint64 total = about->quotaType() == QLatin1String("UNLIMITED") ? 0 : about->quotaBytesTotal();
    section.lines.append(
        {QStringLiteral("Total"), total > 0 ? byteCountText(total) : QStringLiteral("without a limit, or not known")});
    section.lines.append({QStringLiteral("Used"), shareText(bytesUsed(*about), total)});
    if (const auto services = about->quotaBytesByService()) {
        for (const auto& service : *services)
            section.lines.append({serviceLabel(service->serviceName()), shareText(service->bytesUsed(), total)});
    }
    return section;
}

QString clockDifferenceText(const ServerMoment& moment, const TimeSource& time) {
    const qint64 ahead = moment.date.msecsTo(moment.local);
    QString text = QStringLiteral("within %1 seconds of the server's").arg(sameTimeMs / 1000);
    if (std::abs(ahead) > sameTimeMs)
        text = QStringLiteral("%1 seconds %2 the server's")
                   .arg(std::abs(ahead) / 1000)
                   .arg(ahead > 0 ? QStringLiteral("ahead of") : QStringLiteral("behind"));
    const qint64 since = (time.elapsed() - moment.elapsed).count();
    text += QStringLiteral(", heard %1 ago").arg(minutesText(since / 1000));
    if (std::abs(moment.local.msecsTo(time.now()) - since) > sameTimeMs)
        text += QStringLiteral("; it was set since, or the computer slept");
    return text;
}

DiagnosticsSection clockSection(const AccountDetails& details, const TimeSource& time) {
    const auto& moment = details.serverMoment();
    return {QStringLiteral("Clock"),
            {{QStringLiteral("This computer's clock"),
              moment ? clockDifferenceText(*moment, time)
                     : QStringLiteral("not compared yet: the server has not told its time")},
             {QStringLiteral("Time zone"), QString::fromUtf8(QTimeZone::systemTimeZoneId())},
             {QStringLiteral("Set by the network"), synchronizationText()}}};
}

DiagnosticsSection networkSection(const Defaults& defaults) {
    const bool isDirect = defaults.valueForKey(defaultsKey::proxy).toString() == QLatin1String("none");
    return {QStringLiteral("Network"),
            {{QStringLiteral("Reachability"), reachabilityText()},
             {QStringLiteral("Proxy setting"), isDirect ? QStringLiteral("none") : QStringLiteral("as the system")},
             {QStringLiteral("System's proxy"), systemProxyText()}}};
}

} // namespace quenby

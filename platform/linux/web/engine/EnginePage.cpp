#include "platform/linux/web/engine/EnginePage.h"

#include "core/Redaction.h"

#include <QLoggingCategory>
#include <QWebEngineClientCertificateSelection>
#include <QWebEngineFileSystemAccessRequest>
#include <QWebEngineFullScreenRequest>
#include <QWebEngineRegisterProtocolHandlerRequest>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(consoleLog, "quenby.web.console", QtWarningMsg)

WebNavigation::Kind kindOf(QWebEnginePage::NavigationType type) {
    switch (type) {
    case QWebEnginePage::NavigationTypeTyped:
        return WebNavigation::Kind::typed;
    case QWebEnginePage::NavigationTypeLinkClicked:
        return WebNavigation::Kind::linkClicked;
    case QWebEnginePage::NavigationTypeFormSubmitted:
        return WebNavigation::Kind::formSubmitted;
    case QWebEnginePage::NavigationTypeBackForward:
        return WebNavigation::Kind::backForward;
    case QWebEnginePage::NavigationTypeReload:
        return WebNavigation::Kind::reload;
    case QWebEnginePage::NavigationTypeRedirect:
        return WebNavigation::Kind::redirect;
    default:
        return WebNavigation::Kind::other;
    }
}

} // namespace

EnginePage::EnginePage(QWebEngineProfile* profile, QObject* parent)
    : QWebEnginePage(profile, parent) {
    connect(this, &QWebEnginePage::featurePermissionRequested, this, [this](const QUrl& origin, Feature feature) {
        setFeaturePermission(origin, feature, PermissionDeniedByUser);
    });
    connect(this, &QWebEnginePage::fullScreenRequested, this,
            [](QWebEngineFullScreenRequest request) { request.reject(); });
    connect(this, &QWebEnginePage::registerProtocolHandlerRequested, this,
            [](QWebEngineRegisterProtocolHandlerRequest request) { request.reject(); });
    connect(this, &QWebEnginePage::fileSystemAccessRequested, this,
            [](QWebEngineFileSystemAccessRequest request) { request.reject(); });
    connect(this, &QWebEnginePage::selectClientCertificate, this,
            [](QWebEngineClientCertificateSelection selection) { selection.selectNone(); });
}

bool EnginePage::acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) {
    if (isMainFrame && std::exchange(expectsOwnPage_, false) && url.scheme() == QLatin1String("data"))
        return true;
    if (!policy_)
        return true;
    const WebView::NavigationPolicy policy = policy_; // it may be replaced while it runs
    isAsking_ = true;
    const bool isUsed = policy({url, kindOf(type), isMainFrame}) == WebNavigationPolicy::use;
    isAsking_ = false;
    return isUsed;
}

void EnginePage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString& message, int lineNumber,
                                          const QString&) {
    qCDebug(consoleLog).noquote() << "line" << lineNumber << redaction::text(message);
}

} // namespace quenby

#include "platform/linux/web/engine/EnginePage.h"

#include "core/Redaction.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QWebEngineCertificateError>
#include <QWebEngineClientCertificateSelection>
#include <QWebEngineDownloadRequest>
#include <QWebEngineFileSystemAccessRequest>
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

constexpr qsizetype longestConsoleMessage = 4096; // characters
constexpr int mostConsoleMessages = 200;          // in a row; each costs time, and room in the log
constexpr qint64 consolePeriod = 10'000;          // milliseconds

} // namespace

// Lies around each question, and deletes a page that nobody wants any more behind the last one.
class EnginePage::Asking {
public:
    explicit Asking(EnginePage& page)
        : page_(page) {
        ++page_.asking_;
    }
    ~Asking() {
        if (--page_.asking_ == 0 && page_.goes_)
            page_.deleteLater(); // the engine's own call goes on for a bit
    }
    Q_DISABLE_COPY_MOVE(Asking)

private:
    EnginePage& page_;
};

EnginePage::EnginePage(QWebEngineProfile* profile, QObject* parent)
    : QWebEnginePage(profile, parent) {
    connect(this, &QWebEnginePage::featurePermissionRequested, this, [this](const QUrl& origin, Feature feature) {
        setFeaturePermission(origin, feature, PermissionDeniedByUser);
    });
    connect(this, &QWebEnginePage::registerProtocolHandlerRequested, this,
            [](QWebEngineRegisterProtocolHandlerRequest request) { request.reject(); });
    connect(this, &QWebEnginePage::fileSystemAccessRequested, this,
            [](QWebEngineFileSystemAccessRequest request) { request.reject(); });
    connect(this, &QWebEnginePage::selectClientCertificate, this,
            [](QWebEngineClientCertificateSelection selection) { selection.selectNone(); });
    connect(this, &QWebEnginePage::certificateError, this,
            [](QWebEngineCertificateError error) { error.rejectCertificate(); });
}

void EnginePage::answerNothing() {
    policy_ = {};
    downloadTaker_ = {};
    console_ = {};
    dialogs_.close();
}

bool EnginePage::acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) {
    if (isMainFrame && std::exchange(expectsOwnPage_, false) && url.scheme() == QLatin1String("data"))
        return true;
    if (!policy_)
        return true;
    const WebView::NavigationPolicy policy = policy_; // it may be replaced while it runs
    const Asking asking(*this);
    return policy({url, kindOf(type), isMainFrame}) == WebNavigationPolicy::use;
}

void EnginePage::offerDownload(QWebEngineDownloadRequest& request) {
    if (const DownloadTaker taker = downloadTaker_) {
        const Asking asking(*this);
        taker(request);
    }
    if (request.state() == QWebEngineDownloadRequest::DownloadRequested)
        request.cancel();
}

// The page's, whichever of its frames asks: silencing one of many frames would not silence the page.
QUrl EnginePage::origin() const { return url().adjusted(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment); }

void EnginePage::javaScriptAlert(const QUrl&, const QString& message) {
    const Asking asking(*this);
    dialogs_.ask({PageQuestion::Kind::alert, origin(), message});
}

bool EnginePage::javaScriptConfirm(const QUrl&, const QString& message) {
    // How the engine asks before it leaves a page, in its own words.
    const QString leaveMessage = QCoreApplication::translate(
        "QWebEnginePage", "Are you sure you want to leave this page? Changes that you made may not be saved.");
    const auto kind = message == leaveMessage ? PageQuestion::Kind::leave : PageQuestion::Kind::confirm;
    const Asking asking(*this);
    return dialogs_.ask({kind, origin(), message}).has_value();
}

bool EnginePage::javaScriptPrompt(const QUrl&, const QString& message, const QString& proposal, QString* answer) {
    const Asking asking(*this);
    const auto text = dialogs_.ask({PageQuestion::Kind::prompt, origin(), message, proposal});
    if (text)
        *answer = *text;
    return text.has_value();
}

QStringList EnginePage::chooseFiles(FileSelectionMode mode, const QStringList& proposals, const QStringList&) {
    const Asking asking(*this);
    return dialogs_.chooseFiles(mode, proposals.value(0));
}

void EnginePage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString& message, int lineNumber,
                                          const QString&) {
    if ((!console_ && !consoleLog().isDebugEnabled()) || isConsoleFlooded())
        return;
    const QString text = redaction::text(message.left(longestConsoleMessage));
    qCDebug(consoleLog).noquote() << "line" << lineNumber << text;
    if (console_)
        console_(text);
}

bool EnginePage::isConsoleFlooded() {
    if (!consoleSince_.isValid() || consoleSince_.hasExpired(consolePeriod)) {
        consoleSince_.start();
        consoleMessages_ = 0;
    }
    return ++consoleMessages_ > mostConsoleMessages;
}

} // namespace quenby

#include "platform/linux/web/engine/EngineWebView.h"

#include "platform/linux/web/engine/EnginePage.h"
#include "platform/linux/web/engine/LoadError.h"
#include "platform/linux/web/engine/ProcessGoneMessage.h"

#include <QApplication>
#include <QChildEvent>
#include <QMouseEvent>
#include <QWebEngineCookieStore>
#include <QWebEngineHistory>
#include <QWebEngineLoadingInfo>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineView>

namespace quenby {

EngineWebView::EngineWebView(std::shared_ptr<QWebEngineProfile> profile)
    : profile_(std::move(profile))
    , stack_(new QStackedWidget)
    , page_(new EnginePage(profile_.get(), nullptr))
    , view_(new QWebEngineView) {
    view_->installEventFilter(this);
    view_->setContextMenuPolicy(Qt::NoContextMenu); // its entries speak of windows and downloads that there are not
    view_->setPage(page_);
    stack_->addWidget(view_);
    stack_->setFocusProxy(view_);
    connectPage();
}

EngineWebView::~EngineWebView() {
    if (view_)
        view_->removeEventFilter(this);
    page_->disconnect(this);
    profile_->cookieStore()->disconnect(this);
    page_->setNavigationPolicy({});
    answerScripts();
    if (page_->isAsking()) {
        // Inside of the page's own call: it goes when that has returned, and its profile after it.
        connect(page_, &QObject::destroyed, page_, [profile = profile_] { Q_UNUSED(profile) });
        page_->deleteLater();
        if (stack_) {
            stack_->setParent(nullptr);
            stack_->hide();
            stack_->deleteLater();
        }
        return;
    }
    delete stack_;
    delete page_;
}

void EngineWebView::connectPage() {
    connect(page_, &QWebEnginePage::loadingChanged, this, &EngineWebView::loadingChanged);
    connect(page_, &QWebEnginePage::titleChanged, this, [this] { readTitle(false); });
    connect(page_, &QWebEnginePage::newWindowRequested, this, [this](const QWebEngineNewWindowRequest& request) {
        later([this, url = request.requestedUrl()] { Q_EMIT newWindowRequested(url); });
    });
    connect(page_, &QWebEnginePage::windowCloseRequested, this, [this] { later([this] { Q_EMIT closeRequested(); }); });
    connect(page_, &QWebEnginePage::renderProcessTerminated, this,
            [this](QWebEnginePage::RenderProcessTerminationStatus status) {
                if (status != QWebEnginePage::NormalTerminationStatus)
                    later([this] { showProcessGone(); });
            });
    connect(profile_->cookieStore(), &QWebEngineCookieStore::cookieAdded, this, [this](const QNetworkCookie& cookie) {
        later([this, field = cookie.toRawForm()] { Q_EMIT cookieAdded(field); });
    });
}

// --- Loading --------------------------------------------------------------------------------------------------------

void EngineWebView::load(const QUrl& url) {
    url_ = url;
    showPage();
    page_->load(url);
}

void EngineWebView::setHtml(const QString& html, const QUrl& base) {
    url_ = base;
    showPage();
    page_->expectOwnPage();
    page_->setHtml(html, base);
}

void EngineWebView::stop() {
    page_->triggerAction(QWebEnginePage::Stop);
    isLoading_ = false;
}

void EngineWebView::back() { page_->triggerAction(QWebEnginePage::Back); }

bool EngineWebView::canGoBack() const { return page_->history()->canGoBack(); }

QUrl EngineWebView::url() const {
    const QUrl url = page_->url();
    return url.isEmpty() ? url_ : url;
}

void EngineWebView::loadingChanged(const QWebEngineLoadingInfo& info) {
    switch (info.status()) {
    case QWebEngineLoadingInfo::LoadStartedStatus:
        isLoading_ = true;
        later([this] {
            showPage();
            Q_EMIT loadStarted();
        });
        return;
    case QWebEngineLoadingInfo::LoadStoppedStatus: // by stop(), by the policy, or because it became a download
        isLoading_ = false;
        return;
    case QWebEngineLoadingInfo::LoadFailedStatus:
        isLoading_ = false;
        if (info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain)
            return tellRefusedLoad(loadError(info));
        return later([this, error = loadError(info)] { Q_EMIT loadFailed(error); });
    case QWebEngineLoadingInfo::LoadSucceededStatus:
        isLoading_ = false;
        return later([this] { tellFinished(); });
    }
}

void EngineWebView::tellFinished() {
    readTitle(true);
    Q_EMIT loadFinished();
}

// A page that came with an error status is a page to be read; when nothing came with it, there is none.
void EngineWebView::tellRefusedLoad(const Error& error) {
    const QString hasPage = QStringLiteral("document.body !== null && document.body.innerHTML.trim() !== ''");
    evaluate(hasPage, this, [this, error](const QVariant& result) {
        if (result.toBool())
            tellFinished();
        else
            Q_EMIT loadFailed(error);
    });
}

// The engine's own idea of the title is the address while there is none, and an address must not be taken for what
// the page says.
void EngineWebView::readTitle(bool tellsAlways) {
    evaluate(QStringLiteral("document.title"), this, [this, tellsAlways](const QVariant& result) {
        const QString title = result.toString();
        if (title.isEmpty() || (title == title_ && !tellsAlways))
            return;
        title_ = title;
        Q_EMIT titleChanged(title);
    });
}

// --- Scripts --------------------------------------------------------------------------------------------------------

void EngineWebView::evaluate(const QString& script, QObject* context, ScriptDone done) {
    const quint64 number = ++lastScript_;
    waitingScripts_.emplace(number, CompletionGate<const QVariant&>(context, std::move(done)));
    page_->runJavaScript(script, QWebEngineScript::MainWorld, [self = QPointer(this), number](const QVariant& result) {
        if (!self)
            return;
        if (const auto waiting = self->waitingScripts_.extract(number))
            waiting.mapped().deliver(result);
    });
}

// Those of a page that is gone: nobody else will.
void EngineWebView::answerScripts() {
    for (const auto& [number, done] : std::exchange(waitingScripts_, {}))
        done.deliver(QVariant());
}

void EngineWebView::setNavigationPolicy(NavigationPolicy policy) { page_->setNavigationPolicy(std::move(policy)); }

// --- The widget -----------------------------------------------------------------------------------------------------

void EngineWebView::showPage() {
    if (stack_)
        stack_->setCurrentWidget(view_);
}

void EngineWebView::showProcessGone() {
    isLoading_ = false;
    answerScripts();
    if (!stack_)
        return;
    if (!processGoneMessage_) {
        processGoneMessage_ = new ProcessGoneMessage(stack_);
        stack_->addWidget(processGoneMessage_);
        connect(processGoneMessage_, &ProcessGoneMessage::reloadRequested, this, [this] {
            showPage();
            view_->setFocus();
            page_->triggerAction(QWebEnginePage::Reload);
        });
    }
    const bool hadFocus = view_->isAncestorOf(QApplication::focusWidget());
    stack_->setCurrentWidget(processGoneMessage_);
    if (hadFocus)
        processGoneMessage_->setFocus();
    Q_EMIT processGone();
}

// The page is drawn by a child that comes and goes with the page's process; it gets the mouse.
bool EngineWebView::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::ChildAdded && object == view_) {
        if (QObject* child = static_cast<QChildEvent*>(event)->child(); child->isWidgetType())
            child->installEventFilter(this);
    }
    if (event->type() == QEvent::MouseButtonRelease && object != view_ &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
        later([this] { Q_EMIT leftButtonReleased(); });
    return WebView::eventFilter(object, event);
}

void EngineWebView::later(std::function<void()> function) {
    QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
}

} // namespace quenby

#include "platform/linux/web/engine/EngineView.h"

#include "platform/linux/web/engine/EnginePage.h"
#include "platform/linux/web/engine/LoadError.h"
#include "platform/linux/web/engine/ProcessGoneMessage.h"

#include <QApplication>
#include <QChildEvent>
#include <QMouseEvent>
#include <QWebEngineCookieStore>
#include <QWebEngineFullScreenRequest>
#include <QWebEngineHistory>
#include <QWebEngineLoadingInfo>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineView>

namespace quenby {

template <typename Interface>
EngineView<Interface>::EngineView(std::shared_ptr<QWebEngineProfile> profile)
    : profile_(std::move(profile))
    , stack_(new QStackedWidget)
    , page_(new EnginePage(profile_.get(), nullptr))
    , view_(new QWebEngineView) {
    view_->installEventFilter(this);
    view_->setContextMenuPolicy(Qt::NoContextMenu); // its entries speak of windows and downloads that there are not
    view_->setPage(page_);
    page_->dialogs().setOver(view_);
    stack_->addWidget(view_);
    stack_->setFocusProxy(view_);
    connectPage();
}

template <typename Interface>
EngineView<Interface>::~EngineView() {
    if (view_)
        view_->removeEventFilter(this);
    page_->disconnect(this);
    profile_->cookieStore()->disconnect(this);
    page_->answerNothing();
    answerScripts();
    if (page_->isAsking()) {
        // Inside of the page's own call: it goes when that has returned, the widget and the profile after it.
        QObject::connect(page_, &QObject::destroyed, page_, [profile = profile_, stack = stack_] {
            Q_UNUSED(profile)
            if (stack)
                stack->deleteLater();
        });
        page_->goWhenAnswered();
        if (stack_) {
            stack_->setParent(nullptr);
            stack_->hide();
        }
        return;
    }
    delete stack_;
    delete page_;
}

template <typename Interface>
void EngineView<Interface>::connectPage() {
    QObject::connect(page_, &QWebEnginePage::loadingChanged, this, &EngineView::loadingChanged);
    QObject::connect(page_, &QWebEnginePage::titleChanged, this, [this] { readTitle(false); });
    QObject::connect(page_, &QWebEnginePage::newWindowRequested, this,
                     [this](const QWebEngineNewWindowRequest& request) { windowWanted(request); });
    QObject::connect(page_, &QWebEnginePage::fullScreenRequested, this,
                     [this](QWebEngineFullScreenRequest request) { fullScreenWanted(request); });
    QObject::connect(page_, &QWebEnginePage::windowCloseRequested, this,
                     [this] { later([this] { Q_EMIT this->closeRequested(); }); });
    QObject::connect(page_, &QWebEnginePage::renderProcessTerminated, this,
                     [this](QWebEnginePage::RenderProcessTerminationStatus status) {
                         if (status != QWebEnginePage::NormalTerminationStatus)
                             later([this] { showProcessGone(); });
                     });
    QObject::connect(profile_->cookieStore(), &QWebEngineCookieStore::cookieAdded, this,
                     [this](const QNetworkCookie& cookie) {
                         later([this, field = cookie.toRawForm()] { Q_EMIT this->cookieAdded(field); });
                     });
}

// --- Loading --------------------------------------------------------------------------------------------------------

template <typename Interface>
void EngineView<Interface>::load(const QUrl& url) {
    url_ = url;
    showPage();
    page_->dialogs().end();
    page_->dialogs().hearAgain();
    page_->load(url);
}

template <typename Interface>
void EngineView<Interface>::setHtml(const QString& html, const QUrl& base) {
    url_ = base;
    showPage();
    page_->expectOwnPage();
    page_->setHtml(html, base);
}

template <typename Interface>
void EngineView<Interface>::stop() {
    page_->triggerAction(QWebEnginePage::Stop);
    isLoading_ = false;
}

template <typename Interface>
void EngineView<Interface>::back() {
    page_->triggerAction(QWebEnginePage::Back);
}

template <typename Interface>
bool EngineView<Interface>::canGoBack() const {
    return page_->history()->canGoBack();
}

template <typename Interface>
QUrl EngineView<Interface>::url() const {
    const QUrl url = page_->url();
    return url.isEmpty() ? url_ : url;
}

template <typename Interface>
void EngineView<Interface>::loadingChanged(const QWebEngineLoadingInfo& info) {
    switch (info.status()) {
    case QWebEngineLoadingInfo::LoadStartedStatus:
        isLoading_ = true;
        later([this] {
            showPage();
            Q_EMIT this->loadStarted();
        });
        return;
    case QWebEngineLoadingInfo::LoadStoppedStatus: // by stop(), by the policy, or because it became a download
        isLoading_ = false;
        return;
    case QWebEngineLoadingInfo::LoadFailedStatus:
        isLoading_ = false;
        if (info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain)
            return tellRefusedLoad(loadError(info));
        return later([this, error = loadError(info)] { Q_EMIT this->loadFailed(error); });
    case QWebEngineLoadingInfo::LoadSucceededStatus:
        isLoading_ = false;
        return later([this] { tellFinished(); });
    }
}

template <typename Interface>
void EngineView<Interface>::tellFinished() {
    readTitle(true);
    Q_EMIT this->loadFinished();
}

// A page that came with an error status is a page to be read; when nothing came with it, there is none.
template <typename Interface>
void EngineView<Interface>::tellRefusedLoad(const Error& error) {
    const QString hasPage = QStringLiteral("document.body !== null && document.body.innerHTML.trim() !== ''");
    evaluate(hasPage, this, [this, error](const QVariant& result) {
        if (result.toBool())
            tellFinished();
        else
            Q_EMIT this->loadFailed(error);
    });
}

// The engine's own idea of the title is the address while there is none, and an address must not be taken for what
// the page says.
template <typename Interface>
void EngineView<Interface>::readTitle(bool tellsAlways) {
    evaluate(QStringLiteral("document.title"), this, [this, tellsAlways](const QVariant& result) {
        const QString title = result.toString();
        if (title.isEmpty() || (title == title_ && !tellsAlways))
            return;
        title_ = title;
        Q_EMIT this->titleChanged(title);
    });
}

// --- Scripts --------------------------------------------------------------------------------------------------------

template <typename Interface>
void EngineView<Interface>::evaluate(const QString& script, QObject* context, ScriptDone done) {
    if (page_->lifecycleState() == QWebEnginePage::LifecycleState::Discarded)
        return CompletionGate<const QVariant&>(context, std::move(done)).deliver(QVariant());
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
template <typename Interface>
void EngineView<Interface>::answerScripts() {
    for (const auto& [number, done] : std::exchange(waitingScripts_, {}))
        done.deliver(QVariant());
}

template <typename Interface>
void EngineView<Interface>::setNavigationPolicy(NavigationPolicy policy) {
    page_->setNavigationPolicy(std::move(policy));
}

// --- The widget -----------------------------------------------------------------------------------------------------

template <typename Interface>
void EngineView<Interface>::showPage() {
    if (stack_)
        stack_->setCurrentWidget(view_);
}

template <typename Interface>
void EngineView<Interface>::showProcessGone() {
    isLoading_ = false;
    answerScripts();
    if (!stack_)
        return;
    if (!processGoneMessage_) {
        processGoneMessage_ = new ProcessGoneMessage(stack_);
        stack_->addWidget(processGoneMessage_);
        QObject::connect(processGoneMessage_, &ProcessGoneMessage::reloadRequested, this, [this] {
            showPage();
            view_->setFocus();
            page_->triggerAction(QWebEnginePage::Reload);
        });
    }
    page_->dialogs().end();
    const bool hadFocus = view_->isAncestorOf(QApplication::focusWidget());
    stack_->setCurrentWidget(processGoneMessage_);
    if (hadFocus)
        processGoneMessage_->setFocus();
    Q_EMIT this->processGone();
}

// The page is drawn by a child that comes and goes with the page's process; it gets the mouse.
template <typename Interface>
bool EngineView<Interface>::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::ChildAdded && object == view_) {
        if (QObject* child = static_cast<QChildEvent*>(event)->child(); child->isWidgetType())
            child->installEventFilter(this);
    }
    if (event->type() == QEvent::MouseButtonRelease && object != view_ &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
        later([this] { Q_EMIT this->leftButtonReleased(); });
    return Interface::eventFilter(object, event);
}

template <typename Interface>
void EngineView<Interface>::later(std::function<void()> function) {
    QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
}

template class EngineView<WebView>;
template class EngineView<BrowserView>;

} // namespace quenby

#include "oauth2/window/SignInPage.h"

#include "oauth2/window/GTMOAuth2WindowUi.h"

#include <QPushButton>

namespace quenby {

SignInPage::SignInPage(GTMOAuth2Window& window, WebViews& webViews, const WebViewProfile& profile,
                       std::shared_ptr<TimeSource> timeSource, Questions questions)
    : window_(&window)
    , webViews_(webViews)
    , profile_(profile)
    , timeSource_(std::move(timeSource))
    , questions_(std::move(questions)) {
    connect(window.tryAgainButton(), &QPushButton::clicked, this, &SignInPage::tryAgain);
    connect(window.webBackButton(), &QPushButton::clicked, this, [this] {
        if (view_)
            view_->back();
    });
    window.setLoading(false);
    makeView();
}

SignInPage::~SignInPage() = default;

bool SignInPage::makeView() {
    auto view = webViews_.create(profile_);
    if (!view) {
        window_->showMessage(tr("The sign-in page cannot be shown"), view.error().detail(errorKey::reason).toString());
        return false;
    }
    view_ = std::move(view).value();
    window_->setWebWidget(view_->widget());
    connectView();
    return true;
}

void SignInPage::connectView() {
    view_->setNavigationPolicy([this](const WebNavigation& navigation) {
        const bool isSettled = navigation.isMainFrame && questions_.redirected(URLRequest(navigation.url));
        return isSettled ? WebNavigationPolicy::ignore : WebNavigationPolicy::use;
    });
    connect(view_.get(), &WebView::loadStarted, this, &SignInPage::begin);
    connect(view_.get(), &WebView::loadFinished, this, [this] {
        end();
        window_->showWeb();
        Q_EMIT loadFinished();
    });
    connect(view_.get(), &WebView::loadFailed, this, [this](const Error& error) {
        end();
        if (!questions_.failed(error))
            fail(error.detail(errorKey::reason).toString());
    });
    connect(view_.get(), &WebView::processGone, this, [this] { // the view itself offers to load it again
        end();
        window_->showWeb();
    });
    connect(view_.get(), &WebView::titleChanged, this, &SignInPage::titleChanged);
    connect(view_.get(), &WebView::cookieAdded, this, &SignInPage::cookieAdded);
    connect(view_.get(), &WebView::newWindowRequested, this, &SignInPage::newWindowRequested);
    connect(view_.get(), &WebView::closeRequested, window_, &QDialog::reject);
}

void SignInPage::load(const URLRequest& request) {
    request_ = request;
    if (view_)
        tryAgain();
}

void SignInPage::tryAgain() {
    if (!request_ || (!view_ && !makeView()))
        return;
    window_->showWaiting();
    begin();
    view_->load(request_->url);
}

void SignInPage::showHTML(const QString& html) {
    if (!view_)
        return;
    view_->setHtml(html);
    window_->showWeb();
}

void SignInPage::stop() {
    limit_.reset();
    if (view_)
        view_->stop();
}

void SignInPage::networkFound() {
    if (window_->showsMessage())
        tryAgain();
}

void SignInPage::begin() {
    window_->setLoading(true);
    limit_ = timeSource_->startTimer(loadLimit, [this] {
        view_->stop();
        end();
        fail(
            tr("%1 did not answer. Check the network and try again.").arg(request_ ? request_->url.host() : QString()));
    });
    updateWindow();
}

void SignInPage::end() {
    limit_.reset();
    window_->setLoading(false);
    updateWindow();
}

void SignInPage::fail(const QString& text) { window_->showMessage(tr("The sign-in page could not be loaded"), text); }

void SignInPage::updateWindow() {
    const QUrl url = view_->url();
    window_->webBackButton()->setEnabled(view_->canGoBack());
    window_->setHost(url.host(), url.scheme() == QStringLiteral("https"));
}

} // namespace quenby

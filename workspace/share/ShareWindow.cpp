#include "workspace/share/ShareWindow.h"

#include "core/Redaction.h"
#include "widgets/ActivityIndicator.h"
#include "widgets/ProblemPane.h"
#include "workspace/share/MeasuringScript.h"
#include "workspace/share/ShareTitleBar.h"
#include "workspace/share/ctmWindow.h"

#include <QGridLayout>

namespace quenby {

ShareWindow::ShareWindow(WebViews& webViews, const WebViewProfile& profile, std::shared_ptr<TimeSource> timeSource,
                         QObject* parent)
    : QObject(parent)
    , window_(std::make_unique<ctmWindow>(std::move(timeSource)))
    , ui_(*window_)
    , progressIndicator_(ui_.progressIndicator) {
    window_->setProgressIndicator(progressIndicator_);
    connect(window_.get(), &ctmWindow::removeShareWindow, this, [this] { Q_EMIT removeShareWindow(this); });
    connect(ui_.titleBar, &ShareTitleBar::closeRequested, window_.get(), &ctmWindow::dismiss);
    connect(ui_.problem, &ProblemPane::closeRequested, window_.get(), &ctmWindow::dismiss);
    connect(ui_.problem, &ProblemPane::tryAgainRequested, this, &ShareWindow::load);

    auto created = webViews.create(profile);
    if (!created) {
        tellProblem(QStringLiteral("Web pages can't be shown"), created.error().detail(errorKey::reason).toString(),
                    false);
        return;
    }
    webShare_ = std::move(*created);
    ui_.content->addWidget(webShare_->widget(), 0, 0);
    progressIndicator_->raise();
    window_->setWebView(webShare_.get());
    watchPage();
}

ShareWindow::~ShareWindow() = default;

void ShareWindow::watchPage() {
    WebView* page = webShare_.get();
    connect(page, &WebView::loadStarted, this, &ShareWindow::loadStarted);
    connect(page, &WebView::loadFinished, this, &ShareWindow::loadFinished);
    connect(page, &WebView::leftButtonReleased, this, [this] {
        if (done_)
            window_->measure();
    });
    connect(page, &WebView::closeRequested, window_.get(), &ctmWindow::dismiss);
    connect(page, &WebView::loadFailed, this, [this](const Error& error) {
        const QString reason = redaction::text(error.detail(errorKey::reason).toString());
        tellProblem(QStringLiteral("The sharing page can't be loaded"),
                    reason.isEmpty() ? QStringLiteral("Check the network connection, and then try again.") : reason,
                    true);
    });
    connect(page, &WebView::processGone, this, [this] {
        tellProblem(QStringLiteral("The sharing page has stopped working"),
                    QStringLiteral("What you had changed in it before has been kept."), true);
    });
}

void ShareWindow::setTitle(const QString& title) {
    window_->setWindowTitle(title);
    window_->setAccessibleName(QStringLiteral("Sharing ") + title);
}

void ShareWindow::loadWebShare(const QString& address) {
    address_ = QUrl(address);
    load();
}

void ShareWindow::load() {
    if (webShare_)
        webShare_->load(address_);
}

void ShareWindow::loadStarted() {
    if (window_->isDismissed())
        return;
    done_ = false;
    hasFailed_ = false;
    ui_.problem->hide();
    webShare_->widget()->show();
    progressIndicator_->show();
    progressIndicator_->raise();
}

void ShareWindow::loadFinished() {
    if (hasFailed_ || webShare_->isLoading() || window_->isDismissed())
        return;
    done_ = true;
    progressIndicator_->hide();
    webShare_->widget()->setFocus();
    webShare_->evaluate(measuringScript(), this,
                        [this](const QVariant& height) { window_->fitHeight(static_cast<int>(height.toDouble())); });
}

void ShareWindow::tellProblem(const QString& heading, const QString& text, bool canTryAgain) {
    if (window_->isDismissed())
        return;
    hasFailed_ = true;
    progressIndicator_->hide();
    if (webShare_)
        webShare_->widget()->hide();
    ui_.problem->tell(heading, text, canTryAgain);
}

} // namespace quenby

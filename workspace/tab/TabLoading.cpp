// How a page comes into a tab, and what stands there while there is none.
#include "widgets/ProblemPane.h"
#include "workspace/tab/TabParts.h"
#include "workspace/tabbar/DemoModel.h"

#include <QStackedWidget>

namespace quenby {

void TabWebView::Private::load(const QUrl& url) {
    if (!isPageAddress(url))
        return tellProblem(QStringLiteral("This address can't be shown"),
                           QStringLiteral("Only pages of the web can stand in a tab."), false);
    if (makePage())
        navigation->load(url);
}

void TabWebView::Private::tryAgain() { load(failed.isEmpty() ? model.Taburl() : failed); }

// With the first address, and again after an engine was missing. Whether there is one.
bool TabWebView::Private::makePage() {
    if (page)
        return true;
    WebViewProfile profile = surroundings.profile;
    profile.userAgent = userAgent();
    auto made = surroundings.webViews.createBrowser(profile);
    if (!made) {
        const QString reason = surroundings.webViews.unavailableBecause();
        tellProblem(QStringLiteral("Web pages can't be shown"),
                    reason.isEmpty() ? made.error().detail(errorKey::reason).toString() : reason, true);
        return false;
    }
    page = std::move(*made);
    content->addWidget(page->widget());
    content->setFocusProxy(page->widget());
    q.setFocusProxy(page->widget());
    navigation = std::make_unique<TabNavigation>(*page, model, surroundings);
    downloads = std::make_unique<TabDownloads>(*page, surroundings.timeSource);
    watchPage();
    showPage();
    rest.setShown(q.isVisible());
    return true;
}

void TabWebView::Private::tellProblem(const QString& heading, const QString& text, bool canTryAgain) {
    if (!problem) {
        problem = new ProblemPane(content);
        problem->setClosable(false);
        content->addWidget(problem);
        connect(problem, &ProblemPane::tryAgainRequested, this, &Private::tryAgain);
    }
    if (find)
        find->close();
    Q_EMIT q.linkHovered({}); // there is no link any more
    content->setCurrentWidget(problem);
    problem->tell(heading, text, canTryAgain);
}

void TabWebView::Private::showPage() {
    const bool hadFocus = problem && problem->isAncestorOf(q.window()->focusWidget());
    content->setCurrentWidget(page->widget());
    if (hadFocus)
        page->widget()->setFocus();
}

bool TabWebView::Private::isPageSeen() const { return page && content->currentWidget() == page->widget(); }

bool TabWebView::Private::hasPageBehindProblem() const { return hasFailed && hasShownPage && page->url() != failed; }

void TabWebView::Private::returnToPage() {
    hasFailed = false;
    failed.clear();
    page->stop();
    showPage();
    Q_EMIT q.navigationStateChanged();
}

void TabWebView::Private::refreshProcessing() {
    const bool isLoading = page && page->isLoading();
    model.setProcessing(isLoading);
    rest.setBusy(isLoading || (downloads && downloads->isRunning()));
}

} // namespace quenby
